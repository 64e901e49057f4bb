#include "ImportProfiles/settingtext.h"

#include "SSGenerator/structsetting.h"

namespace ImportProfiles
{
bool setValueFromText(HParser::StructSetting *setting, const QString &text)
{
    switch (setting->settingKind) {
    case HParser::SettingKind::Num:
        return setting->setValue(text.toDouble());
    case HParser::SettingKind::Bool:
        setting->setValue(text == QLatin1String("true"));
        return true;
    case HParser::SettingKind::String:
    case HParser::SettingKind::List:
        setting->setValue(text);
        return true;
    case HParser::SettingKind::Unknown:
        break;
    }
    return true;
}

} // namespace ImportProfiles
