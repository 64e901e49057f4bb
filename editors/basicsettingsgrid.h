#pragma once

#include "editors/settingsgrid.h"

/// A row for each basic setting that a user sees, other than the title and the description.
class BasicSettingsGrid : public SettingsGrid
{
    Q_OBJECT

public:
    /// Lays out parent with the settings of record. The flag means nothing; callers pass true.
    BasicSettingsGrid(bool, HParser::StructSettings *record, HParser::Generator *generator,
                      QWidget *parent);

public slots:
    /// Enables or disables all fields.
    void editSettings(bool on);

private:
    void addRow(HParser::StructSetting *setting, int row);
};
