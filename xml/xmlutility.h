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
};

} // namespace XMLGeneratorParser
