#include "ImportProfiles/settingtext.h"

#include "SSGenerator/structsetting.h"

#include <cmath>

namespace ImportProfiles
{
bool setValueFromText(HParser::StructSetting *setting, const QString &text)
{
    switch (setting->settingKind) {
    case HParser::SettingKind::Num: {
        const double number = text.toDouble();
        // No limit holds "nan" back: it is neither below nor above any.
        return !std::isnan(number) && setting->setValue(number);
    }
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
