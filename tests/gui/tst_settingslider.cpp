#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "editors/settingslider.h"
#include "support/schemarecord.h"
#include "support/typednumbers.h"

#include <QApplication>
#include <QClipboard>
#include <QDoubleSpinBox>
#include <QFile>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QSlider>
#include <QTest>
#include <QWheelEvent>

#include <cmath>
#include <limits>
#include <memory>

using HParser::StructSetting;

namespace
{

QString lineNamed(const QString &name, const QString &lower, const QString &upper,
                  const QString &decimals, const QString &preset, const QString &word = "basic")
{
    return QStringLiteral("long %1; // num, auto, %2, %3, *1, %4, \"Cable Resistance\", \"Ohm\", "
                          "\"%1\", %5, 0, %6")
        .arg(name, lower, upper, decimals, preset, word);
}

} // namespace

class SettingSliderTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void titleRow_data();
    void titleRow();
    void titleIsLargerThanAFontInPixels();
    void tooltip_data();
    void tooltip();
    void spinBoxLook();
    void unitLook();
    void sliderLook();
    void sliderRange_data();
    void sliderRange();
    void startsAtTheValue();
    void startsBeyondABoundThatMoved();
    void everyValueGoesThroughUnchanged_data();
    void everyValueGoesThroughUnchanged();
    void keysGiveEveryStep_data();
    void keysGiveEveryStep();
    void spinBoxStores();
    void typedNumberEndsAtTheSetting_data();
    void typedNumberEndsAtTheSetting();
    void pastedNumberEndsAtTheSetting_data();
    void pastedNumberEndsAtTheSetting();
    void typingWaitsForItsEnd();
    void textsFitTheSpinBox_data();
    void textsFitTheSpinBox();
    void largeFontCutsNoNumber_data();
    void largeFontCutsNoNumber();
    void showsNoGroupsOfDigits();
    void sliderStores();
    void keyboardReachesBoth();
    void arrowsStepByTheSmallestUnit();
    void followsTheSetting();
    void everyRoadEnds();
    void laterBoundClamps();
    void silentClampSnapsBack();
    void importBeyondTheBoundsOfTheDayStays_data();
    void importBeyondTheBoundsOfTheDayStays();
    void valueOfManyDigitsStays();
    void laterDecimalsStay();
    void closedSettingKeepsItsDefault();
    void endlessBoundIsNoDanger_data();
    void endlessBoundIsNoDanger();
    void enablesEditing();
    void previewsBrightness_data();
    void previewsBrightness();
    void previewFollowsTheSpinBox();
    void wheelScrollsPast();
    void wheelTurnsTheFieldInUse();
    void paintsTicks();
    void tellsItsName();

private:
    void show(const QStringList &memberLines, const QString &tooltip = QString());
    static void turnWheel(QWidget *control);
    void type(const QString &text);
    QLabel *label(int row, int column) const
    {
        const auto *grid = qobject_cast<QGridLayout *>(widget->layout());
        return qobject_cast<QLabel *>(grid->itemAtPosition(row, column)->widget());
    }

    std::unique_ptr<HParser::StructSettings> record;
    /// The first member, which the widget shows.
    StructSetting *setting = nullptr;
    std::unique_ptr<SettingSlider> widget;
    QDoubleSpinBox *spinBox = nullptr;
    QSlider *slider = nullptr;
};

void SettingSliderTest::cleanup()
{
    widget.reset();
    record.reset();
}

void SettingSliderTest::show(const QStringList &memberLines, const QString &tooltip)
{
    cleanup();
    record = schemaRecord(memberLines);
    setting = record->getOriginalOrderStructSettings().constFirst();
    widget = std::make_unique<SettingSlider>(setting, tooltip);
    spinBox = widget->findChild<QDoubleSpinBox *>();
    slider = widget->findChild<QSlider *>();
}

void SettingSliderTest::type(const QString &text)
{
    spinBox->selectAll();
    QTest::keyClick(spinBox, Qt::Key_Delete);
    QTest::keyClicks(spinBox, text);
    QTest::keyClick(spinBox, Qt::Key_Return);
}

void SettingSliderTest::titleRow_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("columns");
    QTest::newRow("ordinary") << "cable" << 3;
    QTest::newRow("brightness leaves a column free") << "brightness" << 2;
}

void SettingSliderTest::titleRow()
{
    QFETCH(QString, name);
    QFETCH(int, columns);
    show({lineNamed(name, "0", "0.999", "3", "0.087")});
    const auto *grid = qobject_cast<QGridLayout *>(widget->layout());
    QVERIFY(grid);
    QLabel *title = label(0, 0);
    QCOMPARE(title->text(), QString("<b>Cable Resistance:</b>"));
    QCOMPARE(title->font().pointSize(), QLabel().font().pointSize() + 2);
    for (int column = 0; column < 3; ++column) {
        QLayoutItem *item = grid->itemAtPosition(0, column);
        QCOMPARE(item && item->widget() == title, column < columns);
    }
}

void SettingSliderTest::titleIsLargerThanAFontInPixels()
{
    const QFont before = QApplication::font();
    QFont inPixels = before;
    inPixels.setPixelSize(16);
    QApplication::setFont(inPixels);
    show({lineNamed("x", "0", "9", "0", "5")});
    const int usual = QFontInfo(inPixels).pointSize();
    QApplication::setFont(before);
    QCOMPARE(label(0, 0)->font().pointSize(), usual + 2);
}

void SettingSliderTest::tooltip_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");
    QTest::newRow("text") << "Help & more"
                          << "<FONT>Help & more</FONT>";
    QTest::newRow("none") << ""
                          << "";
}

void SettingSliderTest::tooltip()
{
    QFETCH(QString, text);
    show({lineNamed("x", "0", "9", "0", "5")}, text);
    QTEST(label(0, 0)->toolTip(), "shown");
}

void SettingSliderTest::spinBoxLook()
{
    show({lineNamed("x", "0.1", "0.999", "3", "0.087")});
    const auto *grid = qobject_cast<QGridLayout *>(widget->layout());
    QCOMPARE(grid->itemAtPosition(1, 0)->widget(), spinBox);
    QCOMPARE(spinBox->decimals(), 3);
    QCOMPARE(spinBox->minimum(), 0.1);
    QCOMPARE(spinBox->maximum(), 0.999);
    QCOMPARE(spinBox->value(), 0.1);
    QCOMPARE(spinBox->singleStep(), 0.001);
    QCOMPARE(spinBox->styleSheet(), QString("QDoubleSpinBox:!enabled{color:black;}"));
    QCOMPARE(spinBox->minimumWidth(), 60);
    QCOMPARE(spinBox->maximumWidth(), 60);
    QCOMPARE(spinBox->minimumHeight(), spinBox->maximumHeight());
    QCOMPARE(spinBox->height(), spinBox->sizeHint().height());
    QCOMPARE(spinBox->alignment() & Qt::AlignHorizontal_Mask, Qt::AlignRight);
    QVERIFY(!spinBox->keyboardTracking());
    QCOMPARE(spinBox->font(), label(0, 0)->font());
}

void SettingSliderTest::unitLook()
{
    show({lineNamed("x", "0", "9", "0", "5")});
    QCOMPARE(label(1, 1)->text(), QString("Ohm"));
    QCOMPARE(label(1, 1)->minimumWidth(), 50);
    QCOMPARE(label(1, 1)->maximumWidth(), 50);
}

void SettingSliderTest::sliderLook()
{
    show({lineNamed("x", "0", "9", "0", "5")});
    const auto *grid = qobject_cast<QGridLayout *>(widget->layout());
    QCOMPARE(grid->itemAtPosition(1, 2)->widget(), slider);
    QFile file(":/style/slider.qss");
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(slider->styleSheet(), QString::fromUtf8(file.readAll()));
    QVERIFY(slider->styleSheet().contains("QSlider"));
    QCOMPARE(slider->orientation(), Qt::Horizontal);
    QCOMPARE(slider->tickPosition(), QSlider::TicksAbove);
    QCOMPARE(slider->singleStep(), 1);
}

void SettingSliderTest::sliderRange_data()
{
    QTest::addColumn<QString>("lower");
    QTest::addColumn<QString>("upper");
    QTest::addColumn<QString>("decimals");
    QTest::addColumn<int>("minimum");
    QTest::addColumn<int>("maximum");
    QTest::addColumn<int>("ticks");
    QTest::newRow("two decimals") << "0.8"
                                  << "2"
                                  << "2" << 80 << 200 << 12;
    QTest::newRow("brightness") << "0"
                                << "9"
                                << "0" << 0 << 9 << 1;
    QTest::newRow("screensaver") << "0"
                                 << "240"
                                 << "0" << 0 << 240 << 24;
    QTest::newRow("longpress") << "0.04"
                               << "2"
                               << "2" << 4 << 200 << 19;
    QTest::newRow("cable") << "0"
                           << "0.999"
                           << "3" << 0 << 999 << 100;
    QTest::newRow("tare") << "0"
                          << "255"
                          << "0" << 0 << 255 << 25;
    QTest::newRow("just below in binary") << "0.29"
                                          << "0.58"
                                          << "2" << 29 << 58 << 3;
    QTest::newRow("bounds finer than the decimals") << "0.55"
                                                    << "9.99"
                                                    << "1" << 5 << 99 << 9;
    QTest::newRow("negative") << "0-1.25"
                              << "1.25"
                              << "1" << -12 << 12 << 2;
    QTest::newRow("few steps") << "0"
                               << "3"
                               << "0" << 0 << 3 << 0;
    QTest::newRow("decimals truncated") << "0"
                                        << "9"
                                        << "3/2" << 0 << 90 << 9;
}

void SettingSliderTest::sliderRange()
{
    QFETCH(QString, lower);
    QFETCH(QString, upper);
    QFETCH(QString, decimals);
    show({lineNamed("x", lower, upper, decimals, upper)});
    QTEST(slider->minimum(), "minimum");
    QTEST(slider->maximum(), "maximum");
    QTEST(slider->tickInterval(), "ticks");
    QCOMPARE(slider->pageStep(), qMax(1, slider->tickInterval()));
}

void SettingSliderTest::startsAtTheValue()
{
    show({lineNamed("x", "0", "0.999", "3", "0.087")});
    QCOMPARE(spinBox->value(), 0.087);
    QCOMPARE(spinBox->text(), QString("0.087"));
    QCOMPARE(slider->value(), 87);
    QCOMPARE(setting->getNumber(), 0.087);
}

void SettingSliderTest::startsBeyondABoundThatMoved()
{
    record = schemaRecord({lineNamed("x", "0", "9", "0", "5")});
    setting = record->getOriginalOrderStructSettings().constFirst();
    // Nobody feeds the value through the new bound: the next user who touches it does.
    setting->setUpperBound("4");
    const SettingSlider late(setting, QString());
    QCOMPARE(late.findChild<QDoubleSpinBox *>()->value(), 5.0);
    QCOMPARE(late.findChild<QSlider *>()->value(), 4);
    QCOMPARE(setting->getNumber(), 5.0);
    late.findChild<QDoubleSpinBox *>()->stepDown();
    QCOMPARE(setting->getNumber(), 4.0);
}

void SettingSliderTest::everyValueGoesThroughUnchanged_data()
{
    QTest::addColumn<QString>("lower");
    QTest::addColumn<QString>("upper");
    QTest::addColumn<int>("decimals");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::newRow("brightness") << "0"
                                << "9" << 0 << 0 << 9;
    QTest::newRow("screensaver") << "0"
                                 << "240" << 0 << 0 << 240;
    QTest::newRow("longpress") << "0.02*2"
                               << "2" << 2 << 4 << 200;
    QTest::newRow("cable") << "0"
                           << "0.999" << 3 << 0 << 999;
    QTest::newRow("tare") << "0"
                          << "255" << 0 << 0 << 255;
    QTest::newRow("volts") << "0"
                           << "80" << 2 << 0 << 8000;
    QTest::newRow("negative") << "0-3"
                              << "3" << 2 << -300 << 300;
}

void SettingSliderTest::everyValueGoesThroughUnchanged()
{
    QFETCH(QString, lower);
    QFETCH(QString, upper);
    QFETCH(int, decimals);
    QFETCH(int, from);
    QFETCH(int, to);
    show({lineNamed("x", lower, upper, QString::number(decimals), lower)});
    const double scale = std::pow(10.0, decimals);
    int changes = 0;
    connect(setting, &StructSetting::valueChanged, widget.get(), [&] { ++changes; });
    const auto standsAt = [&](int step, double value) {
        return setting->getNumber() == value && spinBox->value() == value &&
               slider->value() == step && changes == 1;
    };
    // Up and down, so that every step has neighbours on either side before it.
    for (int i = from + 1; i <= to + (to - from); ++i) {
        const int step = i <= to ? i : to - (i - to);
        const double value = step / scale;
        changes = 0;
        setting->setValue(value);
        QVERIFY2(standsAt(step, value), qPrintable(QString::number(value)));
    }
    for (int step = from + 1; step <= to; ++step) {
        const double value = step / scale;
        changes = 0;
        slider->setValue(step);
        QVERIFY2(standsAt(step, value), qPrintable(QString::number(value)));
    }
    for (int step = to - 1; step >= from; --step) {
        const double value = step / scale;
        changes = 0;
        spinBox->setValue(value);
        QVERIFY2(standsAt(step, value), qPrintable(QString::number(value)));
    }
}

void SettingSliderTest::keysGiveEveryStep_data()
{
    everyValueGoesThroughUnchanged_data();
}

void SettingSliderTest::keysGiveEveryStep()
{
    QFETCH(QString, lower);
    QFETCH(QString, upper);
    QFETCH(int, decimals);
    QFETCH(int, from);
    QFETCH(int, to);
    show({lineNamed("x", lower, upper, QString::number(decimals), upper)});
    const double scale = std::pow(10.0, decimals);
    QTest::keyClick(slider, Qt::Key_Home);
    for (int step = from; step <= to; ++step) {
        QCOMPARE(setting->getNumber(), step / scale);
        QCOMPARE(spinBox->text(), QString::number(step / scale, 'f', decimals));
        QTest::keyClick(slider, Qt::Key_Right);
    }
    QCOMPARE(slider->value(), to);
    for (int step = to; step > from; --step) {
        QCOMPARE(setting->getNumber(), step / scale);
        QTest::keyClick(spinBox, Qt::Key_Down);
    }
    QCOMPARE(slider->value(), from);
    QTest::keyClick(slider, Qt::Key_End);
    QCOMPARE(setting->getNumber(), to / scale);
}

void SettingSliderTest::spinBoxStores()
{
    show({lineNamed("x", "0", "2", "2", "1")});
    const QSignalSpy positions(widget.get(), &SettingSlider::intValue);
    spinBox->setValue(0.29);
    QCOMPARE(setting->getNumber(), 0.29);
    QCOMPARE(slider->value(), 29);
    QCOMPARE(positions.last().at(0).toInt(), 29);
}

void SettingSliderTest::typedNumberEndsAtTheSetting_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("shown");
    // Bounds 0.5 to 8, one decimal, at first 4.
    QTest::newRow("point") << "5.5"
                           << "5.5";
    QTest::newRow("comma") << "4,2"
                           << "4.2";
    QTest::newRow("blanks") << " 7 "
                            << "7.0";
    QTest::newRow("half rounded up, as the setting does") << "5.55"
                                                          << "5.6";
    QTest::newRow("exponent") << "1e1"
                              << "8.0";
    QTest::newRow("exponent begun") << "6e"
                                    << "6.0";
    QTest::newRow("above") << "99"
                           << "8.0";
    QTest::newRow("below") << "0,1"
                           << "0.5";
    QTest::newRow("negative") << "-3"
                              << "0.5";
    QTest::newRow("larger than a double") << "1e400"
                                          << "8.0";
    QTest::newRow("empty keeps the value") << ""
                                           << "4.0";
    QTest::newRow("sign keeps the value") << "-"
                                          << "4.0";
    QTest::newRow("refused letters") << "3x"
                                     << "3.0";
    QTest::newRow("second point refused") << "1.2.3"
                                          << "1.2";
}

void SettingSliderTest::typedNumberEndsAtTheSetting()
{
    QFETCH(QString, typed);
    QFETCH(QString, shown);
    for (const QLocale &language : desktopLanguages()) {
        const DefaultLanguage set(language);
        show({lineNamed("x", "0.5", "8", "1", "4")});
        type(typed);
        QCOMPARE(spinBox->text(), shown);
        QCOMPARE(spinBox->value(), shown.toDouble());
        QCOMPARE(setting->getNumber(), shown.toDouble());
        QCOMPARE(slider->value(), qRound(shown.toDouble() * 10));
        // Once more, from another value.
        setting->setValue(7.7);
        type("99");
        QCOMPARE(spinBox->text(), QString("8.0"));
    }
}

void SettingSliderTest::pastedNumberEndsAtTheSetting_data()
{
    addPastedNumbers();
    QTest::newRow("blanks keep the value") << "  "
                                           << "4.0";
}

void SettingSliderTest::pastedNumberEndsAtTheSetting()
{
    QFETCH(QString, pasted);
    QFETCH(QString, shown);
    for (const QLocale &language : desktopLanguages()) {
        const DefaultLanguage set(language);
        show({lineNamed("x", "0.5", "8", "1", "4")});
        QApplication::clipboard()->setText(pasted);
        spinBox->selectAll();
        spinBox->findChild<QLineEdit *>()->paste();
        QTest::keyClick(spinBox, Qt::Key_Return);
        QCOMPARE(spinBox->text(), shown);
        QCOMPARE(setting->getNumber(), shown.toDouble());
        QCOMPARE(slider->value(), qRound(shown.toDouble() * 10));
    }
}

void SettingSliderTest::typingWaitsForItsEnd()
{
    show({lineNamed("x", "0", "240", "0", "5")});
    spinBox->selectAll();
    QTest::keyClicks(spinBox, "120");
    QCOMPARE(setting->getNumber(), 5.0);
    QTest::keyClick(spinBox, Qt::Key_Return);
    QCOMPARE(setting->getNumber(), 120.0);
}

void SettingSliderTest::textsFitTheSpinBox_data()
{
    QTest::addColumn<QString>("upper");
    QTest::addColumn<QString>("decimals");
    QTest::addColumn<QString>("text");
    QTest::newRow("cable") << "0.999"
                           << "3"
                           << "0.999";
    QTest::newRow("screensaver") << "240"
                                 << "0"
                                 << "240";
    QTest::newRow("longpress") << "2"
                               << "2"
                               << "2.00";
}

void SettingSliderTest::textsFitTheSpinBox()
{
    QFETCH(QString, upper);
    QFETCH(QString, decimals);
    const QFont before = QApplication::font();
    QApplication::setFont(QFont("Arial", 9));
    show({lineNamed("x", "0", upper, decimals, upper)});
    widget->show();
    QTEST(spinBox->text(), "text");
    const int room = spinBox->findChild<QLineEdit *>()->contentsRect().width();
    QVERIFY(spinBox->fontMetrics().horizontalAdvance(spinBox->text()) <= room);
    QCOMPARE(spinBox->findChild<QLineEdit *>()->font(), spinBox->font());
    QApplication::setFont(before);
}

void SettingSliderTest::largeFontCutsNoNumber_data()
{
    QTest::addColumn<int>("points");
    QTest::newRow("a little larger") << 10;
    QTest::newRow("a quarter larger") << 12;
    QTest::newRow("half as large again") << 14;
    QTest::newRow("twice as large") << 18;
}

void SettingSliderTest::largeFontCutsNoNumber()
{
    QFETCH(int, points);
    const QFont before = QApplication::font();
    QApplication::setFont(QFont("Arial", points));
    show({lineNamed("x", "0", "0.999", "3", "0.087")});
    widget->show();
    const auto *edit = spinBox->findChild<QLineEdit *>();
    const auto isWhole = [&] {
        const QFontMetrics metrics(edit->font(), edit);
        return metrics.horizontalAdvance(edit->text()) <= edit->contentsRect().width();
    };
    QVERIFY(isWhole());
    QCOMPARE(spinBox->font(), label(0, 0)->font());
    QCOMPARE(spinBox->width(), 60);

    // Also of a font that comes later, and of a longer number.
    QApplication::setFont(QFont("Arial", 9));
    spinBox->setFont(QFont("Arial", 11));
    QCOMPARE(edit->font().pointSizeF(), 11.0);
    spinBox->setFont(QFont("Arial", points));
    QVERIFY(isWhole());
    show({lineNamed("x", "0", "99999", "1", "7")});
    widget->show();
    edit = spinBox->findChild<QLineEdit *>();
    QCOMPARE(edit->font(), spinBox->font());
    setting->setValue(12345.6);
    QVERIFY(isWhole());
    spinBox->setFixedWidth(300);
    spinBox->resize(300, spinBox->height());
    QCOMPARE(edit->font(), spinBox->font());
    spinBox->setFixedWidth(60);
    spinBox->resize(60, spinBox->height());
    QVERIFY(isWhole());
    setting->setValue(7.0);
    QCOMPARE(edit->font(), spinBox->font());
    QApplication::setFont(before);
}

void SettingSliderTest::showsNoGroupsOfDigits()
{
    for (const QLocale &language : desktopLanguages()) {
        const DefaultLanguage set(language);
        show({lineNamed("x", "0", "2000", "2", "1.5")});
        QCOMPARE(spinBox->text(), QString("1.50"));
        type("1234.5");
        QCOMPARE(spinBox->text(), QString("1234.50"));
    }
}

void SettingSliderTest::sliderStores()
{
    show({lineNamed("x", "0", "2", "2", "1")});
    const QSignalSpy values(widget.get(), &SettingSlider::doubleValue);
    slider->setValue(29);
    QCOMPARE(values.first().at(0).toDouble(), 0.29);
    QCOMPARE(setting->getNumber(), 0.29);
    QCOMPARE(spinBox->value(), 0.29);
    widget->sliderChanged(58);
    QCOMPARE(values.last().at(0).toDouble(), 0.58);
    QCOMPARE(slider->value(), 58);
}

void SettingSliderTest::keyboardReachesBoth()
{
    show({lineNamed("x", "0", "9", "0", "5")});
    widget->show();
    widget->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(widget.get()));
    spinBox->setFocus();
    QTest::keyClick(spinBox, Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget(), slider);
    QTest::keyClick(slider, Qt::Key_Right);
    QCOMPARE(setting->getNumber(), 6.0);
}

void SettingSliderTest::arrowsStepByTheSmallestUnit()
{
    show({lineNamed("x", "0", "0.999", "3", "0")});
    for (int i = 1; i <= 999; ++i) {
        spinBox->stepUp();
        QCOMPARE(setting->getNumber(), i / 1000.0);
        QCOMPARE(slider->value(), i);
    }
}

void SettingSliderTest::followsTheSetting()
{
    show({lineNamed("x", "0", "2", "2", "1")});
    const QSignalSpy values(widget.get(), &SettingSlider::doubleValue);
    setting->setValue(0.5);
    QCOMPARE(spinBox->value(), 0.5);
    QCOMPARE(slider->value(), 50);
    QCOMPARE(values.first().at(0).toDouble(), 0.5);
}

void SettingSliderTest::everyRoadEnds()
{
    show({lineNamed("x", "0", "2", "2", "1")});
    const QSignalSpy changes(setting, &StructSetting::valueChanged);
    const QSignalSpy values(widget.get(), &SettingSlider::doubleValue);
    const QSignalSpy positions(widget.get(), &SettingSlider::intValue);
    setting->setValue(0.5);
    slider->setValue(60);
    spinBox->setValue(0.7);
    QCOMPARE(changes.count(), 3);
    QVERIFY(values.count() <= 3 * 3);
    QVERIFY(positions.count() <= 3 * 3);
}

void SettingSliderTest::laterBoundClamps()
{
    show({lineNamed("x", "0", "top", "0", "5"),
          "char top; // num, auto, 0, 100, *1, 0, \"Top\", \"\", \"top\", 50, -1, basic"});
    StructSetting *top = record->getStructSettingByName("top");
    QCOMPARE(slider->maximum(), 50);
    top->setValue(20.0);
    QCOMPARE(slider->maximum(), 50);
    spinBox->setValue(40);
    QCOMPARE(setting->getNumber(), 20.0);
    QCOMPARE(spinBox->value(), 20.0);
    QCOMPARE(slider->value(), 20);
    slider->setValue(30);
    QCOMPARE(setting->getNumber(), 20.0);
    QCOMPARE(spinBox->value(), 20.0);
    QCOMPARE(slider->value(), 20);
    top->setValue(10.0);
    QCOMPARE(spinBox->value(), 10.0);
    QCOMPARE(slider->value(), 10);
}

void SettingSliderTest::silentClampSnapsBack()
{
    show({lineNamed("x", "0", "top", "0", "5"),
          "char top; // num, auto, 0, 100, *1, 0, \"Top\", \"\", \"top\", 50, -1, basic"});
    record->getStructSettingByName("top")->setValue(20.0);
    setting->setValue(20.0);
    const QSignalSpy changes(setting, &StructSetting::valueChanged);
    type("45");
    QCOMPARE(changes.count(), 0);
    QCOMPARE(spinBox->text(), QString("20"));
    QCOMPARE(slider->value(), 20);
}

void SettingSliderTest::importBeyondTheBoundsOfTheDayStays_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<int>("position");
    QTest::newRow("below") << 0.03 << 10;
    QTest::newRow("above") << 4.5 << 200;
}

void SettingSliderTest::importBeyondTheBoundsOfTheDayStays()
{
    QFETCH(double, value);
    show({lineNamed("x", "low", "high", "2", "1"),
          "char low; // num, auto, 0, 9, *1, 2, \"Low\", \"\", \"low\", 0.1, -1, basic",
          "char high; // num, auto, 0, 9, *1, 2, \"High\", \"\", \"high\", 2, -1, basic"});
    record->getStructSettingByName("low")->setValue(0.0);
    record->getStructSettingByName("high")->setValue(9.0);
    setting->setValue(value);
    QCOMPARE(setting->getNumber(), value);
    QCOMPARE(spinBox->value(), value);
    QTEST(slider->value(), "position");
    QCOMPARE(slider->minimum(), 10);
    QCOMPARE(slider->maximum(), 200);
    // What is typed there is held as well, though the slider cannot stand there.
    const double nearer = value > 1 ? 3.5 : 0.05;
    type("1");
    QCOMPARE(slider->value(), 100);
    type(QString::number(nearer));
    QCOMPARE(setting->getNumber(), nearer);
    QCOMPARE(spinBox->value(), nearer);
    QTEST(slider->value(), "position");
    type("99");
    QVERIFY(setting->getNumber() <= 9);
}

void SettingSliderTest::valueOfManyDigitsStays()
{
    show({lineNamed("x", "0", "20000000", "1", "0")});
    type("1234567.8");
    QCOMPARE(setting->getNumber(), 1234567.8);
    QCOMPARE(spinBox->value(), 1234567.8);
}

void SettingSliderTest::laterDecimalsStay()
{
    show({lineNamed("x", "0", "9", "places", "1"),
          "char places; // num, auto, 0, 3, *1, 0, \"P\", \"\", \"places\", 1, -1, basic"});
    record->getStructSettingByName("places")->setValue(3.0);
    setting->setValue(4.125);
    QCOMPARE(setting->getNumber(), 4.125);
    QCOMPARE(slider->value(), 41);
}

void SettingSliderTest::closedSettingKeepsItsDefault()
{
    show({lineNamed("x", "0", "9", "0", "5", "advanced")});
    slider->setValue(7);
    QCOMPARE(setting->getNumber(), 5.0);
    QCOMPARE(slider->value(), 5);
    type("8");
    QCOMPARE(spinBox->value(), 5.0);
}

void SettingSliderTest::endlessBoundIsNoDanger_data()
{
    QTest::addColumn<QString>("upper");
    QTest::addColumn<int>("maximum");
    constexpr int most = std::numeric_limits<int>::max();
    QTest::newRow("32 bits") << "4294967295" << most;
    QTest::newRow("64 bits") << "18446744073709551615" << most;
    QTest::newRow("divided by zero") << "1/0" << most;
    QTest::newRow("no number") << "0/0" << 0;
}

void SettingSliderTest::endlessBoundIsNoDanger()
{
    QFETCH(QString, upper);
    show({lineNamed("x", "0", upper, "2", "12")});
    QTEST(slider->maximum(), "maximum");
    QVERIFY(slider->tickInterval() >= 0);
    QCOMPARE(setting->getNumber(), 12.0);
    setting->setValue(15.5);
    QCOMPARE(setting->getNumber(), 15.5);
    QCOMPARE(spinBox->value(), 15.5);
}

void SettingSliderTest::enablesEditing()
{
    show({lineNamed("x", "0", "9", "0", "5")});
    widget->enableEditing(false);
    QVERIFY(!spinBox->isEnabled());
    QVERIFY(!slider->isEnabled());
    QVERIFY(label(0, 0)->isEnabled());
    widget->enableEditing(true);
    QVERIFY(spinBox->isEnabled());
    QVERIFY(slider->isEnabled());
}

void SettingSliderTest::previewsBrightness_data()
{
    QTest::addColumn<double>("brightness");
    QTest::addColumn<int>("alpha");
    QTest::newRow("darkest") << 0.0 << 175;
    QTest::newRow("default") << 5.0 << 215;
    QTest::newRow("brightest") << 9.0 << 247;
    QTest::newRow("between") << 5.9 << 215;
}

void SettingSliderTest::previewsBrightness()
{
    QFETCH(double, brightness);
    QFETCH(int, alpha);
    show({lineNamed("brightness", "0", "9", "1", "3")});
    widget->brightnessChanged(brightness);
    QCOMPARE(label(0, 0)->styleSheet(),
             QString("QLabel {color: rgba(255, 240, 0, %1);background-color:rgb(0, 0, 0);"
                     "border-radius: 10px;padding: 5px;}")
                 .arg(alpha));
}

void SettingSliderTest::previewFollowsTheSpinBox()
{
    show({lineNamed("brightness", "0", "9", "0", "5")});
    QCOMPARE(label(0, 0)->styleSheet(), QString());
    widget->styleLabel();
    QCOMPARE(label(0, 0)->alignment(), Qt::AlignCenter);
    QVERIFY(label(0, 0)->styleSheet().contains("240, 0, 215)"));
    slider->setValue(0);
    QVERIFY(label(0, 0)->styleSheet().contains("240, 0, 175)"));
    setting->setValue(9.0);
    QVERIFY(label(0, 0)->styleSheet().contains("240, 0, 247)"));
}

void SettingSliderTest::turnWheel(QWidget *control)
{
    const QPoint centre = control->rect().center();
    QWheelEvent turn(centre, control->mapToGlobal(centre), QPoint(), QPoint(0, 120), Qt::NoButton,
                     Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(control, &turn);
}

void SettingSliderTest::wheelScrollsPast()
{
    show({lineNamed("x", "0", "9", "0", "5")});
    widget->show();
    for (QWidget *control : {static_cast<QWidget *>(spinBox), static_cast<QWidget *>(slider)}) {
        control->clearFocus();
        turnWheel(control);
        QCOMPARE(setting->getNumber(), 5.0);
        QVERIFY(!(control->focusPolicy() & Qt::WheelFocus & ~Qt::StrongFocus));
    }
}

void SettingSliderTest::wheelTurnsTheFieldInUse()
{
    show({lineNamed("x", "0", "90", "0", "5")});
    widget->show();
    widget->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(widget.get()));
    double before = setting->getNumber();
    for (QWidget *control : {static_cast<QWidget *>(spinBox), static_cast<QWidget *>(slider)}) {
        control->setFocus();
        turnWheel(control);
        QVERIFY(setting->getNumber() > before);
        before = setting->getNumber();
    }
}

void SettingSliderTest::paintsTicks()
{
    show({lineNamed("x", "0", "9", "0", "0")});
    slider->resize(200, slider->sizeHint().height());
    const QImage with = slider->grab().toImage();
    slider->setTickInterval(0);
    const QImage without = slider->grab().toImage();
    int marks = 0;
    int lowest = 0;
    bool inMark = false;
    for (int x = 0; x < with.width(); ++x) {
        int height = 0;
        for (int y = 0; y < with.height() / 2; ++y)
            height += with.pixel(x, y) != without.pixel(x, y);
        marks += height > 0 && !inMark;
        inMark = height > 0;
        lowest = inMark && (lowest == 0 || height < lowest) ? height : lowest;
    }
    QCOMPARE(lowest, 3);
    QCOMPARE(marks, 10);
}

void SettingSliderTest::tellsItsName()
{
    show({lineNamed("x", "0", "9", "0", "5")});
    for (const QWidget *control :
         {static_cast<QWidget *>(spinBox), static_cast<QWidget *>(slider)}) {
        QCOMPARE(control->accessibleName(), QString("Cable Resistance"));
        QCOMPARE(control->accessibleDescription(), QString("Ohm"));
    }
    QCOMPARE(label(0, 0)->buddy(), spinBox);
}

QTEST_MAIN(SettingSliderTest)
#include "tst_settingslider.moc"
