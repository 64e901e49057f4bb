#include "editors/settingcheckboxextended.h"

#include "SSGenerator/structsetting.h"
#include "editors/fonts.h"
#include "editors/settingscheckbox.h"

#include <QBitmap>
#include <QGridLayout>
#include <QIcon>
#include <QLabel>
#include <QSpacerItem>
#include <QTransform>

#include <cmath>

using HParser::StructSetting;

namespace
{

constexpr int pictureHeight = 33;

/// Shows pixmap, and the widget nowhere else. A mask counts in the widget's pixels, of which a
/// dense screen has several in one.
void showMasked(QLabel *label, const QPixmap &pixmap)
{
    label->setPixmap(pixmap);
    label->setMask(pixmap.scaledToHeight(pictureHeight, Qt::SmoothTransformation).mask());
}

} // namespace

SettingCheckboxExtended::SettingCheckboxExtended(StructSetting *setting, QWidget *parent)
    : QWidget(parent),
      grid(new QGridLayout(this)),
      checkBox(new SettingsCheckBox),
      title(new QLabel(QLatin1String("<b>") + setting->descriptiveName + QLatin1String("?</b>"))),
      setting(setting)
{
    enlargeFont(title, 2);
    title->setBuddy(checkBox);
    grid->addWidget(title, 0, 0, 1, 4);
    checkBox->bindSetting(setting);
    grid->addWidget(checkBox, 1, 0);
    grid->addItem(new QSpacerItem(0, 0, QSizePolicy::Expanding), 1, 3);

    connect(checkBox, &SettingsCheckBox::settingChangedSig, this,
            &SettingCheckboxExtended::settingChanged);
    connect(setting, &StructSetting::valueChanged, checkBox, &SettingsCheckBox::settingChanged);
}

void SettingCheckboxExtended::setToolTip(QString text)
{
    title->setToolTip(QLatin1String("<FONT>") + text + QLatin1String("</FONT>"));
}

void SettingCheckboxExtended::enableEditing(bool on)
{
    checkBox->setEnabled(on);
}

void SettingCheckboxExtended::addFlippingImage(QString path)
{
    const QSize size = QPixmap(path).size();
    if (size.isEmpty())
        return;
    // An icon knows the picture's twin for dense screens.
    const QPixmap original = QIcon(path).pixmap(size);
    const double density = original.devicePixelRatio();
    upright = original.scaledToHeight(static_cast<int>(std::lround(pictureHeight * density)),
                                      Qt::SmoothTransformation);
    upright.setDevicePixelRatio(density);
    upsideDown = upright.transformed(QTransform().rotate(180));
    upsideDown.setDevicePixelRatio(density);

    picture = new QLabel;
    picture->setFixedSize(static_cast<int>(std::lround(upright.width() / density)), pictureHeight);
    picture->setScaledContents(true);
    grid->addItem(new QSpacerItem(15, 0, QSizePolicy::Fixed), 1, 1);
    grid->addWidget(picture, 1, 2);
    showMasked(picture, checkBox->isChecked() ? upsideDown : upright);
    connect(setting, &StructSetting::valueChanged, this, &SettingCheckboxExtended::screenFlipped);
}

void SettingCheckboxExtended::screenFlipped()
{
    if (picture)
        showMasked(picture, setting->getValue() == QLatin1String("true") ? upsideDown : upright);
}
