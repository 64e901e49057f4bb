#pragma once

#include <QCheckBox>
#include <QPointer>

namespace HParser
{
class StructSetting;
}

/// A check box for one flag. A click goes into the setting, and every change of the setting shows.
class SettingsCheckBox : public QCheckBox
{
    Q_OBJECT

public:
    explicit SettingsCheckBox(QWidget *parent = nullptr);

    /// Shows and follows this setting (not owned) instead of an earlier one.
    void bindSetting(HParser::StructSetting *newSetting);
    /// Null before bindSetting() and once the setting is gone.
    HParser::StructSetting *getSetting() const;
    void saveSetting(bool on);

signals:
    /// The setting has changed, and the box shows it.
    void settingChangedSig();

public slots:
    void on_clicked();
    void on_enableView(bool on);
    void settingChanged();

private:
    QPointer<HParser::StructSetting> setting;
};
