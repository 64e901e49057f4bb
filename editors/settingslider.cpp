#include "editors/settingslider.h"

#include "SSGenerator/formula.h"
#include "SSGenerator/rounding.h"
#include "SSGenerator/structsetting.h"
#include "editors/fonts.h"
#include "editors/numberspinbox.h"
#include "editors/tickedslider.h"

#include <QEvent>
#include <QFile>
#include <QGridLayout>
#include <QLabel>
#include <QPalette>
#include <QScopedValueRollback>

#include <algorithm>
#include <cmath>
#include <limits>

using HParser::StructSetting;

namespace
{

/// scaled without its fraction, and within the integers. 0.29 * 100 is a little less than 29 in
/// binary: what lies so close below a whole number is that number.
int steps(double scaled)
{
    constexpr double tolerance = 1e-6;
    const double nearest = std::round(scaled);
    const double whole = std::abs(scaled - nearest) < tolerance ? nearest : std::trunc(scaled);
    if (std::isnan(whole))
        return 0;
    return static_cast<int>(std::clamp<double>(whole, std::numeric_limits<int>::min(),
                                               std::numeric_limits<int>::max()));
}

QString sliderStyle()
{
    QFile file(QStringLiteral(":/style/slider.qss"));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace

SettingSlider::SettingSlider(StructSetting *setting, QString tooltip, QWidget *parent)
    : QWidget(parent),
      grid(new QGridLayout(this)),
      setting(setting),
      decimals(HParser::truncatedToInt32(setting->decimals->toDouble())),
      multiplier(std::pow(10.0, decimals))
{
    const double lowest = setting->lowerBound->toDouble();
    const double highest = setting->upperBound->toDouble();
    addTitle(tooltip);
    addSpinBox(lowest, highest);
    auto *unit = new QLabel(setting->unit);
    unit->setFixedWidth(50);
    grid->addWidget(unit, 1, 1);
    addSlider(lowest, highest);
    title->setBuddy(spinBox);
    for (QWidget *control : {static_cast<QWidget *>(spinBox), static_cast<QWidget *>(slider)}) {
        control->setAccessibleName(setting->descriptiveName);
        control->setAccessibleDescription(setting->unit);
        control->setFocusPolicy(Qt::StrongFocus);
        control->installEventFilter(this);
    }

    connect(spinBox, qOverload<double>(&QDoubleSpinBox::valueChanged), this,
            &SettingSlider::spinBoxChanged);
    connect(this, &SettingSlider::intValue, slider, &QSlider::setValue);
    connect(setting, &StructSetting::valueChanged, this, &SettingSlider::settingChanged);
    connect(slider, &QSlider::valueChanged, this, &SettingSlider::sliderChanged);
    connect(this, &SettingSlider::doubleValue, spinBox, &QDoubleSpinBox::setValue);
}

void SettingSlider::addTitle(const QString &tooltip)
{
    title = new QLabel(QLatin1String("<b>") + setting->descriptiveName + QLatin1String(":</b>"));
    enlargeFont(title, 2);
    if (!tooltip.isEmpty())
        title->setToolTip(QLatin1String("<FONT>") + tooltip + QLatin1String("</FONT>"));
    const bool previewed = setting->name == QLatin1String("brightness");
    grid->addWidget(title, 0, 0, 1, previewed ? 2 : 3);
}

void SettingSlider::addSpinBox(double lowest, double highest)
{
    spinBox = new NumberSpinBox;
    spinBox->setDecimals(decimals);
    spinBox->setRange(lowest, highest);
    showInSpinBox(setting->getNumber());
    spinBox->setSingleStep(1 / multiplier);
    // Its style sheet writes a disabled box black, which needs a light ground on every desktop.
    QPalette colours = spinBox->palette();
    colours.setColor(QPalette::Base, Qt::white);
    colours.setColor(QPalette::Text, Qt::black);
    spinBox->setPalette(colours);
    spinBox->setStyleSheet(QStringLiteral("QDoubleSpinBox:!enabled{color:black;}"));
    spinBox->setFont(title->font());
    spinBox->setFixedWidth(60);
    spinBox->setFixedHeight(spinBox->sizeHint().height());
    spinBox->setAlignment(Qt::AlignRight);
    spinBox->setKeyboardTracking(false);
    grid->addWidget(spinBox, 1, 0);
}

void SettingSlider::addSlider(double lowest, double highest)
{
    slider = new TickedSlider;
    slider->setStyleSheet(sliderStyle());
    slider->setMinimum(steps(lowest * multiplier));
    slider->setMaximum(steps(highest * multiplier));
    const qint64 range = steps(highest * multiplier - lowest * multiplier);
    const int tenth = static_cast<int>((range + 1) / 10);
    slider->setTickInterval(tenth);
    slider->setTickPosition(QSlider::TicksAbove);
    slider->setSingleStep(1);
    slider->setPageStep(std::max(1, tenth));
    slider->setValue(positionOf(setting->getNumber()));
    grid->addWidget(slider, 1, 2);
}

void SettingSlider::enableEditing(bool on)
{
    slider->setEnabled(on);
    spinBox->setEnabled(on);
}

void SettingSlider::styleLabel()
{
    title->setAlignment(Qt::AlignCenter);
    connect(spinBox, qOverload<double>(&QDoubleSpinBox::valueChanged), this,
            &SettingSlider::brightnessChanged);
    brightnessChanged(spinBox->value());
}

void SettingSlider::spinBoxChanged(double)
{
    if (!showing)
        setting->setValue(spinBox->value());
    // At full precision: read back by its text a number of more than six digits would change.
    const double value = setting->getNumber();
    showInSpinBox(value);
    emit intValue(steps(value * multiplier));
}

void SettingSlider::sliderChanged(int position)
{
    // The slider also moves because the value does, and then may be unable to stand quite there:
    // the value may lie beyond its range.
    const double value = setting->getNumber();
    emit doubleValue(position == positionOf(value) ? value : position / multiplier);
}

void SettingSlider::settingChanged()
{
    // The setting may hold what the spin box could not when it was made. It must be shown as it is,
    // and must not come back changed: an import sets values while an older page is in sight.
    const double value = setting->getNumber();
    const QScopedValueRollback<bool> quiet(showing, true);
    makeRoomFor(value);
    emit doubleValue(value);
}

void SettingSlider::brightnessChanged(double value)
{
    const int alpha = steps(value) * 8 + 175;
    title->setStyleSheet(
        QStringLiteral("QLabel {color: rgba(255, 240, 0, %1);background-color:rgb(0, 0, 0);"
                       "border-radius: 10px;padding: 5px;}")
            .arg(alpha));
}

bool SettingSlider::eventFilter(QObject *control, QEvent *event)
{
    const bool passing =
        event->type() == QEvent::Wheel && !static_cast<QWidget *>(control)->hasFocus();
    if (passing)
        event->ignore();
    return passing || QWidget::eventFilter(control, event);
}

int SettingSlider::positionOf(double value) const
{
    return qBound(slider->minimum(), steps(value * multiplier), slider->maximum());
}

void SettingSlider::makeRoomFor(double value)
{
    if (value < spinBox->minimum())
        spinBox->setMinimum(value);
    if (value > spinBox->maximum())
        spinBox->setMaximum(value);
}

void SettingSlider::showInSpinBox(double value)
{
    const QScopedValueRollback<bool> quiet(showing, true);
    makeRoomFor(value);
    spinBox->setValue(value);
}
