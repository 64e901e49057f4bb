#pragma once

#include <QString>
#include <QWidget>

class QDoubleSpinBox;
class QGridLayout;
class QLabel;
class QSlider;

namespace HParser
{
class StructSetting;
}

/// A heading, a spin box, the unit and a slider for one number. The slider's steps are the smallest
/// units that are shown, and whatever moves it goes through the spin box.
///
/// The bounds are read once, here. Later ones act by the setting's own limits, and what the setting
/// then holds is shown; nothing but the user's hand writes into the setting.
class SettingSlider : public QWidget
{
    Q_OBJECT

public:
    /// setting, a number with its formulas built, must outlive the widget. tooltip may be empty.
    SettingSlider(HParser::StructSetting *setting, QString tooltip, QWidget *parent = nullptr);

    void enableEditing(bool on);
    /// Turns the heading into a preview of the charger's screen at the brightness that the spin box
    /// shows.
    void styleLabel();

signals:
    /// A new position for the slider.
    void intValue(int position);
    /// A new value for the spin box.
    void doubleValue(double value);

public slots:
    void spinBoxChanged(double value);
    void sliderChanged(int position);
    void settingChanged();
    void brightnessChanged(double value);

protected:
    /// Keeps a turn of the mouse wheel that scrolls the page from changing what it passes.
    bool eventFilter(QObject *control, QEvent *event) override;

private:
    void addTitle(const QString &tooltip);
    void addSpinBox(double lowest, double highest);
    void addSlider(double lowest, double highest);
    /// Where the slider stands for value.
    int positionOf(double value) const;
    /// Widens the spin box's range to value, if need be.
    void makeRoomFor(double value);
    void showInSpinBox(double value);

    QGridLayout *grid;
    HParser::StructSetting *setting;
    QLabel *title = nullptr;
    QDoubleSpinBox *spinBox = nullptr;
    QSlider *slider = nullptr;
    int decimals;
    /// Steps of the slider in one displayed unit.
    double multiplier;
    /// While set, the spin box follows the setting, not the user.
    bool showing = false;
};
