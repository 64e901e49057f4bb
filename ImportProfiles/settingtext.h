#pragma once

#include <QString>

namespace HParser
{
class StructSetting;
}

namespace ImportProfiles
{
/// Gives a setting the value that a record holds for it as text. False: a number that did not fit
/// and was changed. A setting of unknown kind is left alone.
bool setValueFromText(HParser::StructSetting *setting, const QString &text);

} // namespace ImportProfiles
