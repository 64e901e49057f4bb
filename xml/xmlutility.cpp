#include "xml/xmlutility.h"

#include <QMap>

namespace XMLGeneratorParser
{
namespace
{
/// Whether an XML file can hold this UTF-16 unit without looking at its neighbours.
bool isAllowedAlone(QChar unit)
{
    if (unit < QLatin1Char(' '))
        return unit == QLatin1Char('\t') || unit == QLatin1Char('\n') || unit == QLatin1Char('\r');
    return !unit.isSurrogate() && unit.unicode() < 0xFFFE;
}
} // namespace

QString XMLUtility::xmlTagFromString(const QString &text)
{
    QString tag = text.toLower();
    for (QChar &character : tag) {
        if (QStringLiteral(" /<>&%").contains(character))
            character = QLatin1Char('_');
    }
    return tag;
}

QString XMLUtility::escapeReservedChars(const QString &text)
{
    const QMap<QChar, QString> references = {
        {QLatin1Char('"'), QStringLiteral("&quot;")},  {QLatin1Char('&'), QStringLiteral("&amp;")},
        {QLatin1Char('\''), QStringLiteral("&apos;")}, {QLatin1Char('<'), QStringLiteral("&lt;")},
        {QLatin1Char('>'), QStringLiteral("&gt;")},
    };
    QString escaped;
    for (const QChar character : text)
        escaped += references.value(character, character);
    return escaped;
}

QString XMLUtility::withoutForbiddenChars(const QString &text)
{
    QString allowed;
    for (int i = 0; i < text.size(); ++i) {
        const QChar unit = text.at(i);
        if (isAllowedAlone(unit)) {
            allowed += unit;
        } else if (unit.isHighSurrogate() && i + 1 < text.size() &&
                   text.at(i + 1).isLowSurrogate()) {
            allowed += unit;
            allowed += text.at(++i);
        }
    }
    return allowed;
}

} // namespace XMLGeneratorParser
