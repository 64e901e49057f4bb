#include "editors/advancedsettingsgrid.h"

#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "editors/fonts.h"
#include "editors/settingscheckbox.h"
#include "editors/settingslineedit.h"

#include <QLabel>

using HParser::StructSetting;

AdvancedSettingsGrid::AdvancedSettingsGrid(HParser::StructSettings *record,
                                           HParser::Generator *generator,
                                           HParser::StructSetting * /*thermistor*/, QWidget *parent)
    : SettingsGrid(record, generator, parent)
{
    // Eight rows, the most that a delivered chemistry has, fill their place in the form exactly.
    setContentsMargins(9, 3, 9, 3);
    setHorizontalSpacing(6);
    setVerticalSpacing(2);
    setColumnMinimumWidth(1, 150);
    for (StructSetting *setting : record->getStructSettings()) {
        if (setting->isBasic)
            continue;
        addRow(setting, settings.size());
        settings.append(setting);
    }
    editSettings(false);
}

void AdvancedSettingsGrid::addRow(StructSetting *setting, int row)
{
    addGap(row, 0, 20);
    QWidget *field = nullptr;
    if (setting->settingKind == HParser::SettingKind::Bool) {
        field = newCheckBox(setting);
        addWidget(field, row, 3);
    } else {
        field = newLineEdit(setting, 70, 7);
        addWidget(field, row, 3);
        addWidget(newLabel(setting->unit, setting, field), row, 4);
    }
    QLabel *name = newBoldName(setting, field);
    enlargeFont(name, 2);
    addWidget(name, row, 1);
    addGap(row, 2, 10);
    setRowMinimumHeight(row, 25);
}

void AdvancedSettingsGrid::editSettings(bool on)
{
    if (!on)
        enableFields(false);
}

void AdvancedSettingsGrid::setAdvancedMode(bool on)
{
    for (StructSetting *setting : qAsConst(settings))
        setting->enableAdvancedMode(on);
}
