#include "editors/settingslineedit.h"

#include "SSGenerator/formula.h"
#include "SSGenerator/rounding.h"
#include "SSGenerator/structsetting.h"
#include "editors/numbervalidator.h"
#include "editors/typednumber.h"

using HParser::SettingKind;
using HParser::StructSetting;

namespace
{

bool isText(const StructSetting *setting)
{
    return setting->settingKind == SettingKind::String || setting->settingKind == SettingKind::List;
}

/// number with this many digits behind its point. Cuts, never rounds: the setting has rounded. A
/// number with an exponent stays as it is, for its last digits are not those behind the point.
QString padded(const QString &number, int decimals)
{
    if (decimals <= 0 || number.contains(QLatin1Char('e')))
        return number;
    const QString whole = number.section(QLatin1Char('.'), 0, 0);
    const QString fraction = number.section(QLatin1Char('.'), 1);
    return whole + QLatin1Char('.') + fraction.leftJustified(decimals, QLatin1Char('0'), true);
}

bool wholeDigitsFit(const QString &number, int room)
{
    return number.section(QLatin1Char('.'), 0, 0).size() <= room;
}

/// text, which tells number, for this many characters. The field may cut decimals off; where it
/// would cut into the whole digits or the exponent, and so show another number, "1.2e5" stands.
QString fitted(const QString &text, double number, int decimals, int room)
{
    const bool hasExponent = text.contains(QLatin1Char('e'));
    if (text.size() <= room || (!hasExponent && wholeDigitsFit(text, room)))
        return text;
    const QString plain = QString::number(number, 'f', qMax(0, decimals));
    if (wholeDigitsFit(plain, room))
        return plain;
    QString shortest;
    for (int digits = 5; digits >= 0; --digits) {
        shortest = QString::number(number, 'e', digits)
                       .replace(QLatin1String("e+0"), QLatin1String("e"))
                       .remove(QLatin1Char('+'));
        if (shortest.size() <= room)
            break;
    }
    return shortest;
}

} // namespace

SettingsLineEdit::SettingsLineEdit(bool shaded, QWidget *parent) : QLineEdit(parent)
{
    setObjectName(QStringLiteral("SettingsLineEdit"));
    setFixedHeight(20);
    if (shaded) {
        setStyleSheet(QStringLiteral("QLineEdit:enabled{background-color: rgb(238, 238, 238);}"));
    }
    connect(this, &QLineEdit::editingFinished, this, &SettingsLineEdit::on_editingFinished);
}

void SettingsLineEdit::bindSetting(StructSetting *newSetting)
{
    if (setting)
        setting->disconnect(this);
    setting = newSetting;
    setValidator(nullptr);
    setAccessibleName(setting->descriptiveName);
    setAccessibleDescription(setting->unit);

    if (isText(setting)) {
        // A text that is no array has no room to run out of.
        if (setting->arraySize > 0)
            setMaxLength(setting->arraySize - 1);
        setText(setting->getValue());
    } else if (setting->settingKind == SettingKind::Num) {
        setValidator(new NumberValidator(this));
        updateView();
    } else {
        return;
    }
    connect(setting, &StructSetting::valueChanged, this, &SettingsLineEdit::updateView);
    connect(setting, &StructSetting::enableView, this, &SettingsLineEdit::on_enableView);
}

StructSetting *SettingsLineEdit::getSetting() const
{
    return setting;
}

void SettingsLineEdit::saveSetting()
{
    if (!setting)
        return;
    // The text is set again also where the setting stays silent because it held the limited value
    // already: what was typed must not stay in sight.
    if (isText(setting)) {
        setting->setValue(text());
        setText(setting->getValue());
    } else if (setting->settingKind == SettingKind::Num) {
        // Visiting a field changes nothing, also where the number has more digits than are shown.
        const bool untouched = text() == shownNumber;
        setting->setValue(untouched ? setting->getNumber() : TypedNumber::value(text()));
        showNumber();
    }
}

void SettingsLineEdit::on_editingFinished()
{
    saveSetting();
}

void SettingsLineEdit::on_enableView(bool on)
{
    setEnabled(on);
}

void SettingsLineEdit::updateView()
{
    if (setting && setting->settingKind == SettingKind::Num)
        showNumber();
}

void SettingsLineEdit::showNumber()
{
    const int decimals = HParser::truncatedToInt32(setting->decimals->toDouble());
    setText(
        fitted(padded(setting->getValue(), decimals), setting->getNumber(), decimals, maxLength()));
    // What is really shown: a field may be too short for the number.
    shownNumber = text();
}
