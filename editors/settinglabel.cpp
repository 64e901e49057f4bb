#include "editors/settinglabel.h"

#include "SSGenerator/structsetting.h"

using HParser::StructSetting;

SettingLabel::SettingLabel(StructSetting *setting, StructSetting *toggle, QWidget *parent)
    : QLabel(QLatin1String("<b>") + setting->descriptiveName + QLatin1String(":</b>"), parent),
      toggle(toggle)
{
    connect(toggle, &StructSetting::valueChanged, this, &SettingLabel::on_settingToggled);
}

void SettingLabel::setStyleChange(QString onTrue, QString onFalse)
{
    styleOnTrue = onTrue;
    styleOnFalse = onFalse;
    on_settingToggled();
}

void SettingLabel::on_settingToggled()
{
    if (styleOnTrue.isEmpty() || styleOnFalse.isEmpty())
        return;
    setStyleSheet(toggle->getValue() == QLatin1String("true") ? styleOnTrue : styleOnFalse);
}
