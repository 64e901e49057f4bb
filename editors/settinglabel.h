#pragma once

#include <QLabel>
#include <QString>

namespace HParser
{
class StructSetting;
}

/// The name of a setting, in a style that depends on a flag.
class SettingLabel : public QLabel
{
    Q_OBJECT

public:
    /// setting gives the name; toggle, the flag, must outlive the label.
    SettingLabel(HParser::StructSetting *setting, HParser::StructSetting *toggle,
                 QWidget *parent = nullptr);

    /// The style sheets for either state of the flag. While one is empty the style stays.
    void setStyleChange(QString onTrue, QString onFalse);

public slots:
    void on_settingToggled();

private:
    HParser::StructSetting *toggle;
    QString styleOnTrue;
    QString styleOnFalse;
};
