#pragma once

#include <QList>
#include <QObject>
#include <QString>

namespace HParser
{
class StructSetting;

/// One struct of a schema: a record type with its settings in two orders. A profile is one of these
/// filled with values; so are the charger's own settings and statistics. Owns its settings.
class StructSettings : public QObject
{
    Q_OBJECT

public:
    explicit StructSettings(QObject *parent = nullptr);

    /// Display name, such as "Lithium" or "Global settings".
    QString getDescriptiveName() const { return descriptiveName; }
    void setDescriptiveName(const QString &name) { descriptiveName = name; }
    /// Kind word, such as "chemistry" or "global_settings".
    QString getStructType() const { return structType; }
    void setStructType(const QString &kind) { structType = kind; }

    /// The visual order: the settings that a user sees.
    QList<StructSetting *> getStructSettings() const { return structSettings; }
    void setStructSettings(const QList<StructSetting *> &settings) { structSettings = settings; }
    /// The declaration order: all settings, as the charger's record holds them.
    QList<StructSetting *> getOriginalOrderStructSettings() const
    {
        return originalOrderStructSettings;
    }
    void setOriginalOrderStructSettings(const QList<StructSetting *> &settings);

    /// The profile's Override Defaults state.
    bool getAdvancedSettingsEdited() const { return advancedSettingsEdited; }
    void setAdvancedSettingsEdited(bool edited);

    /// First setting of the declaration order with this variable name, or null.
    StructSetting *getStructSettingByName(const QString &name) const;
    /// The same by display name.
    StructSetting *getStructSettingByDescriptiveName(const QString &name) const;

    /// Same name, same kind, and every value reads the same, numbers to six significant digits.
    bool compare(const StructSettings *other) const;

    /// Builds all formulas, joins them to the settings that they name, and applies the defaults.
    /// May run again at any time: what an earlier run has joined is parted first.
    void buildFormulaTrees();
    /// A new struct without trees and values; the caller owns it and calls buildFormulaTrees().
    StructSettings *deepCopy() const;
    /// A new struct with trees and this one's values, all its settings open for override. The
    /// caller owns it.
    StructSettings *deepCopyWithValues() const;
    /// Opens the settings for override and gives them the values that other holds at the same place
    /// under the same name, as far as both reach. False: the limits here forbid one of the values.
    bool takeValuesOf(const StructSettings *other);

    /// Settings without dependees or with dependees before them, then the others.
    QList<StructSetting *> getDependancyOrderStructSettings() const;
    /// Takes the formulas of other and re-applies the values. Stops with false at the first value
    /// that does not fit, leaving the struct half changed: use a throw-away copy to ask.
    bool setFormulaTrees(const StructSettings *other);

    /// The settings with display index 0, 1, 2 and so on, in this order.
    static QList<StructSetting *> sortByVisualIndex(const QList<StructSetting *> &settings);

signals:
    void advancedEditedChanged(bool edited);

private:
    QString descriptiveName;
    QString structType;
    QList<StructSetting *> structSettings;
    QList<StructSetting *> originalOrderStructSettings;
    bool advancedSettingsEdited = false;
};

} // namespace HParser
