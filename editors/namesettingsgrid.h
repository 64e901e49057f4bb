#pragma once

#include "editors/settingsgrid.h"

#include <memory>
#include <vector>

/// The first two settings that a user sees: in a profile its title and its description.
class NameSettingsGrid : public SettingsGrid
{
    Q_OBJECT

public:
    /// Lays out parent with the settings of record.
    NameSettingsGrid(HParser::StructSettings *record, HParser::Generator *generator,
                     QWidget *parent);
    ~NameSettingsGrid() override;

public slots:
    /// Enables or disables all fields.
    void editSettings(bool on);

private:
    void backupSettings();
    void addRow(HParser::StructSetting *setting, int row);

    QList<HParser::StructSetting *> settings;
    std::vector<std::unique_ptr<HParser::StructSetting>> backup;
};
