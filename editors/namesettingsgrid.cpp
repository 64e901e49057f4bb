#include "editors/namesettingsgrid.h"

#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "editors/fonts.h"
#include "editors/settingslineedit.h"

#include <QLabel>

using HParser::StructSetting;

NameSettingsGrid::NameSettingsGrid(HParser::StructSettings *record, HParser::Generator *generator,
                                   QWidget *parent)
    : SettingsGrid(record, generator, parent), settings(record->getStructSettings())
{
    backupSettings();
    setContentsMargins(9, 4, 9, 4);
    setSpacing(6);
    const int rows = qMin(2, settings.size());
    for (int row = 0; row < rows; ++row)
        addRow(settings.at(row), row);
}

NameSettingsGrid::~NameSettingsGrid() = default;

void NameSettingsGrid::backupSettings()
{
    for (const StructSetting *setting : qAsConst(settings))
        backup.emplace_back(setting->deepCopy());
}

void NameSettingsGrid::addRow(StructSetting *setting, int row)
{
    addStretch(row, 0);
    SettingsLineEdit *field = newLineEdit(setting, 150, anyLength);
    field->setFixedHeight(34);
    setPointSize(field, 18);
    addWidget(field, row, 1);
    addStretch(row, 2);
    QLabel *name = newLabel(setting->descriptiveName, setting, field);
    setPointSize(name, 15);
    addWidget(name, row, 3, Qt::AlignLeft | Qt::AlignVCenter);
    addStretch(row, 4);
}

void NameSettingsGrid::editSettings(bool on)
{
    enableFields(on);
}
