#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "editors/settingslineedit.h"
#include "support/schemarecord.h"
#include "support/typednumbers.h"

#include <QApplication>
#include <QClipboard>
#include <QDoubleValidator>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <cmath>
#include <limits>
#include <memory>

using HParser::StructSetting;

class SettingsLineEditTest : public QObject
{
    Q_OBJECT

private slots:
    void look_data();
    void look();
    void tellsItsNameAndUnit();
    void showsAllDecimals_data();
    void showsAllDecimals();
    void typedNumberEndsAtTheSetting_data();
    void typedNumberEndsAtTheSetting();
    void pastedNumberEndsAtTheSetting_data();
    void pastedNumberEndsAtTheSetting();
    void leavingTheFieldStores();
    void snapsBackAlsoWithoutASignal();
    void textsFromTheProgramAreNoDanger_data();
    void textsFromTheProgramAreNoDanger();
    void acceptsAnyNumber();
    void visitingChangesNothing_data();
    void visitingChangesNothing();
    void shortFieldShowsNoOtherNumber_data();
    void shortFieldShowsNoOtherNumber();
    void shortFieldStaysNearTheNumber();
    void followsTheSetting();
    void enablesWithTheSetting_data();
    void enablesWithTheSetting();
    void closedSettingKeepsItsDefault();
    void textHasTheLengthOfItsArray();
    void textIsStoredAndShown();
    void viewOfATextIsLeftAlone();
    void listTakesAnyLength();
    void listHasTheLengthOfItsArray();
    void ignoresOtherKinds_data();
    void ignoresOtherKinds();
    void bindsAnew();
    void outlivesItsSetting();

private:
    /// A line edit on the only setting of a fresh record.
    void bind(const QString &memberLine);
    void type(const QString &text, Qt::Key last = Qt::Key_Return);

    std::unique_ptr<HParser::StructSettings> record;
    StructSetting *setting = nullptr;
    std::unique_ptr<SettingsLineEdit> edit;
};

void SettingsLineEditTest::bind(const QString &memberLine)
{
    edit.reset();
    record = schemaRecord({memberLine});
    setting = record->getOriginalOrderStructSettings().constFirst();
    edit = std::make_unique<SettingsLineEdit>(true);
    edit->bindSetting(setting);
}

void SettingsLineEditTest::type(const QString &text, Qt::Key last)
{
    edit->selectAll();
    QTest::keyClick(edit.get(), Qt::Key_Delete);
    QTest::keyClicks(edit.get(), text);
    QTest::keyClick(edit.get(), last);
}

void SettingsLineEditTest::look_data()
{
    QTest::addColumn<bool>("shaded");
    QTest::addColumn<QString>("sheet");
    QTest::newRow("shaded") << true << "QLineEdit:enabled{background-color: rgb(238, 238, 238);}";
    QTest::newRow("plain") << false << "";
}

void SettingsLineEditTest::look()
{
    QFETCH(bool, shaded);
    QWidget parent;
    const SettingsLineEdit line(shaded, &parent);
    QCOMPARE(line.parent(), &parent);
    QCOMPARE(line.objectName(), QString("SettingsLineEdit"));
    QCOMPARE(line.minimumHeight(), 20);
    QCOMPARE(line.maximumHeight(), 20);
    QTEST(line.styleSheet(), "sheet");
    QVERIFY(!line.getSetting());
}

void SettingsLineEditTest::tellsItsNameAndUnit()
{
    bind(numberLine("0", "8", "1", "4"));
    QCOMPARE(edit->accessibleName(), QString("Bulk Current"));
    QCOMPARE(edit->accessibleDescription(), QString("Amps"));
    QCOMPARE(edit->getSetting(), setting);
}

void SettingsLineEditTest::showsAllDecimals_data()
{
    QTest::addColumn<QString>("decimals");
    QTest::addColumn<QString>("preset");
    QTest::addColumn<QString>("shown");
    QTest::newRow("one more") << "1"
                              << "4"
                              << "4.0";
    QTest::newRow("all there") << "3"
                               << "0.087"
                               << "0.087";
    QTest::newRow("one of three there") << "3"
                                        << "0.5"
                                        << "0.500";
    QTest::newRow("none wanted") << "0"
                                 << "5"
                                 << "5";
    QTest::newRow("negative") << "2"
                              << "0-1.5"
                              << "-1.50";
    QTest::newRow("zero") << "2"
                          << "0"
                          << "0.00";
    QTest::newRow("six digits") << "1"
                                << "123456"
                                << "123456.0";
    QTest::newRow("decimals from a formula, truncated") << "5/2"
                                                        << "0"
                                                        << "0.00";
    // 4 is rounded to 1265 / 10^2.5, which is 4.00028.
    QTest::newRow("surplus digits are cut") << "5/2"
                                            << "4"
                                            << "4.00";
    QTest::newRow("exponent without decimals") << "0"
                                               << "1000000"
                                               << "1e+06";
    QTest::newRow("exponent keeps its digits") << "1"
                                               << "12345600"
                                               << "1.23456e+07";
}

void SettingsLineEditTest::showsAllDecimals()
{
    QFETCH(QString, decimals);
    QFETCH(QString, preset);
    bind(numberLine("0-1000", "100000000", decimals, preset));
    QTEST(edit->text(), "shown");
}

void SettingsLineEditTest::typedNumberEndsAtTheSetting_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("shown");
    // Bounds 0.5 to 8, one decimal.
    QTest::newRow("within") << "5.5"
                            << "5.5";
    QTest::newRow("padded") << "5"
                            << "5.0";
    QTest::newRow("rounded") << "5.55"
                             << "5.6";
    QTest::newRow("comma") << "4,2"
                           << "4.2";
    QTest::newRow("blanks around") << " 7 "
                                   << "7.0";
    QTest::newRow("blank inside") << "1 000"
                                  << "8.0";
    QTest::newRow("exponent") << "1e1"
                              << "8.0";
    QTest::newRow("small exponent") << "60e-1"
                                    << "6.0";
    QTest::newRow("exponent begun") << "6e"
                                    << "6.0";
    QTest::newRow("above") << "99"
                           << "8.0";
    QTest::newRow("below") << "0.1"
                           << "0.5";
    QTest::newRow("negative") << "-3"
                              << "0.5";
    QTest::newRow("empty") << ""
                           << "0.5";
    QTest::newRow("blanks") << "   "
                            << "0.5";
    QTest::newRow("sign") << "-"
                          << "0.5";
    QTest::newRow("point") << "."
                           << "0.5";
    QTest::newRow("larger than a double") << "1e400"
                                          << "8.0";
    QTest::newRow("below all doubles") << "-1e400"
                                       << "0.5";
    QTest::newRow("longer than a 32-bit number") << "99999999999"
                                                 << "8.0";
    QTest::newRow("refused letters") << "3x"
                                     << "3.0";
    QTest::newRow("second point refused") << "1.2.3"
                                          << "1.2";
}

void SettingsLineEditTest::typedNumberEndsAtTheSetting()
{
    QFETCH(QString, typed);
    QFETCH(QString, shown);
    for (const QLocale &language : desktopLanguages()) {
        const DefaultLanguage set(language);
        bind(numberLine("0.5", "8", "1", "4"));
        type(typed);
        QCOMPARE(edit->text(), shown);
        QCOMPARE(setting->getNumber(), shown.toDouble());
    }
}

void SettingsLineEditTest::pastedNumberEndsAtTheSetting_data()
{
    addPastedNumbers();
    QTest::newRow("blanks") << "  "
                            << "0.5";
}

void SettingsLineEditTest::pastedNumberEndsAtTheSetting()
{
    QFETCH(QString, pasted);
    QFETCH(QString, shown);
    for (const QLocale &language : desktopLanguages()) {
        const DefaultLanguage set(language);
        bind(numberLine("0.5", "8", "1", "4"));
        QApplication::clipboard()->setText(pasted);
        edit->selectAll();
        edit->paste();
        QTest::keyClick(edit.get(), Qt::Key_Return);
        QCOMPARE(edit->text(), shown);
        QCOMPARE(setting->getNumber(), shown.toDouble());
    }
}

void SettingsLineEditTest::leavingTheFieldStores()
{
    QWidget window;
    auto *layout = new QVBoxLayout(&window);
    record = schemaRecord({numberLine("0.5", "8", "1", "4")});
    setting = record->getOriginalOrderStructSettings().constFirst();
    auto *line = new SettingsLineEdit(false);
    line->bindSetting(setting);
    layout->addWidget(line);
    layout->addWidget(new QLineEdit);
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    line->setFocus();
    line->selectAll();
    QTest::keyClicks(line, "6");
    QCOMPARE(setting->getNumber(), 4.0);
    QTest::keyClick(line, Qt::Key_Tab);
    QCOMPARE(setting->getNumber(), 6.0);
    QCOMPARE(line->text(), QString("6.0"));
    // An empty field is left as well.
    line->setFocus();
    line->selectAll();
    QTest::keyClick(line, Qt::Key_Delete);
    QTest::keyClick(line, Qt::Key_Tab);
    QCOMPARE(line->text(), QString("0.5"));
}

void SettingsLineEditTest::snapsBackAlsoWithoutASignal()
{
    bind(numberLine("0", "8", "1", "4"));
    const QSignalSpy changes(setting, &StructSetting::valueChanged);
    type("99");
    QCOMPARE(edit->text(), QString("8.0"));
    QCOMPARE(changes.count(), 1);
    type("99");
    QCOMPARE(edit->text(), QString("8.0"));
    QCOMPARE(changes.count(), 1);
}

void SettingsLineEditTest::textsFromTheProgramAreNoDanger_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");
    QTest::newRow("nan") << "nan"
                         << "1.0";
    QTest::newRow("inf") << "inf"
                         << "1.0";
    QTest::newRow("empty") << ""
                           << "1.0";
    QTest::newRow("in bounds") << "5"
                               << "5.0";
    QTest::newRow("unit behind") << "5 V"
                                 << "5.0";
}

void SettingsLineEditTest::textsFromTheProgramAreNoDanger()
{
    QFETCH(QString, text);
    bind(numberLine("1", "8", "1", "4"));
    edit->setText(text);
    edit->saveSetting();
    QTEST(edit->text(), "shown");
    QCOMPARE(setting->getNumber(), edit->text().toDouble());
}

void SettingsLineEditTest::acceptsAnyNumber()
{
    bind(numberLine("0", "8", "1", "4"));
    const auto *validator = qobject_cast<const QDoubleValidator *>(edit->validator());
    QVERIFY(validator);
    QCOMPARE(validator->bottom(), -std::numeric_limits<double>::max());
    QCOMPARE(validator->top(), std::numeric_limits<double>::max());
    QCOMPARE(validator->decimals(), 20);
    QCOMPARE(validator->locale(), QLocale::c());
}

void SettingsLineEditTest::visitingChangesNothing_data()
{
    QTest::addColumn<QString>("decimals");
    QTest::addColumn<double>("value");
    QTest::addColumn<int>("places");
    QTest::newRow("ordinary") << "1" << 4.2 << 7;
    QTest::newRow("more than six digits") << "2" << 123456.78 << 20;
    QTest::newRow("exponent") << "0" << 12345678.0 << 20;
    QTest::newRow("field too short for the number") << "3" << 123.456 << 5;
    QTest::newRow("field too short for the whole digits") << "0" << 12345678.0 << 5;
}

void SettingsLineEditTest::visitingChangesNothing()
{
    QFETCH(QString, decimals);
    QFETCH(double, value);
    QFETCH(int, places);
    bind(numberLine("0", "1000000000", decimals, "0"));
    setting->setValue(value);
    edit->setMaxLength(places);
    edit->updateView();
    const QString shown = edit->text();
    const QSignalSpy changes(setting, &StructSetting::valueChanged);
    QTest::keyClick(edit.get(), Qt::Key_Return);
    QCOMPARE(setting->getNumber(), value);
    QCOMPARE(changes.count(), 0);
    QCOMPARE(edit->text(), shown);
}

void SettingsLineEditTest::shortFieldShowsNoOtherNumber_data()
{
    QTest::addColumn<int>("places");
    QTest::addColumn<QString>("decimals");
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("shown");
    QTest::newRow("decimals are cut") << 5 << "2" << 123.46 << "123.4";
    QTest::newRow("up to the point") << 5 << "1" << 1234.5 << "1234.";
    QTest::newRow("and the point too") << 5 << "1" << 12345.6 << "12345";
    QTest::newRow("whole digits just fit") << 5 << "0" << 99999.0 << "99999";
    QTest::newRow("one whole digit too many") << 5 << "0" << 123456.0 << "1.2e5";
    QTest::newRow("and decimals") << 5 << "1" << 123456.7 << "1.2e5";
    QTest::newRow("round") << 5 << "0" << 100000.0 << "1.0e5";
    QTest::newRow("rounded up") << 5 << "0" << 999999.0 << "1.0e6";
    QTest::newRow("exponent that fits") << 5 << "0" << 1000000.0 << "1e+06";
    QTest::newRow("exponent, shortened") << 5 << "0" << 1234567.0 << "1.2e6";
    QTest::newRow("exponent of two digits") << 5 << "0" << 1234567890.0 << "1.2e9";
    QTest::newRow("exponent in a longer field") << 6 << "0" << 1234567890.0 << "1.23e9";
    QTest::newRow("exponent that can be spelled out") << 7 << "1" << 1234567.5 << "1234567";
    QTest::newRow("exponent in seven places") << 7 << "1" << 12345678.9 << "1.235e7";
    QTest::newRow("negative") << 6 << "1" << -123456.7 << "-1.2e5";
    QTest::newRow("one digit and a sign") << 5 << "1" << -123456.7 << "-1e5";
    QTest::newRow("negative, seven digits") << 7 << "1" << -1234567.8 << "-1.23e6";
    QTest::newRow("rounded to hundreds") << 8 << "-2" << 1234500.0 << "1234500";
    QTest::newRow("tiny") << 5 << "6" << 0.000012 << "0.000";
}

void SettingsLineEditTest::shortFieldShowsNoOtherNumber()
{
    QFETCH(int, places);
    QFETCH(QString, decimals);
    QFETCH(double, value);
    bind(numberLine("-9999999999", "9999999999", decimals, "0"));
    edit->setMaxLength(places);
    setting->setValue(value);
    QCOMPARE(setting->getNumber(), value);
    QTEST(edit->text(), "shown");
    QVERIFY(edit->hasAcceptableInput());
}

void SettingsLineEditTest::shortFieldStaysNearTheNumber()
{
    QRandomGenerator random(20);
    for (int round = 0; round < 2000; ++round) {
        const int places = random.bounded(5, 8);
        const int decimals = random.bounded(4);
        bind(numberLine("-2000000000", "2000000000", QString::number(decimals), "0"));
        edit->setMaxLength(places);
        const double sign = places > 5 && random.bounded(2) ? -1 : 1;
        setting->setValue(sign * std::pow(10, random.bounded(9.0 - decimals)));
        const double value = setting->getNumber();
        const double error = qAbs(edit->text().toDouble() - value);
        QVERIFY2(error < 1 || error < qAbs(value) * 0.055,
                 qPrintable(QString("%1: %2").arg(value, 0, 'f').arg(edit->text())));
    }
}

void SettingsLineEditTest::followsTheSetting()
{
    bind(numberLine("0", "8", "1", "4"));
    setting->setValue(6.0);
    QCOMPARE(edit->text(), QString("6.0"));
}

void SettingsLineEditTest::enablesWithTheSetting_data()
{
    QTest::addColumn<QString>("line");
    QTest::newRow("number")
        << "char x; // num, auto, 0, 8, *1, 1, \"X\", \"\", \"x\", 4, 0, advanced";
    QTest::newRow("text") << "char x[9]; // string, auto, \"X\", \"x\", \"Shed\", 0, advanced";
}

void SettingsLineEditTest::enablesWithTheSetting()
{
    QFETCH(QString, line);
    bind(line);
    setting->enableAdvancedMode(false);
    QVERIFY(!edit->isEnabled());
    setting->enableAdvancedMode(true);
    QVERIFY(edit->isEnabled());
}

void SettingsLineEditTest::closedSettingKeepsItsDefault()
{
    bind("char x; // num, auto, 0, 8, *1, 1, \"X\", \"\", \"x\", 4, 0, advanced");
    type("6");
    QCOMPARE(edit->text(), QString("4.0"));
    QCOMPARE(setting->getNumber(), 4.0);
}

void SettingsLineEditTest::textHasTheLengthOfItsArray()
{
    bind("char title[12]; // string, auto, \"Name\", \"title\", \"Lithium\", 0, basic");
    QCOMPARE(edit->maxLength(), 11);
    QCOMPARE(edit->text(), QString("Lithium"));
    QVERIFY(!edit->validator());
    type("abcdefghijkl");
    QCOMPARE(edit->text(), QString("abcdefghijk"));
    QCOMPARE(setting->getValue(), QString("abcdefghijk"));
}

void SettingsLineEditTest::textIsStoredAndShown()
{
    bind("char title[12]; // string, auto, \"Name\", \"title\", \"Lithium\", 0, basic");
    type("1,5 e");
    QCOMPARE(setting->getValue(), QString("1,5 e"));
    type("");
    QCOMPARE(setting->getValue(), QString(""));
    QCOMPARE(edit->text(), QString(""));
    edit->setMaxLength(100);
    edit->setText("much too long a name");
    edit->saveSetting();
    QCOMPARE(edit->text(), QString("much too lo"));
}

void SettingsLineEditTest::viewOfATextIsLeftAlone()
{
    bind("char title[12]; // string, auto, \"Name\", \"title\", \"Lithium\", 0, basic");
    edit->setText("typing");
    edit->updateView();
    QCOMPARE(edit->text(), QString("typing"));
    setting->setValue(QString("other"));
    QCOMPARE(edit->text(), QString("typing"));
}

void SettingsLineEditTest::listTakesAnyLength()
{
    bind("char x; // list, auto, \"Mode\", \"mode\", \"one\", 0, \"one\", \"two\", basic");
    type("a rather long item");
    QCOMPARE(setting->getValue(), QString("a rather long item"));
    QCOMPARE(edit->text(), QString("a rather long item"));
}

void SettingsLineEditTest::listHasTheLengthOfItsArray()
{
    bind("char x[6]; // list, auto, \"Mode\", \"mode\", \"one\", 0, \"one\", \"two\", basic");
    QCOMPARE(edit->maxLength(), 5);
    type("a rather long item");
    QCOMPARE(setting->getValue(), QString("a rat"));
}

void SettingsLineEditTest::ignoresOtherKinds_data()
{
    QTest::addColumn<QString>("line");
    QTest::newRow("flag") << "char x; // bool, 1, \"X\", \"x\", 0, 0, basic";
    QTest::newRow("unknown kind") << "char x; // blob, 1, \"X\", \"x\", 0, 0, basic";
}

void SettingsLineEditTest::ignoresOtherKinds()
{
    QFETCH(QString, line);
    bind(line);
    const QString value = setting->getValue();
    type("1");
    edit->updateView();
    QCOMPARE(setting->getValue(), value);
}

void SettingsLineEditTest::bindsAnew()
{
    bind(numberLine("0", "8", "1", "4"));
    const auto other =
        schemaRecord({"char t[6]; // string, auto, \"Name\", \"t\", \"Lead\", 0, basic"});
    StructSetting *title = other->getOriginalOrderStructSettings().constFirst();
    edit->bindSetting(title);
    QCOMPARE(edit->text(), QString("Lead"));
    setting->setValue(7.0);
    QCOMPARE(edit->text(), QString("Lead"));
    type("Zinc");
    QCOMPARE(title->getValue(), QString("Zinc"));
    QCOMPARE(setting->getNumber(), 7.0);
    edit->bindSetting(setting);
    QCOMPARE(edit->text(), QString("7.0"));
    edit.reset();
}

void SettingsLineEditTest::outlivesItsSetting()
{
    bind(numberLine("0", "8", "1", "4"));
    record.reset();
    type("5");
    QVERIFY(!edit->getSetting());
    edit->updateView();
}

QTEST_MAIN(SettingsLineEditTest)
#include "tst_settingslineedit.moc"
