#pragma once

#include <QPixmap>
#include <QString>
#include <QWidget>

class QGridLayout;
class QLabel;
class SettingsCheckBox;

namespace HParser
{
class StructSetting;
}

/// A heading and a check box for one flag, on request with a picture that stands upside down while
/// the flag is set.
class SettingCheckboxExtended : public QWidget
{
    Q_OBJECT

public:
    /// setting, a flag, must outlive the widget.
    explicit SettingCheckboxExtended(HParser::StructSetting *setting, QWidget *parent = nullptr);

    /// The tooltip of the heading.
    void setToolTip(QString text);
    void enableEditing(bool on);
    /// Shows this picture beside the check box; does nothing where there is none at path.
    void addFlippingImage(QString path);

signals:
    void settingChanged();

public slots:
    void screenFlipped();

private:
    QGridLayout *grid;
    SettingsCheckBox *checkBox;
    QLabel *title;
    HParser::StructSetting *setting;
    QLabel *picture = nullptr;
    QPixmap upright;
    QPixmap upsideDown;
};
