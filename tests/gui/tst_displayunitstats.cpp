#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "editors/displayunitstats.h"
#include "editors/settingslineedit.h"

#include <QApplication>
#include <QFrame>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QToolTip>
#include <QWindow>

class DisplayUnitStatsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void form();
    void fiveFigures();
    void figuresOfTheSchemaBeforeARead();
    void figuresOfTheRead();
    void nothingCanBeEdited();
    void noHelpTexts();
    void wholeFigureOfAShortField();
    void leavesTheOtherWindowsAlone();
    void newFiguresShowAtOnce();
    void figuresStayWhenTheSchemaGoes();
    void closes_data();
    void closes();
    void blackOnWhiteEverywhere_data();
    void blackOnWhiteEverywhere();

private:
    void open()
    {
        dialog = new DisplayUnitStats(&generator);
        dialog->show();
    }
    void count(const char *name, double value);
    QStringList shown() const;

    HParser::Generator generator;
    QPointer<DisplayUnitStats> dialog;
};

namespace
{
/// The darkest and the lightest grey of a picture.
QPair<int, int> greys(const QImage &picture)
{
    QPair<int, int> found(255, 0);
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const int grey = qGray(picture.pixel(x, y));
            found = {qMin(found.first, grey), qMax(found.second, grey)};
        }
    }
    return found;
}
} // namespace

void DisplayUnitStatsTest::initTestCase()
{
    QApplication::setFont(QFont("Arial", 9)); // the suite's
    generator.setTooltipFileLoc(VELANTOR_BUNDLE_MEMBERS "/setting_tooltips.txt");
}

void DisplayUnitStatsTest::init()
{
    generator.setHFileLocation(VELANTOR_BUNDLE_MEMBERS "/master.ss");
    QVERIFY(generator.parseSSAndTooltips());
}

void DisplayUnitStatsTest::cleanup()
{
    delete dialog;
}

void DisplayUnitStatsTest::count(const char *name, double value)
{
    // As an import does it.
    auto *setting = generator.getUnitStatsStruct()->getStructSettingByName(name);
    setting->advancedEnabled = true;
    setting->setValue(value);
}

QStringList DisplayUnitStatsTest::shown() const
{
    QStringList texts;
    for (const auto *field : dialog->findChildren<SettingsLineEdit *>())
        texts += field->text();
    return texts;
}

void DisplayUnitStatsTest::form()
{
    open();
    QCOMPARE(dialog->objectName(), "DisplayUnitStats");
    QCOMPARE(dialog->findChild<QLabel *>("title")->text(), "Device Lifetime Stats");
    QVERIFY(dialog->findChild<QFrame *>("line"));
    QCOMPARE(dialog->findChild<QWidget *>("unitstats")->styleSheet(), "background-color: white;");
    const auto buttons =
        dialog->findChild<QWidget *>("buttonWidget")->findChildren<QPushButton *>();
    QCOMPARE(buttons.size(), 1);
    QCOMPARE(buttons.first()->text(), "&OK");
    for (const QLabel *label : dialog->findChildren<QLabel *>())
        QVERIFY2(label->width() >= label->sizeHint().width(), qPrintable(label->text()));
}

void DisplayUnitStatsTest::fiveFigures()
{
    open();
    QStringList names;
    QStringList units;
    for (const auto *field : dialog->findChildren<SettingsLineEdit *>()) {
        names += field->accessibleName();
        units += field->getSetting()->unit;
    }
    QCOMPARE(names, QStringList({"Total Charging Time", "Power On Time", "Charge Cycles",
                                 "Total Amp Hours", "Total Watt Hours"}));
    QCOMPARE(units, QStringList({"h", "h", "", "Ah", "Wh"}));
}

void DisplayUnitStatsTest::figuresOfTheSchemaBeforeARead()
{
    open();
    QCOMPARE(shown(), QStringList({"0.00", "0.00", "0", "0.0", "0.0"}));
}

void DisplayUnitStatsTest::figuresOfTheRead()
{
    count("totalchargetime", 3600 * 0.0002777777); // raw seconds by their scale
    count("lifetime", 25.5);
    count("charge_cycles", 321);
    count("ah_total", 99.95);
    count("wh_total", 4321);
    open();
    QCOMPARE(shown(), QStringList({"1.00", "25.50", "321", "100.0", "4321.0"}));
}

void DisplayUnitStatsTest::nothingCanBeEdited()
{
    open();
    for (const auto *field : dialog->findChildren<SettingsLineEdit *>())
        QVERIFY(!field->isEnabled());
    QCOMPARE(dialog->focusWidget(), dialog->findChild<QPushButton *>("OKButton"));
}

void DisplayUnitStatsTest::noHelpTexts()
{
    open();
    for (const QWidget *widget : dialog->findChildren<QWidget *>())
        QVERIFY(widget->toolTip().isEmpty());
}

void DisplayUnitStatsTest::wholeFigureOfAShortField()
{
    count("ah_total", 12345678.5);
    count("wh_total", 1234567.5);
    open();
    QCOMPARE(shown().mid(3), QStringList({"1.235e7", "1234567"}));
    const auto fields = dialog->findChildren<SettingsLineEdit *>();
    QCOMPARE(fields.at(3)->toolTip(), "12345678.5 Ah");
    QCOMPARE(fields.at(4)->toolTip(), "1234567.5 Wh");
}

void DisplayUnitStatsTest::leavesTheOtherWindowsAlone()
{
    QPushButton behind("Behind");
    behind.show();
    open();
    QVERIFY(!dialog->isModal());
    QVERIFY(!QApplication::activeModalWidget());
    QSignalSpy clicked(&behind, &QPushButton::clicked);
    QTest::mouseClick(behind.windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(5, 5));
    QCOMPARE(clicked.count(), 1);

    // A second one is a dialog of its own.
    const QPointer<DisplayUnitStats> first = dialog;
    open();
    first->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!first);
    QVERIFY(dialog && dialog->isVisible());
}

void DisplayUnitStatsTest::newFiguresShowAtOnce()
{
    open();
    count("charge_cycles", 12);
    QCOMPARE(shown().at(2), "12");
    for (const auto *field : dialog->findChildren<SettingsLineEdit *>())
        QVERIFY(!field->isEnabled());
}

void DisplayUnitStatsTest::figuresStayWhenTheSchemaGoes()
{
    count("charge_cycles", 12);
    open();
    QVERIFY(generator.parseSSAndTooltips());
    dialog->grab();
    QCOMPARE(shown().at(2), "12");
    count("charge_cycles", 13);
    QCOMPARE(shown().at(2), "12");
}

void DisplayUnitStatsTest::closes_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("by the button") << 0;
    QTest::newRow("Return") << int(Qt::Key_Return);
    QTest::newRow("Escape") << int(Qt::Key_Escape);
    QTest::newRow("by the window's cross") << -1;
}

void DisplayUnitStatsTest::closes()
{
    QFETCH(int, key);
    open();
    if (key < 0)
        dialog->close();
    else if (key)
        QTest::keyClick(dialog, Qt::Key(key));
    else
        QTest::mouseClick(dialog->findChild<QPushButton *>("OKButton"), Qt::LeftButton);
    QVERIFY(!dialog || !dialog->isVisible());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!dialog);
}

void DisplayUnitStatsTest::blackOnWhiteEverywhere_data()
{
    QTest::addColumn<bool>("dark");
    QTest::newRow("light desktop") << false;
    QTest::newRow("dark desktop") << true;
}

void DisplayUnitStatsTest::blackOnWhiteEverywhere()
{
    QFETCH(bool, dark);
    const QPalette before = QApplication::palette();
    if (dark) {
        QPalette colours(QColor(60, 60, 60), QColor(40, 40, 40));
        colours.setColor(QPalette::ToolTipText, Qt::white);
        colours.setColor(QPalette::ToolTipBase, QColor(60, 60, 60));
        QApplication::setPalette(colours);
    }
    qApp->setStyleSheet("QLineEdit:!enabled{border: none;color: black;}");
    count("wh_total", 1234567.5);
    open();
    auto *area = dialog->findChild<QWidget *>("unitstats");
    for (QWidget *widget : area->findChildren<QWidget *>()) {
        const auto *label = qobject_cast<QLabel *>(widget);
        if (label && label->text().isEmpty())
            continue;
        const auto [darkest, lightest] = greys(widget->grab().toImage());
        QVERIFY2(darkest < 80, qPrintable(widget->accessibleName()));
        QVERIFY2(lightest > 240, qPrintable(widget->accessibleName()));
    }

    auto *field = dialog->findChildren<SettingsLineEdit *>().last();
    QToolTip::showText(QPoint(), field->toolTip(), field);
    QWidget *tip = nullptr;
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (window->inherits("QTipLabel") && window->isVisible())
            tip = window;
    }
    QVERIFY(tip);
    const auto [darkest, lightest] = greys(tip->grab().toImage());
    QVERIFY(lightest - darkest > 150);
    QToolTip::hideText();

    delete dialog;
    qApp->setStyleSheet(QString());
    QApplication::setPalette(before);
}

QTEST_MAIN(DisplayUnitStatsTest)
#include "tst_displayunitstats.moc"
