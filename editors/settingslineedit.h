#pragma once

#include <QLineEdit>
#include <QPointer>
#include <QString>

namespace HParser
{
class StructSetting;
}

/// A line edit for one setting, a number or a text. What is typed goes into the setting when
/// editing ends; the setting limits and rounds it, and the line edit shows what the setting then
/// holds, a number with all its decimals. Bound to a setting of another kind it stays empty and
/// stores nothing.
class SettingsLineEdit : public QLineEdit
{
    Q_OBJECT

public:
    /// shaded gives the enabled line edit a light grey background.
    explicit SettingsLineEdit(bool shaded, QWidget *parent = nullptr);

    /// Shows and follows this setting (not owned) instead of an earlier one.
    void bindSetting(HParser::StructSetting *newSetting);
    /// Null before bindSetting() and once the setting is gone.
    HParser::StructSetting *getSetting() const;
    /// Stores the text in the setting and shows what came of it.
    void saveSetting();

public slots:
    void on_editingFinished();
    void on_enableView(bool on);
    /// Shows the number that the setting holds. Texts are left alone. A short maximum length may
    /// cost decimals, but no whole digits: there the number is shortened by an exponent.
    void updateView();

private:
    void showNumber();

    QPointer<HParser::StructSetting> setting;
    /// The text of the number last shown.
    QString shownNumber;
};
