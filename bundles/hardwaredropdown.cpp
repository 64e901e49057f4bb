#include "bundles/hardwaredropdown.h"

#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"

#include <QPalette>
#include <QWheelEvent>

namespace
{
void setUpperBound(HParser::StructSettings *record, const QString &member, int bound)
{
    record->getStructSettingByName(member)->setUpperBound(QString::number(bound));
}

QColor between(const QColor &one, const QColor &other)
{
    return QColor::fromRgb((2 * one.red() + other.red()) / 3, (2 * one.green() + other.green()) / 3,
                           (2 * one.blue() + other.blue()) / 3);
}

/// The charger's model is not to be changed, but well to be read: nearer to the text of what can be
/// changed than to its background.
QPalette readableWhenDisabled(QPalette colours)
{
    for (const QPalette::ColorRole role : {QPalette::ButtonText, QPalette::Text}) {
        const QColor text = colours.color(QPalette::Active, role);
        const QColor background = colours.color(QPalette::Active, QPalette::Button);
        colours.setColor(QPalette::Disabled, role, between(text, background));
    }
    return colours;
}
} // namespace

HardwareDropdown::HardwareDropdown(HParser::Generator *generator, QWidget *parent)
    : QComboBox(parent), generator(generator)
{
    addItem(QStringLiteral("24V"), 24);
    addItem(QStringLiteral("48V"), 48);
    addItem(QStringLiteral("72V"), 72);
    setCurrentIndex(currentIndex);
    connect(this, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &HardwareDropdown::newItemChosen);
}

void HardwareDropdown::newItemChosen()
{
    setAllSettingsLimits();
    previousIndex = currentIndex;
    currentIndex = QComboBox::currentIndex();
    emit newLimits();
}

void HardwareDropdown::disable()
{
    setCurrentIndex(findData(generator->hwVersion()));
    setEnabled(false);
    setPalette(readableWhenDisabled(palette()));
}

void HardwareDropdown::enable()
{
    setEnabled(true);
    setPalette(QPalette());
    setAllSettingsLimits();
}

void HardwareDropdown::revertLimits()
{
    setCurrentIndex(previousIndex);
}

void HardwareDropdown::wheelEvent(QWheelEvent *event)
{
    // A choice can cost profiles: the wheel, turned over the tool bar by chance, makes none.
    event->ignore();
}

void HardwareDropdown::setAllSettingsLimits()
{
    if (!generator->isMaster())
        return;
    switch (currentData().toInt()) {
    case 48:
        setNickleLimits(48, 63, 8);
        setLeadLimits(63, 8);
        setLithiumLimits(63, 8);
        break;
    case 72:
        setNickleLimits(72, 103, 5);
        setLeadLimits(103, 5);
        setLithiumLimits(103, 5);
        break;
    case 24:
        setNickleLimits(24, 34, 15);
        setLeadLimits(34, 15);
        setLithiumLimits(34, 15);
        break;
    default:
        break;
    }
}

void HardwareDropdown::setNickleLimits(int nominal, int max, int bulk)
{
    HParser::StructSettings *nickel = record(QStringLiteral("Nickel"));
    setUpperBound(nickel, QStringLiteral("nominal_full_V"), nominal);
    setUpperBound(nickel, QStringLiteral("max_V"), max);
    setUpperBound(nickel, QStringLiteral("bulk_I"), bulk);
}

void HardwareDropdown::setLeadLimits(int full, int bulk)
{
    HParser::StructSettings *lead = record(QStringLiteral("Lead"));
    setUpperBound(lead, QStringLiteral("full_V"), full);
    setUpperBound(lead, QStringLiteral("bulk_I"), bulk);
}

void HardwareDropdown::setLithiumLimits(int full, int bulk)
{
    HParser::StructSettings *lithium = record(QStringLiteral("Lithium"));
    setUpperBound(lithium, QStringLiteral("full_V"), full);
    setUpperBound(lithium, QStringLiteral("bulk_I"), bulk);
}

HParser::StructSettings *HardwareDropdown::record(const QString &chemistry) const
{
    HParser::StructSettings *found = generator->getChemistrySettingsByName(chemistry);
    Q_ASSERT(found); // the master schema has all three
    return found;
}
