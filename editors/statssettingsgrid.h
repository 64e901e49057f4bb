#pragma once

#include "editors/settingsgrid.h"

/// The statistics of a profile: what the charger counted on the left, what is calculated from it on
/// the right. Nothing here can be edited; new figures show at once.
///
/// Rows are 50 high where there is room. In a lower place they move together, down to the height of
/// the fields; the labels keep their height and stay centred beside the fields.
class StatsSettingsGrid : public SettingsGrid
{
    Q_OBJECT

public:
    /// Lays out parent with these settings; without any it tells that there are no statistics.
    /// Times in hours get the decimals for which the field has room: this changes their settings.
    StatsSettingsGrid(QList<HParser::StructSetting *> settings, HParser::Generator *generator,
                      QWidget *parent);

    QSize minimumSize() const override;
    void setGeometry(const QRect &rect) override;

private:
    void noStats();
    void displayStats(const QList<HParser::StructSetting *> &settings);
    void addTotal(HParser::StructSetting *setting, int row);
    void addAverage(HParser::StructSetting *setting, int row);
    void addField(HParser::StructSetting *setting, int row, int column);

    int rows = 0; ///< without the headings
};
