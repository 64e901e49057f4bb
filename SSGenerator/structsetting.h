#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <optional>

namespace HParser
{
class Formula;

/// What a setting's value is. The numbers are those of the schema's own field.
enum class SettingKind { Unknown = -1, Num = 0, Bool = 1, String = 2, List = 3 };

/// One member of a schema struct: the parsed declaration and the live value in one object.
/// All values here are display values (amperes, volts, hours); the integer that the charger stores
/// comes into being only in the flash-stack image, by `scale`.
///
/// The declaration is fixed after construction, apart from the formulas' texts, and is therefore
/// open to all readers. Formulas are owned by the setting; they are null where the kind has none.
class StructSetting : public QObject
{
    Q_OBJECT

public:
    /// Reads a member line such as
    /// `unsigned short bulk_I; // num, auto, 0.2, 8.0, *0.001, 1, "Bulk Current", ...`.
    /// A line that cannot be read ends the process: schemas are trusted data.
    explicit StructSetting(const QString &line, QObject *parent = nullptr);
    /// An empty setting, for deepCopy().
    explicit StructSetting(QObject *parent = nullptr);

    /// The value as text: numbers with six significant digits, flags as "true" or "false".
    QString getValue() const;
    /// Sets a number, clamped into the bounds and rounded to the decimals. An advanced setting that
    /// is not open for override takes its default instead. False: the wanted value did not fit and
    /// was changed. All dependent settings have settled when this returns.
    bool setValue(double wanted);
    void setValue(bool wanted);
    /// Sets a text, cut to arraySize - 1 characters.
    void setValue(const QString &wanted);
    void setValue(const char *) = delete;

    /// The value of a flag.
    bool getBool() const { return boolValue; }
    /// Sets a flag without telling anyone.
    void setBoolSilently(bool on) { boolValue = on; }
    /// The value of a number at full precision.
    double getNumber() const { return numValue; }
    /// What getValue() reads, as a number: a number with six significant digits, a text converted.
    double getShownNumber() const;
    /// The default of a flag.
    bool getDefaultBool() const { return defaultBool; }
    /// The default of a text or a list.
    QString getDefaultText() const { return defaultText; }

    /// value clamped into the current bounds; +infinity reads as the lower bound, and the upper
    /// bound wins where the two have crossed.
    double getValueInBounds(double value) const;
    /// value rounded to the current decimals, halves upwards, in 32-bit arithmetic.
    double getRoundedValue(double value) const;

    /// Applies limits and rounding to the present value again.
    void updateValue();
    void setDefault();
    /// Opens or closes an advanced setting for override; closing takes the default. Basic settings
    /// ignore it.
    void enableAdvancedMode(bool on);

    /// A new setting with the same declaration, formulas without trees, and no value. The caller
    /// owns it.
    StructSetting *deepCopy() const;

    void buildFormulaTrees(const QList<StructSetting *> &settings);
    void attachMemberSettingSignalsToContainerFormulaSlots();
    void attachMemberFormulaSignalsToThisSettingsSlot();
    /// Takes back what the two functions above have connected, however often they ran.
    void detachFormulaSignals();
    /// Takes default, bounds, scale and decimals of other, with names looked up in settings, and
    /// re-applies the value held. False: the value did not fit.
    bool setFormulaTrees(const StructSetting *other, const QList<StructSetting *> &settings);
    /// Replaces the upper bound by a plain number.
    void setUpperBound(const QString &text);
    void setUpperBound(const QString &text, const QList<StructSetting *> &settings);

    /// Display names of the settings that bounds, default, scale and decimals name.
    QStringList getDependeeSettingsNames() const;

    QString name;
    QString cType;
    bool isArray = false;
    int arraySize = 0;
    SettingKind settingKind = SettingKind::Unknown;
    QString bits;
    Formula *lowerBound = nullptr;
    Formula *upperBound = nullptr;
    Formula *scale = nullptr;
    Formula *decimals = nullptr;
    QString unit;
    QString descriptiveName;
    QString xmlName;
    Formula *defaultFormula = nullptr;
    Formula *visualIndex = nullptr;
    bool isBasic = false;
    QStringList listItems;
    /// An advanced setting is open for override.
    bool advancedEnabled = false;

signals:
    void valueChanged();
    /// The widgets of this setting should be enabled or disabled.
    void enableView(bool on);

public slots:
    void on_formulasMemberSettingChanged();

private:
    void parseDeclaration(const QString &declaration);
    void parseFields(const QStringList &fields);
    void parseListItems(const QStringList &fields);

    bool defaultBool = false;
    QString defaultText;
    double numValue = 0;
    /// numValue as its text reads. Formulas ask for it far more often than it changes.
    mutable std::optional<double> shownNumber = 0;
    bool boolValue = false;
    /// Null until a text was first set.
    QString textValue;
};

} // namespace HParser
