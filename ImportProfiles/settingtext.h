#pragma once

#include <QString>

namespace HParser
{
class StructSetting;
}

namespace ImportProfiles
{
/// Gives a setting the value that a record holds for it as text. False: a number that did not fit
/// and was changed, or "nan", which leaves the setting alone. So is a setting of unknown kind.
bool setValueFromText(HParser::StructSetting *setting, const QString &text);

} // namespace ImportProfiles
