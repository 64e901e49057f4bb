#include "support/schemarecord.h"

#include "SSGenerator/structsetting.h"

using HParser::StructSetting;
using HParser::StructSettings;

std::unique_ptr<StructSettings> schemaRecord(const QStringList &memberLines)
{
    QList<StructSetting *> settings;
    for (const QString &line : memberLines)
        settings.append(new StructSetting(line));
    auto record = std::make_unique<StructSettings>();
    record->setOriginalOrderStructSettings(settings);
    record->setStructSettings(StructSettings::sortByVisualIndex(settings));
    record->buildFormulaTrees();
    return record;
}

QString numberLine(const QString &lower, const QString &upper, const QString &decimals,
                   const QString &preset)
{
    return QStringLiteral("long x; // num, auto, %1, %2, *1, %3, \"Bulk Current\", \"Amps\", "
                          "\"x\", %4, 0, basic")
        .arg(lower, upper, decimals, preset);
}
