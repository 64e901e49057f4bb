#include "editors/unitsettingsdisplay.h"

#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "editors/fonts.h"
#include "editors/settingcheckboxextended.h"
#include "editors/settingslider.h"
#include "editors/settingslineedit.h"

#include <QLabel>
#include <QVBoxLayout>

using HParser::SettingKind;
using HParser::StructSetting;

namespace
{

/// The charger's settings in the file of help texts, whatever the schema says of their type.
constexpr int tooltipType = 5;
constexpr int heightOfASetting = 75;

} // namespace

UnitSettingsDisplay::UnitSettingsDisplay(HParser::StructSettings *settings,
                                         HParser::Generator *generator, QWidget *parent)
    : QWidget(parent), sliderTests(new QWidget(this)), settings(settings), generator(generator)
{
    setObjectName(QStringLiteral("UnitSettingsDisplay"));
    setMinimumSize(475, 520);
    sliderTests->setObjectName(QStringLiteral("sliderTests"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(sliderTests);
    inflateGrid();
    saveBackups();
}

UnitSettingsDisplay::~UnitSettingsDisplay() = default;

void UnitSettingsDisplay::inflateGrid()
{
    const QList<StructSetting *> visible = settings->getStructSettings();
    const QMap<QString, QString> tooltips = generator->getTooltips().value(tooltipType);
    auto *layout = new QVBoxLayout(sliderTests);
    // The room for a setting goes to the setting: a short window would cut the preview's heading.
    layout->setContentsMargins(layout->contentsMargins().left(), 0,
                               layout->contentsMargins().right(), 0);
    layout->setSpacing(0);
    setMinimumHeight(heightOfASetting * visible.size());
    sliderTests->setMinimumHeight(heightOfASetting * visible.size());
    for (StructSetting *setting : visible) {
        // An advanced setting follows its default until it is opened, here before any charger was
        // read. Silently: the page is not there yet, and nobody else's widgets are concerned.
        setting->advancedEnabled = true;
        connect(setting, &StructSetting::valueChanged, this,
                &UnitSettingsDisplay::settingChangedSlot);
        const QString tooltip = tooltips.value(setting->name);
        switch (setting->settingKind) {
        case SettingKind::Num:
            layout->addWidget(addSlider(setting, tooltip));
            break;
        case SettingKind::Bool:
            layout->addWidget(addCheckBox(setting, tooltip));
            break;
        case SettingKind::String:
        case SettingKind::List:
            layout->addWidget(addLineEdit(setting, tooltip));
            break;
        case SettingKind::Unknown:
            break;
        }
    }
}

QWidget *UnitSettingsDisplay::addSlider(StructSetting *setting, const QString &tooltip)
{
    auto *slider = new SettingSlider(setting, tooltip);
    if (setting->name == QLatin1String("brightness"))
        slider->styleLabel();
    sliders.append(slider);
    return slider;
}

QWidget *UnitSettingsDisplay::addCheckBox(StructSetting *setting, const QString &tooltip)
{
    auto *checkBox = new SettingCheckboxExtended(setting);
    if (setting->name == QLatin1String("flip_display"))
        checkBox->addFlippingImage(QStringLiteral(":/new/images/velantor.png"));
    if (!tooltip.isEmpty())
        checkBox->setToolTip(tooltip);
    checkBoxes.append(checkBox);
    return checkBox;
}

QWidget *UnitSettingsDisplay::addLineEdit(StructSetting *setting, const QString &tooltip)
{
    auto *row = new QWidget;
    auto *layout = new QVBoxLayout(row);
    auto *title =
        new QLabel(QLatin1String("<b>") + setting->descriptiveName + QLatin1String(":</b>"));
    enlargeFont(title, 2);
    if (!tooltip.isEmpty())
        title->setToolTip(QLatin1String("<FONT>") + tooltip + QLatin1String("</FONT>"));
    layout->addWidget(title);
    auto *lineEdit = new SettingsLineEdit(true);
    lineEdit->bindSetting(setting);
    // A line edit follows the numbers of its setting by itself, but leaves texts alone.
    connect(setting, &StructSetting::valueChanged, lineEdit,
            [=] { lineEdit->setText(setting->getValue()); });
    title->setBuddy(lineEdit);
    layout->addWidget(lineEdit);
    lineEdits.append(lineEdit);
    return row;
}

void UnitSettingsDisplay::settingChangedSlot()
{
    emit settingChanged();
}

void UnitSettingsDisplay::on_resetDefaultsClicked()
{
    const QList<StructSetting *> visible = generator->getUnitSettingsStruct()->getStructSettings();
    for (StructSetting *setting : visible)
        setting->setDefault();
}

void UnitSettingsDisplay::enableEditing(bool on)
{
    for (SettingSlider *slider : qAsConst(sliders))
        slider->enableEditing(on);
    for (SettingCheckboxExtended *checkBox : qAsConst(checkBoxes))
        checkBox->enableEditing(on);
    for (SettingsLineEdit *lineEdit : qAsConst(lineEdits))
        lineEdit->setEnabled(on);
}

void UnitSettingsDisplay::on_saveInProgramClicked()
{
    enableEditing(false);
}

void UnitSettingsDisplay::saveBackups()
{
    backup.reset(settings->deepCopyWithValues());
}

void UnitSettingsDisplay::restoreBackup()
{
    settings->takeValuesOf(backup.get());
}
