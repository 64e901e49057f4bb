#pragma once

#include <QList>
#include <QString>
#include <QWidget>

#include <memory>

class QVBoxLayout;
class SettingCheckboxExtended;
class SettingSlider;
class SettingsLineEdit;

namespace HParser
{
class Generator;
class StructSetting;
class StructSettings;
} // namespace HParser

/// The page for the settings of the charger itself: a slider for each number and a check box for
/// each flag, in visual order. Edits the struct that it is given, not a copy.
class UnitSettingsDisplay : public QWidget
{
    Q_OBJECT

public:
    /// Opens all settings of the visual order for override: the page has no edit mode, it is always
    /// editable. settings and generator must outlive it.
    UnitSettingsDisplay(HParser::StructSettings *settings, HParser::Generator *generator,
                        QWidget *parent = nullptr);
    ~UnitSettingsDisplay() override;

    /// Remembers all values of the struct, hidden ones included, for restoreBackup().
    void saveBackups();
    /// Puts the values last remembered back.
    void restoreBackup();

signals:
    /// Some setting of the page has changed.
    void settingChanged();

public slots:
    void settingChangedSlot();
    /// Gives the settings that a user sees their defaults.
    void on_resetDefaultsClicked();
    void enableEditing(bool on);
    void on_saveInProgramClicked();

private:
    void inflateGrid();
    QWidget *addSlider(HParser::StructSetting *setting, const QString &tooltip);
    QWidget *addCheckBox(HParser::StructSetting *setting, const QString &tooltip);
    QWidget *addLineEdit(HParser::StructSetting *setting, const QString &tooltip);

    QWidget *sliderTests;
    HParser::StructSettings *settings;
    HParser::Generator *generator;
    QList<SettingSlider *> sliders;
    QList<SettingCheckboxExtended *> checkBoxes;
    QList<SettingsLineEdit *> lineEdits;
    std::unique_ptr<HParser::StructSettings> backup;
};
