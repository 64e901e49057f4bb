#include "editors/statssettingsgrid.h"

#include "SSGenerator/formula.h"
#include "SSGenerator/structsetting.h"
#include "editors/settingslineedit.h"

#include <QLabel>

#include <cmath>

using HParser::StructSetting;

namespace
{

constexpr int fieldLength = 5; // characters
constexpr int rowHeight = 50;
constexpr int lowestRowHeight = 24;

/// Takes decimals off a time in hours that would be longer than the field.
void fitDecimals(StructSetting *setting)
{
    if (setting->unit != QLatin1String("h"))
        return;
    const double whole = std::fabs(std::trunc(setting->getShownNumber()));
    if (!std::isfinite(whole) || whole < 1)
        return;
    const int digits = int(std::floor(std::log10(whole))) + 1;
    if (digits > 4)
        setting->decimals->setFormula(QStringLiteral("0"), {});
    else if (digits >= 3)
        setting->decimals->setFormula(QString::number(fieldLength - digits), {});
}

} // namespace

StatsSettingsGrid::StatsSettingsGrid(QList<StructSetting *> settings, HParser::Generator *generator,
                                     QWidget *parent)
    : SettingsGrid(nullptr, generator, parent)
{
    setContentsMargins(9, 0, 9, 0);
    setHorizontalSpacing(6);
    setVerticalSpacing(0);
    if (settings.isEmpty())
        noStats();
    else
        displayStats(settings);
}

void StatsSettingsGrid::noStats()
{
    addStretch(0, 0);
    addWidget(new QLabel(tr("No stats yet for this profile!"), parentWidget()), 0, 1);
    addStretch(0, 2);
}

void StatsSettingsGrid::displayStats(const QList<StructSetting *> &settings)
{
    addWidget(new QLabel(tr("<b>Lifetime Totals</b>"), parentWidget()), 0, 2, 1, 2,
              Qt::AlignCenter);
    addWidget(new QLabel(tr("<b>Averages</b>"), parentWidget()), 0, 5, 1, 2, Qt::AlignCenter);

    int totals = 0;
    int averages = 0;
    for (StructSetting *setting : settings) {
        fitDecimals(setting);
        if (setting->xmlName == QLatin1String("calculated"))
            addAverage(setting, ++averages);
        else
            addTotal(setting, ++totals);
    }
    rows = qMax(totals, averages);
    for (int row = 1; row <= rows; ++row)
        setRowMinimumHeight(row, rowHeight);
    for (int column : {1, 2, 4, 7})
        addStretch(rows + 1, column);
}

void StatsSettingsGrid::addTotal(StructSetting *setting, int row)
{
    addField(setting, row, 2);
    QLabel *name = newBoldName(setting, getFields().last());
    name->setFixedHeight(rowHeight);
    addWidget(name, row, 0);
}

void StatsSettingsGrid::addAverage(StructSetting *setting, int row)
{
    addField(setting, row, 5);
}

void StatsSettingsGrid::addField(StructSetting *setting, int row, int column)
{
    SettingsLineEdit *field = newLineEdit(setting, 40, fieldLength);
    field->setEnabled(false);
    field->setAlignment(Qt::AlignCenter);
    addWidget(field, row, column);

    QLabel *unit = newRichLabel(
        QStringLiteral("<FONT>%1</FONT>").arg(setting->unit.toHtmlEscaped()), setting, field);
    unit->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    unit->setFixedHeight(rowHeight);
    addWidget(unit, row, column + 1);
}

QSize StatsSettingsGrid::minimumSize() const
{
    return QGridLayout::minimumSize() - QSize(0, rows * (rowHeight - lowestRowHeight));
}

void StatsSettingsGrid::setGeometry(const QRect &rect)
{
    QGridLayout::setGeometry(rect);
    for (int index = 0; index < count(); ++index) {
        QWidget *widget = itemAt(index)->widget();
        if (!widget || widget->minimumHeight() != rowHeight)
            continue;
        int row = 0;
        int column = 0;
        int rowSpan = 0;
        int columnSpan = 0;
        getItemPosition(index, &row, &column, &rowSpan, &columnSpan);
        QRect place = widget->geometry();
        place.moveCenter(QPoint(place.center().x(), cellRect(row, column).center().y()));
        widget->setGeometry(place);
    }
}
