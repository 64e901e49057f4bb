#pragma once

#include <QString>

namespace XMLGeneratorParser
{
/// Text rules of the profile file format.
class XMLUtility
{
public:
    XMLUtility() = delete;

    /// The tag under which a value of this schema key travels: lower case, with blank, '/', '<',
    /// '>', '&' and '%' replaced by '_'. All other characters stay.
    static QString xmlTagFromString(const QString &text);

    /// text with the five characters that mean something in XML written as references.
    static QString escapeReservedChars(const QString &text);

    /// text without the characters that no XML file can hold, not even as references: control
    /// characters other than tab and line ends, lone surrogates, U+FFFE and U+FFFF.
    static QString withoutForbiddenChars(const QString &text);
};

} // namespace XMLGeneratorParser
