#include "editors/settingsgrid.h"

#include "SSGenerator/formula.h"
#include "SSGenerator/generator.h"
#include "SSGenerator/rounding.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "editors/settingscheckbox.h"
#include "editors/settingslineedit.h"

#include <QLabel>

using HParser::SettingKind;
using HParser::StructSetting;

namespace
{

/// The number of a setting with all its decimals, and its unit.
QString wholeFigure(const StructSetting *setting)
{
    const int decimals = qMax(0, HParser::truncatedToInt32(setting->decimals->toDouble()));
    const QString number = QString::number(setting->getNumber(), 'f', decimals);
    return setting->unit.isEmpty() ? number : number + QLatin1Char(' ') + setting->unit;
}

/// What a field has no room for, or what six digits cannot tell, is in the tooltip.
void tellWholeFigure(SettingsLineEdit *field, const StructSetting *setting)
{
    const bool told = field->text().toDouble() == setting->getNumber();
    field->setToolTip(told ? QString() : wholeFigure(setting));
    field->setAccessibleDescription(told ? setting->unit : wholeFigure(setting));
}

} // namespace

SettingsGrid::SettingsGrid(const HParser::StructSettings *record,
                           const HParser::Generator *generator, QWidget *parent)
    : QGridLayout(parent)
{
    const StructSetting *type =
        record ? record->getStructSettingByName(QStringLiteral("type")) : nullptr;
    if (type)
        helpTexts = generator->getTooltips().value(type->getValue().toInt());
}

SettingsLineEdit *SettingsGrid::newLineEdit(StructSetting *setting, int width, int maxLength)
{
    auto *field = new SettingsLineEdit(true, parentWidget());
    field->setFixedWidth(width);
    // A text that was cut to be shown would be stored cut by the first visit.
    if (setting->settingKind == SettingKind::Num)
        field->setMaxLength(maxLength);
    field->bindSetting(setting);
    if (setting->settingKind == SettingKind::Num) {
        tellWholeFigure(field, setting);
        // Connected after the field's own slot: the field shows the new number by then.
        connect(setting, &StructSetting::valueChanged, field,
                [field, setting] { tellWholeFigure(field, setting); });
    }
    fields.append(field);
    return field;
}

SettingsCheckBox *SettingsGrid::newCheckBox(StructSetting *setting)
{
    auto *field = new SettingsCheckBox(parentWidget());
    field->bindSetting(setting);
    fields.append(field);
    return field;
}

QLabel *SettingsGrid::newLabel(const QString &text, const StructSetting *setting, QWidget *field)
{
    // In the label of a field a single & would name a key.
    QString plain = text;
    plain.replace(QLatin1Char('&'), QStringLiteral("&&"));
    QLabel *label = newRichLabel(plain, setting, field);
    label->setTextFormat(Qt::PlainText);
    return label;
}

QLabel *SettingsGrid::newBoldName(const StructSetting *setting, QWidget *field)
{
    const QString name = setting->descriptiveName.toHtmlEscaped();
    QLabel *label = newRichLabel(QStringLiteral("<b>%1:</b>").arg(name), setting, field);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return label;
}

QLabel *SettingsGrid::newRichLabel(const QString &markup, const StructSetting *setting,
                                   QWidget *field)
{
    auto *label = new QLabel(markup, parentWidget());
    label->setBuddy(field);
    const QString help = helpTexts.value(setting->name);
    if (!help.isEmpty())
        label->setToolTip(QStringLiteral("<FONT>%1</FONT>").arg(help));
    return label;
}

void SettingsGrid::addGap(int row, int column, int width)
{
    addItem(new QSpacerItem(width, 0, QSizePolicy::Fixed, QSizePolicy::Minimum), row, column);
}

void SettingsGrid::addStretch(int row, int column)
{
    addItem(new QSpacerItem(0, 0, QSizePolicy::Expanding, QSizePolicy::Minimum), row, column);
}

void SettingsGrid::enableFields(bool on)
{
    for (QWidget *field : qAsConst(fields))
        field->setEnabled(on);
}
