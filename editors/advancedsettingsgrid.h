#pragma once

#include "editors/settingsgrid.h"

/// A row for each advanced setting that a user sees.
///
/// The fields do not follow the edit mode up: they are enabled by their settings alone, when these
/// are opened for override.
class AdvancedSettingsGrid : public SettingsGrid
{
    Q_OBJECT

public:
    /// Lays out parent with the settings of record; all fields are disabled. thermistor is the
    /// record's setting "external_thermistor" or null. No row depends on it: the limits for a
    /// thermistor stay in sight whether one is required or not.
    AdvancedSettingsGrid(HParser::StructSettings *record, HParser::Generator *generator,
                         HParser::StructSetting *thermistor, QWidget *parent);

public slots:
    /// Disables all fields; true changes nothing.
    void editSettings(bool on);
    /// Opens the settings for override, or closes them, which gives them their defaults.
    void setAdvancedMode(bool on);

private:
    void addRow(HParser::StructSetting *setting, int row);

    QList<HParser::StructSetting *> settings;
};
