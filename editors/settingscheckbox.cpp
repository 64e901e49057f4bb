#include "editors/settingscheckbox.h"

#include "SSGenerator/structsetting.h"

#include <QPalette>

using HParser::StructSetting;

namespace
{

bool isTrue(const StructSetting *setting)
{
    return setting->getValue() == QLatin1String("true");
}

} // namespace

SettingsCheckBox::SettingsCheckBox(QWidget *parent) : QCheckBox(parent)
{
    setObjectName(QStringLiteral("SettingsCheckBox"));
    // Dark desktops draw the box hardly lighter than the window.
    QPalette colours = palette();
    colours.setColor(QPalette::Base, Qt::white);
    colours.setColor(QPalette::Text, Qt::black);
    colours.setColor(QPalette::Disabled, QPalette::Text, Qt::darkGray);
    setPalette(colours);
    connect(this, &QCheckBox::clicked, this, &SettingsCheckBox::on_clicked);
}

void SettingsCheckBox::bindSetting(StructSetting *newSetting)
{
    if (setting)
        setting->disconnect(this);
    setting = newSetting;
    setAccessibleName(setting->descriptiveName);
    setChecked(isTrue(setting));
    connect(setting, &StructSetting::enableView, this, &SettingsCheckBox::on_enableView);
    connect(setting, &StructSetting::valueChanged, this, &SettingsCheckBox::settingChanged);
}

StructSetting *SettingsCheckBox::getSetting() const
{
    return setting;
}

void SettingsCheckBox::saveSetting(bool on)
{
    if (setting)
        setting->setValue(on);
}

void SettingsCheckBox::on_clicked()
{
    saveSetting(isChecked());
}

void SettingsCheckBox::on_enableView(bool on)
{
    setEnabled(on);
}

void SettingsCheckBox::settingChanged()
{
    setChecked(setting && isTrue(setting));
    emit settingChangedSig();
}
