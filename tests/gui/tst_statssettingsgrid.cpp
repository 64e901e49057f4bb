#include "SSGenerator/formula.h"
#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "editors/settingslineedit.h"
#include "editors/statssettingsgrid.h"
#include "profiles/profilestats.h"
#include "support/schemarecord.h"

#include <QFontMetrics>
#include <QLabel>
#include <QTest>

#include <limits>
#include <memory>

using HParser::StructSetting;

class StatsSettingsGridTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void withoutStats();
    void headings();
    void totalsAndAverages();
    void fields();
    void labels();
    void endsWithSpacers();
    void fitsHoursToTheField_data();
    void fitsHoursToTheField();
    void fitsOnlyHours();
    void fitKeepsTheValue();
    void noChargeYet_data();
    void noChargeYet();
    void strangeNumbers_data();
    void strangeNumbers();
    void newFiguresShowAtOnce();
    void shortFieldTellsTheWholeFigure();
    void rowsMoveTogetherInALowPlace();
    void lateTotalHasItsLabel();
    void moreDecimalsThanTheFieldHolds();
    void negativeHoursFitAsWell();
    void moreAveragesThanTotals();
    void otherKinds();
    void unitIsNoMarkup();

private:
    StructSetting *member(const char *name) const
    {
        return stats.structSettings->getStructSettingByName(name);
    }
    /// As an import does it.
    void calculate();
    void show()
    {
        grid = new StatsSettingsGrid(stats.structSettings->getStructSettings(), &generator,
                                     form.get());
    }
    SettingsLineEdit *fieldOf(const char *name) const;

    HParser::Generator generator;
    ProfileStats stats;
    std::unique_ptr<QWidget> form;
    StatsSettingsGrid *grid = nullptr;
};

namespace
{
template <class Widget> Widget *at(const QGridLayout *grid, int row, int column)
{
    QLayoutItem *item = grid->itemAtPosition(row, column);
    return item ? qobject_cast<Widget *>(item->widget()) : nullptr;
}

int middle(const QWidget *widget)
{
    return widget->geometry().center().y();
}
} // namespace

void StatsSettingsGridTest::initTestCase()
{
    generator.setHFileLocation(VELANTOR_BUNDLE_MEMBERS "/master.ss");
    generator.setTooltipFileLoc(VELANTOR_BUNDLE_MEMBERS "/setting_tooltips.txt");
    QVERIFY(generator.parseSSAndTooltips());
}

void StatsSettingsGridTest::init()
{
    QVERIFY(stats.initializeStructSettings("Profile stats", &generator));
    form = std::make_unique<QWidget>();
    form->resize(450, 135);
}

void StatsSettingsGridTest::calculate()
{
    for (const char *name : {"average_Wh", "average_Ah", "average_time"})
        member(name)->setDefault();
}

SettingsLineEdit *StatsSettingsGridTest::fieldOf(const char *name) const
{
    for (QWidget *field : grid->getFields()) {
        auto *edit = qobject_cast<SettingsLineEdit *>(field);
        if (edit->getSetting() == member(name))
            return edit;
    }
    return nullptr;
}

void StatsSettingsGridTest::withoutStats()
{
    grid = new StatsSettingsGrid({}, &generator, form.get());
    QCOMPARE(form->layout(), grid);
    QCOMPARE(grid->count(), 3);
    QCOMPARE(at<QLabel>(grid, 0, 1)->text(), "No stats yet for this profile!");
    QVERIFY(grid->itemAtPosition(0, 0)->spacerItem());
    QVERIFY(grid->itemAtPosition(0, 2)->spacerItem());
    QVERIFY(grid->getFields().isEmpty());
}

void StatsSettingsGridTest::headings()
{
    show();
    const QList<QPair<int, QString>> expected = {{2, "<b>Lifetime Totals</b>"},
                                                 {5, "<b>Averages</b>"}};
    for (const auto &[column, text] : expected) {
        auto *heading = at<QLabel>(grid, 0, column);
        QVERIFY(heading);
        QCOMPARE(heading->text(), text);
        QCOMPARE(at<QLabel>(grid, 0, column + 1), heading); // two columns
        QCOMPARE(grid->itemAtPosition(0, column)->alignment(), Qt::Alignment(Qt::AlignCenter));
    }
}

void StatsSettingsGridTest::totalsAndAverages()
{
    show();
    const QStringList names = {"Watt Hours", "Amp Hours", "Charge Time", "Charge Cycles"};
    const QStringList totals = {"Wh", "Ah", "chargetime_s", "charge_count"};
    const QStringList averages = {"average_Wh", "average_Ah", "average_time"};
    const QStringList totalUnits = {"Wh", "Ah", "h", ""};
    const QStringList averageUnits = {"Wh/Charge", "Ah/Charge", "h/Charge"};
    for (int row = 1; row <= 4; ++row) {
        QCOMPARE(at<QLabel>(grid, row, 0)->text(), "<b>" + names.at(row - 1) + ":</b>");
        QCOMPARE(at<SettingsLineEdit>(grid, row, 2)->getSetting()->name, totals.at(row - 1));
        QCOMPARE(at<QLabel>(grid, row, 3)->text(), "<FONT>" + totalUnits.at(row - 1) + "</FONT>");
        QCOMPARE(grid->rowMinimumHeight(row), 50);
    }
    for (int row = 1; row <= 3; ++row) {
        QCOMPARE(at<SettingsLineEdit>(grid, row, 5)->getSetting()->name, averages.at(row - 1));
        QCOMPARE(at<QLabel>(grid, row, 6)->text(), "<FONT>" + averageUnits.at(row - 1) + "</FONT>");
    }
    QVERIFY(!grid->itemAtPosition(4, 5));
    QCOMPARE(grid->getFields().size(), 7); // no row for type, profile_id and checksum
}

void StatsSettingsGridTest::fields()
{
    show();
    for (QWidget *field : grid->getFields()) {
        auto *edit = qobject_cast<SettingsLineEdit *>(field);
        QVERIFY(!edit->isEnabled());
        QCOMPARE(edit->maxLength(), 5);
        QCOMPARE(edit->minimumWidth(), 40);
        QCOMPARE(edit->maximumWidth(), 40);
        QCOMPARE(edit->alignment(), Qt::Alignment(Qt::AlignCenter));
        QVERIFY(!edit->styleSheet().isEmpty()); // shaded
        QCOMPARE(edit->accessibleName(), edit->getSetting()->descriptiveName);
    }
}

void StatsSettingsGridTest::labels()
{
    show();
    auto *name = at<QLabel>(grid, 1, 0);
    QVERIFY(name->alignment() & Qt::AlignRight);
    QCOMPARE(name->minimumHeight(), 50);
    QCOMPARE(name->maximumHeight(), 50);
    auto *unit = at<QLabel>(grid, 1, 6);
    QVERIFY(unit->alignment() & Qt::AlignLeft);
    QCOMPARE(unit->minimumHeight(), 50);
    QCOMPARE(unit->maximumHeight(), 50);
}

void StatsSettingsGridTest::endsWithSpacers()
{
    show();
    for (int column = 0; column <= 7; ++column) {
        const bool spacer = column == 1 || column == 2 || column == 4 || column == 7;
        QCOMPARE(bool(grid->itemAtPosition(5, column)), spacer);
    }
}

void StatsSettingsGridTest::fitsHoursToTheField_data()
{
    QTest::addColumn<double>("hours");
    QTest::addColumn<QString>("decimals");
    QTest::addColumn<QString>("shown");
    QTest::newRow("nothing") << 0.0 << "2"
                             << "0.00";
    QTest::newRow("minutes") << 0.25 << "2"
                             << "0.25";
    QTest::newRow("two digits") << 99.0 << "2"
                                << "99.00";
    QTest::newRow("almost three digits") << 99.99 << "2"
                                         << "99.99";
    QTest::newRow("three digits") << 100.0 << "2"
                                  << "100.0";
    QTest::newRow("three digits, cut") << 123.456 << "2"
                                       << "123.4";
    QTest::newRow("four digits, cut") << 1234.5 << "1"
                                      << "1234.";
    QTest::newRow("almost five digits") << 9999.0 << "1"
                                        << "9999.";
    QTest::newRow("five digits") << 12345.0 << "0"
                                 << "12345";
    QTest::newRow("ten thousand") << 10000.0 << "0"
                                  << "10000";
    QTest::newRow("six digits") << 123456.0 << "0"
                                << "1.2e5";
}

void StatsSettingsGridTest::fitsHoursToTheField()
{
    QFETCH(double, hours);
    member("chargetime_s")->setValue(hours);
    show();
    QTEST(member("chargetime_s")->decimals->toString(), "decimals");
    QTEST(fieldOf("chargetime_s")->text(), "shown");
}

void StatsSettingsGridTest::fitsOnlyHours()
{
    member("Ah")->setValue(1234.5);
    member("chargetime_s")->setValue(1234.5);
    member("charge_count")->setValue(1.0);
    calculate();
    show();
    QCOMPARE(member("Ah")->decimals->toString(), "1");
    QCOMPARE(member("average_time")->decimals->toString(), "2"); // its unit is h/Charge
    QCOMPARE(member("chargetime_s")->decimals->toString(), "1");
}

void StatsSettingsGridTest::fitKeepsTheValue()
{
    member("chargetime_s")->setValue(12345.67);
    show();
    QCOMPARE(member("chargetime_s")->getNumber(), 12345.67);
}

void StatsSettingsGridTest::noChargeYet_data()
{
    QTest::addColumn<double>("total");
    QTest::newRow("division by zero") << 50.0;
    QTest::newRow("nothing by zero") << 0.0;
}

void StatsSettingsGridTest::noChargeYet()
{
    QFETCH(double, total);
    for (const char *name : {"Wh", "Ah", "chargetime_s"})
        member(name)->setValue(total);
    calculate();
    show();
    QCOMPARE(fieldOf("average_Wh")->text(), "0");
    QCOMPARE(fieldOf("average_Ah")->text(), "0.0");
    QCOMPARE(fieldOf("average_time")->text(), "0.00");
}

void StatsSettingsGridTest::strangeNumbers_data()
{
    QTest::addColumn<double>("hours");
    QTest::newRow("no number") << std::numeric_limits<double>::quiet_NaN();
    QTest::newRow("infinite") << std::numeric_limits<double>::infinity();
    QTest::newRow("beyond the rounding") << 1e9;
}

void StatsSettingsGridTest::strangeNumbers()
{
    QFETCH(double, hours);
    member("chargetime_s")->setValue(hours);
    show();
    auto *field = fieldOf("chargetime_s");
    QVERIFY(field->text().size() <= 5);
    // What is shown is the setting's number, or the tooltip tells it.
    const double told =
        (field->toolTip().isEmpty() ? field->text() : field->toolTip().section(' ', 0, 0))
            .toDouble();
    QVERIFY(qAbs(told - member("chargetime_s")->getNumber()) < 1);
}

void StatsSettingsGridTest::newFiguresShowAtOnce()
{
    show();
    member("Wh")->setValue(31.0);
    QCOMPARE(fieldOf("Wh")->text(), "31");
    member("charge_count")->setValue(7.0);
    QCOMPARE(fieldOf("charge_count")->text(), "7");
}

void StatsSettingsGridTest::shortFieldTellsTheWholeFigure()
{
    member("chargetime_s")->setValue(123.46);
    member("Wh")->setValue(1234567.0);
    show();
    QCOMPARE(fieldOf("chargetime_s")->toolTip(), "123.46 h");
    QCOMPARE(fieldOf("chargetime_s")->accessibleDescription(), "123.46 h");
    QCOMPARE(fieldOf("Wh")->text(), "1.2e6");
    QCOMPARE(fieldOf("Wh")->toolTip(), "1234567 Wh");
    QCOMPARE(fieldOf("Ah")->toolTip(), "");
    QCOMPARE(fieldOf("Ah")->accessibleDescription(), "Ah");

    member("charge_count")->setValue(123456.0);
    QCOMPARE(fieldOf("charge_count")->toolTip(), "123456");
    member("Wh")->setValue(12.0);
    QCOMPARE(fieldOf("Wh")->toolTip(), "");
}

void StatsSettingsGridTest::rowsMoveTogetherInALowPlace()
{
    show();
    QVERIFY(grid->minimumSize().height() <= 135);
    for (const int height : {135, 400}) {
        form->resize(450, height);
        form->grab();
        int below = at<QLabel>(grid, 0, 2)->geometry().bottom();
        for (int row = 1; row <= 4; ++row) {
            auto *field = at<SettingsLineEdit>(grid, row, 2);
            QVERIFY2(field->y() > below, qPrintable(QString::number(row)));
            below = field->geometry().bottom();
            QCOMPARE(field->height(), 20);
            for (int column : {0, 3, 6}) {
                if (auto *label = at<QLabel>(grid, row, column)) {
                    QCOMPARE(label->height(), 50);
                    QVERIFY(qAbs(middle(label) - middle(field)) <= 1);
                }
            }
        }
        QVERIFY(below < height);
    }
}

void StatsSettingsGridTest::lateTotalHasItsLabel()
{
    const auto record = schemaRecord(
        {"long a; // num, auto, 0, 9, *1, 0, \"Mean\", \"\", \"calculated\", 4, 0, basic",
         "long b; // num, auto, 0, 9, *1, 0, \"Sum\", \"\", \"sum\", 5, 1, basic"});
    grid = new StatsSettingsGrid(record->getStructSettings(), &generator, form.get());
    QCOMPARE(at<SettingsLineEdit>(grid, 1, 5)->text(), "4");
    QCOMPARE(at<QLabel>(grid, 1, 0)->text(), "<b>Sum:</b>");
    QCOMPARE(at<SettingsLineEdit>(grid, 1, 2)->text(), "5");
}

void StatsSettingsGridTest::moreDecimalsThanTheFieldHolds()
{
    const auto record = schemaRecord({"long a; // num, auto, 0, 999999, *1, 4, \"A\", \"h\", "
                                      "\"a\", 123.4567, 0, basic",
                                      "long b; // num, auto, 0, 999999, *1, 4, \"B\", \"h\", "
                                      "\"b\", 99.4567, 1, basic"});
    grid = new StatsSettingsGrid(record->getStructSettings(), &generator, form.get());
    QCOMPARE(record->getStructSettingByName("a")->decimals->toString(), "2");
    QCOMPARE(record->getStructSettingByName("b")->decimals->toString(), "4");
    QCOMPARE(record->getStructSettingByName("a")->getNumber(), 123.4567);
}

void StatsSettingsGridTest::negativeHoursFitAsWell()
{
    const auto record = schemaRecord({"long a; // num, auto, -999999, 999999, *1, 3, \"A\", \"h\", "
                                      "\"a\", -123.456, 0, basic"});
    grid = new StatsSettingsGrid(record->getStructSettings(), &generator, form.get());
    QCOMPARE(record->getStructSettingByName("a")->decimals->toString(), "2");
}

void StatsSettingsGridTest::moreAveragesThanTotals()
{
    const auto record = schemaRecord(
        {"long a; // num, auto, 0, 9, *1, 0, \"Sum\", \"\", \"sum\", 4, 0, basic",
         "long b; // num, auto, 0, 9, *1, 0, \"Mean\", \"\", \"calculated\", 5, 1, basic",
         "long c; // num, auto, 0, 9, *1, 0, \"Most\", \"\", \"calculated\", 6, 2, basic"});
    grid = new StatsSettingsGrid(record->getStructSettings(), &generator, form.get());
    QCOMPARE(at<SettingsLineEdit>(grid, 2, 5)->text(), "6");
    QCOMPARE(grid->rowMinimumHeight(2), 50);
    for (int column : {1, 2, 4, 7})
        QVERIFY(grid->itemAtPosition(3, column)->spacerItem());
}

void StatsSettingsGridTest::otherKinds()
{
    const auto record =
        schemaRecord({"char a; // bool, 1, \"Worn\", \"worn\", 1, 0, basic",
                      "char b[9]; // string, auto, \"Place\", \"place\", \"Shed\", 1, basic"});
    grid = new StatsSettingsGrid(record->getStructSettings(), &generator, form.get());
    QCOMPARE(at<QLabel>(grid, 1, 0)->text(), "<b>Worn:</b>");
    QCOMPARE(at<SettingsLineEdit>(grid, 2, 2)->text(), "Shed");
}

void StatsSettingsGridTest::unitIsNoMarkup()
{
    const auto record =
        schemaRecord({"long a; // num, auto, 0, 9, *1, 0, \"A\", \"<V&A>\", \"a\", 4, 0, basic"});
    grid = new StatsSettingsGrid(record->getStructSettings(), &generator, form.get());
    QCOMPARE(at<QLabel>(grid, 1, 3)->text(), "<FONT>&lt;V&amp;A&gt;</FONT>");
}

QTEST_MAIN(StatsSettingsGridTest)
#include "tst_statssettingsgrid.moc"
