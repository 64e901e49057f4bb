#include "xml/xmlutility.h"

namespace XMLGeneratorParser
{
QString XMLUtility::xmlTagFromString(const QString &text)
{
    QString tag = text.toLower();
    for (QChar &character : tag) {
        if (QStringLiteral(" /<>&%").contains(character))
            character = QLatin1Char('_');
    }
    return tag;
}

} // namespace XMLGeneratorParser
