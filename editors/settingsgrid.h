#pragma once

#include <QGridLayout>
#include <QList>
#include <QMap>
#include <QString>

class QLabel;
class SettingsCheckBox;
class SettingsLineEdit;

namespace HParser
{
class Generator;
class StructSetting;
class StructSettings;
} // namespace HParser

/// What the grids of the forms share: fields bound to settings, and labels that carry the settings'
/// help texts. Which settings there are, and in which rows, is the business of each grid.
///
/// A grid lays out the widget that it is given. Its fields and labels are children of that widget.
class SettingsGrid : public QGridLayout
{
    Q_OBJECT

public:
    /// The fields in the order in which they were made.
    QList<QWidget *> getFields() const { return fields; }

protected:
    static constexpr int anyLength = 32767; ///< the most that a line edit takes

    /// record, which may be null, tells by its setting "type" where the help texts stand.
    SettingsGrid(const HParser::StructSettings *record, const HParser::Generator *generator,
                 QWidget *parent);

    /// A shaded line edit of this width, bound to the setting. maxLength holds for numbers; a text
    /// has the length that its setting allows. A number that is longer than the field shows is
    /// told whole by the field's tooltip.
    SettingsLineEdit *newLineEdit(HParser::StructSetting *setting, int width, int maxLength);
    SettingsCheckBox *newCheckBox(HParser::StructSetting *setting);
    /// Labels of a field, with the help text of its setting: a plain text, the setting's name in
    /// bold, a text with markup.
    QLabel *newLabel(const QString &text, const HParser::StructSetting *setting, QWidget *field);
    QLabel *newBoldName(const HParser::StructSetting *setting, QWidget *field);
    QLabel *newRichLabel(const QString &markup, const HParser::StructSetting *setting,
                         QWidget *field);
    /// A gap of fixed width.
    void addGap(int row, int column, int width);
    /// A gap that takes the room that is left.
    void addStretch(int row, int column);
    void enableFields(bool on);

private:
    QMap<QString, QString> helpTexts; ///< by variable name
    QList<QWidget *> fields;
};
