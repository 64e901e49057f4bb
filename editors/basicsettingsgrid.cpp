#include "editors/basicsettingsgrid.h"

#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "editors/fonts.h"
#include "editors/settingscheckbox.h"
#include "editors/settingslineedit.h"

#include <QLabel>

using HParser::StructSetting;

namespace
{

bool belongsHere(const StructSetting *setting)
{
    return setting->isBasic && setting->name != QLatin1String("title") &&
           setting->name != QLatin1String("description");
}

} // namespace

BasicSettingsGrid::BasicSettingsGrid(bool, HParser::StructSettings *record,
                                     HParser::Generator *generator, QWidget *parent)
    : SettingsGrid(record, generator, parent)
{
    setContentsMargins(9, 9, 9, 9);
    setSpacing(6);
    int row = 0;
    for (StructSetting *setting : record->getStructSettings()) {
        if (belongsHere(setting))
            addRow(setting, row++);
    }
    addItem(new QSpacerItem(0, 0, QSizePolicy::Expanding, QSizePolicy::Expanding), row, 4);
}

void BasicSettingsGrid::addRow(StructSetting *setting, int row)
{
    constexpr int labelPoints = 15;
    constexpr int fieldPoints = 18;

    addStretch(row, 0);
    QWidget *field = nullptr;
    if (setting->settingKind == HParser::SettingKind::Bool) {
        field = newCheckBox(setting);
        addWidget(field, row, 2, Qt::AlignCenter);
    } else {
        SettingsLineEdit *edit = newLineEdit(setting, 85, 6);
        edit->setFixedHeight(26);
        edit->setAlignment(Qt::AlignRight);
        setPointSize(edit, fieldPoints);
        addWidget(edit, row, 1);
        field = edit;

        QLabel *unit = newLabel(setting->unit, setting, field);
        setPointSize(unit, labelPoints);
        unit->setFixedSize(qMax(70, unit->sizeHint().width()), 30);
        addWidget(unit, row, 2);
    }
    addGap(row, 3, 20);
    QLabel *name = newLabel(setting->descriptiveName, setting, field);
    setPointSize(name, labelPoints);
    addWidget(name, row, 4, Qt::AlignLeft | Qt::AlignVCenter);
    setRowMinimumHeight(row, 25);
}

void BasicSettingsGrid::editSettings(bool on)
{
    enableFields(on);
}
