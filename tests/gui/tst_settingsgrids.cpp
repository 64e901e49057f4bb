#include "SSGenerator/formula.h"
#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "editors/advancedsettingsgrid.h"
#include "editors/basicsettingsgrid.h"
#include "editors/namesettingsgrid.h"
#include "editors/settingscheckbox.h"
#include "editors/settingslineedit.h"
#include "support/schemarecord.h"

#include <QFontInfo>
#include <QLabel>
#include <QTest>

#include <memory>

using HParser::StructSetting;
using HParser::StructSettings;

/// The grids of basic and advanced settings, and of the name.
class SettingsGridsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void basicTakesTheBasicSettings_data();
    void basicTakesTheBasicSettings();
    void basicRowOfANumber();
    void basicRowOfAFlag();
    void basicEndsWithAStretch();
    void basicFollowsTheEditMode();
    void basicGivesALongUnitItsRoom();

    void advancedTakesTheOthers_data();
    void advancedTakesTheOthers();
    void advancedRowOfANumber();
    void advancedRowOfAFlag();
    void advancedStartsDisabled();
    void advancedFollowsTheEditModeDownOnly();
    void advancedModeOpensAndCloses();
    void advancedRowsStayWhateverTheThermistor();

    void nameTakesTheFirstTwo();
    void nameRow();
    void nameStopsAtTheLengthOfTheRecord();
    void nameFollowsTheEditMode();
    void nameOfAShortRecord();

    void tellsHelpTexts_data();
    void tellsHelpTexts();
    void recordWithoutTypeHasNoHelpTexts();
    void labelsAreBuddies();
    void namesAreNoMarkup();
    void shortFieldTellsTheWholeNumber();
    void textIsNeverCut();
    void listIsNeverCut();
    void unknownKindTakesNothing();
    void emptyVisualList();

private:
    std::unique_ptr<StructSettings> recordOf(const QString &chemistry);
    BasicSettingsGrid *basicOf(StructSettings *record)
    {
        return new BasicSettingsGrid(true, record, &generator, form.get());
    }
    AdvancedSettingsGrid *advancedOf(StructSettings *record)
    {
        return new AdvancedSettingsGrid(
            record, &generator, record->getStructSettingByName("external_thermistor"), form.get());
    }

    HParser::Generator generator;
    std::unique_ptr<QWidget> form; ///< the widget that the grid lays out
};

namespace
{

template <class Widget> Widget *at(const QGridLayout *grid, int row, int column)
{
    QLayoutItem *item = grid->itemAtPosition(row, column);
    return item ? qobject_cast<Widget *>(item->widget()) : nullptr;
}

Qt::Alignment alignmentAt(const QGridLayout *grid, int row, int column)
{
    return grid->itemAtPosition(row, column)->alignment();
}

QSpacerItem *spacerAt(const QGridLayout *grid, int row, int column)
{
    QLayoutItem *item = grid->itemAtPosition(row, column);
    return item ? item->spacerItem() : nullptr;
}

StructSetting *settingOf(QWidget *field)
{
    if (const auto *edit = qobject_cast<SettingsLineEdit *>(field))
        return edit->getSetting();
    return qobject_cast<SettingsCheckBox *>(field)->getSetting();
}

QStringList settingsOf(const SettingsGrid *grid)
{
    QStringList names;
    for (QWidget *field : grid->getFields())
        names += settingOf(field)->name;
    return names;
}

bool allEnabled(const SettingsGrid *grid, bool on)
{
    for (const QWidget *field : grid->getFields()) {
        if (field->isEnabled() != on)
            return false;
    }
    return true;
}

const QString flag = "unsigned char quick; // bool, auto, \"Quick\", \"quick\", 0, 0, %1";
const QString number = "unsigned long sum; // num, auto, -9999999, 9999999, *1, %1, \"Sum\", "
                       "\"Ah\", \"sum\", 0, 1, %2";

} // namespace

void SettingsGridsTest::initTestCase()
{
    generator.setHFileLocation(VELANTOR_BUNDLE_MEMBERS "/master.ss");
    generator.setTooltipFileLoc(VELANTOR_BUNDLE_MEMBERS "/setting_tooltips.txt");
    QVERIFY(generator.parseSSAndTooltips());
}

void SettingsGridsTest::init()
{
    form = std::make_unique<QWidget>();
}

std::unique_ptr<StructSettings> SettingsGridsTest::recordOf(const QString &chemistry)
{
    std::unique_ptr<StructSettings> record(generator.copyFlashstackElementSettings(chemistry));
    record->buildFormulaTrees();
    return record;
}

void SettingsGridsTest::basicTakesTheBasicSettings_data()
{
    QTest::addColumn<QStringList>("settings");
    QTest::newRow("Nickel") << QStringList({"nominal_full_V", "bulk_I", "external_thermistor"});
    QTest::newRow("Lead") << QStringList({"full_V", "bulk_I"});
    QTest::newRow("Lithium") << QStringList({"full_V", "bulk_I"});
}

void SettingsGridsTest::basicTakesTheBasicSettings()
{
    const auto record = recordOf(QTest::currentDataTag());
    const BasicSettingsGrid *grid = basicOf(record.get());
    QTEST(settingsOf(grid), "settings");
    QCOMPARE(form->layout(), grid);
    const int rows = grid->getFields().size();
    for (int row = 0; row < rows; ++row) {
        QCOMPARE(grid->rowMinimumHeight(row), 25);
        auto *name = at<QLabel>(grid, row, 4);
        QVERIFY(name);
        QCOMPARE(name->text(), settingOf(grid->getFields().at(row))->descriptiveName);
        QVERIFY(spacerAt(grid, row, 0));
        QCOMPARE(spacerAt(grid, row, 3)->sizeHint().width(), 20);
    }
}

void SettingsGridsTest::basicRowOfANumber()
{
    const auto record = recordOf("Lithium");
    const BasicSettingsGrid *grid = basicOf(record.get());
    QVERIFY(spacerAt(grid, 0, 0));

    auto *field = at<SettingsLineEdit>(grid, 0, 1);
    QVERIFY(field);
    QCOMPARE(field->text(), "42.0");
    QCOMPARE(field->minimumSize(), QSize(85, 26));
    QCOMPARE(field->maximumSize(), QSize(85, 26));
    QCOMPARE(field->maxLength(), 6);
    QCOMPARE(field->font().pointSize(), 18);
    QVERIFY(field->alignment() & Qt::AlignRight);
    QVERIFY(!field->styleSheet().isEmpty()); // shaded
    QVERIFY(field->isEnabled());

    auto *unit = at<QLabel>(grid, 0, 2);
    QVERIFY(unit);
    QCOMPARE(unit->text(), "Volts");
    QCOMPARE(unit->minimumSize(), QSize(70, 30));
    QCOMPARE(unit->maximumSize(), QSize(70, 30));
    QCOMPARE(unit->font().pointSize(), 15);

    const QSpacerItem *gap = spacerAt(grid, 0, 3);
    QVERIFY(gap);
    QCOMPARE(gap->sizeHint().width(), 20);
    QCOMPARE(gap->sizePolicy().horizontalPolicy(), QSizePolicy::Fixed);

    auto *name = at<QLabel>(grid, 0, 4);
    QCOMPARE(name->text(), "Full Voltage");
    QCOMPARE(name->font().pointSize(), 15);
    QVERIFY(alignmentAt(grid, 0, 4) & Qt::AlignVCenter);
}

void SettingsGridsTest::basicRowOfAFlag()
{
    const auto record = recordOf("Nickel");
    const BasicSettingsGrid *grid = basicOf(record.get());
    auto *box = at<SettingsCheckBox>(grid, 2, 2);
    QVERIFY(box);
    QCOMPARE(box->getSetting()->name, "external_thermistor");
    QCOMPARE(alignmentAt(grid, 2, 2), Qt::Alignment(Qt::AlignCenter));
    QVERIFY(!grid->itemAtPosition(2, 1));
    QCOMPARE(at<QLabel>(grid, 2, 4)->text(), "Thermistor Reqd?");
    QVERIFY(alignmentAt(grid, 2, 4) & Qt::AlignLeft);
}

void SettingsGridsTest::basicEndsWithAStretch()
{
    const auto record = recordOf("Lead");
    const BasicSettingsGrid *grid = basicOf(record.get());
    QVERIFY(spacerAt(grid, 2, 4));
    QVERIFY(spacerAt(grid, 2, 4)->expandingDirections() & Qt::Vertical);
    form->resize(450, 300);
    form->grab();
    QVERIFY(at<QLabel>(grid, 1, 4)->geometry().bottom() < 100);
}

void SettingsGridsTest::basicFollowsTheEditMode()
{
    const auto record = recordOf("Nickel");
    BasicSettingsGrid *grid = basicOf(record.get());
    QVERIFY(allEnabled(grid, true));
    grid->editSettings(false);
    QVERIFY(allEnabled(grid, false));
    grid->editSettings(true);
    QVERIFY(allEnabled(grid, true));
}

void SettingsGridsTest::basicGivesALongUnitItsRoom()
{
    const auto record = schemaRecord({"unsigned char a; // num, auto, 0, 9, *1, 0, \"A\", "
                                      "\"Kilojoules per fortnight\", \"a\", 0, 0, basic"});
    const auto *unit = at<QLabel>(basicOf(record.get()), 0, 2);
    QVERIFY(unit->minimumWidth() >= unit->sizeHint().width());
    QCOMPARE(unit->minimumHeight(), 30);
}

void SettingsGridsTest::advancedTakesTheOthers_data()
{
    QTest::addColumn<QStringList>("settings");
    QTest::newRow("Nickel") << QStringList(
        {"start_I", "bulk_start_V", "delta_V", "max_T", "dTdt", "topup_I", "topup_time", "max_V"});
    QTest::newRow("Lead") << QStringList({"float_V", "full_V_min_I", "full_V_max_time"});
    QTest::newRow("Lithium") << QStringList(
        {"min_start_V", "start_I", "bulk_start_V", "complete_I"});
    QTest::newRow("Global stats") << QStringList(
        {"totalchargetime", "lifetime", "charge_cycles", "ah_total", "wh_total"});
}

void SettingsGridsTest::advancedTakesTheOthers()
{
    const auto record = recordOf(QTest::currentDataTag());
    const AdvancedSettingsGrid *grid = advancedOf(record.get());
    QTEST(settingsOf(grid), "settings");
    QCOMPARE(grid->columnMinimumWidth(1), 150);
    const int rows = grid->getFields().size();
    for (int row = 0; row < rows; ++row) {
        QCOMPARE(grid->rowMinimumHeight(row), 25);
        QCOMPARE(at<QWidget>(grid, row, 3), grid->getFields().at(row));
    }
}

void SettingsGridsTest::advancedRowOfANumber()
{
    const auto record = recordOf("Lithium");
    const AdvancedSettingsGrid *grid = advancedOf(record.get());
    QCOMPARE(spacerAt(grid, 0, 0)->sizeHint().width(), 20);
    QCOMPARE(spacerAt(grid, 0, 2)->sizeHint().width(), 10);

    auto *name = at<QLabel>(grid, 0, 1);
    QCOMPARE(name->text(), "<b>Min Starting Voltage:</b>");
    QCOMPARE(name->alignment(), Qt::AlignRight | Qt::AlignVCenter);
    QCOMPARE(name->font().pointSize(), QFontInfo(QLabel().font()).pointSize() + 2);

    auto *field = at<SettingsLineEdit>(grid, 0, 3);
    QVERIFY(field);
    QCOMPARE(field->text(), "21.0");
    QCOMPARE(field->minimumSize(), QSize(70, 20));
    QCOMPARE(field->maximumSize(), QSize(70, 20));
    QCOMPARE(field->maxLength(), 7);
    QVERIFY(!field->styleSheet().isEmpty()); // shaded
    QCOMPARE(at<QLabel>(grid, 0, 4)->text(), "Volts");
}

void SettingsGridsTest::advancedRowOfAFlag()
{
    const auto record = schemaRecord({flag.arg("advanced")});
    const AdvancedSettingsGrid *grid = advancedOf(record.get());
    QCOMPARE(at<QLabel>(grid, 0, 1)->text(), "<b>Quick:</b>");
    auto *box = at<SettingsCheckBox>(grid, 0, 3);
    QVERIFY(box);
    QCOMPARE(box->getSetting()->name, "quick");
    QVERIFY(!box->isEnabled());
    QVERIFY(!grid->itemAtPosition(0, 4));
}

void SettingsGridsTest::advancedStartsDisabled()
{
    for (const char *chemistry : {"Nickel", "Lead", "Lithium"}) {
        init();
        const auto record = recordOf(chemistry);
        QVERIFY(allEnabled(advancedOf(record.get()), false));
        form.reset();
    }
}

void SettingsGridsTest::advancedFollowsTheEditModeDownOnly()
{
    const auto record = recordOf("Nickel");
    AdvancedSettingsGrid *grid = advancedOf(record.get());
    grid->editSettings(true);
    QVERIFY(allEnabled(grid, false));
    grid->setAdvancedMode(true);
    QVERIFY(allEnabled(grid, true));
    grid->editSettings(true);
    QVERIFY(allEnabled(grid, true));
    grid->editSettings(false);
    QVERIFY(allEnabled(grid, false));
}

void SettingsGridsTest::advancedModeOpensAndCloses()
{
    const auto record = recordOf("Lithium");
    AdvancedSettingsGrid *grid = advancedOf(record.get());
    StructSetting *start = record->getStructSettingByName("min_start_V");
    grid->setAdvancedMode(true);
    for (const char *name : {"min_start_V", "start_I", "bulk_start_V", "complete_I"})
        QVERIFY(record->getStructSettingByName(name)->advancedEnabled);
    QVERIFY(start->setValue(10.0));
    QCOMPARE(at<SettingsLineEdit>(grid, 0, 3)->text(), "10.0");

    grid->setAdvancedMode(false);
    QVERIFY(!start->advancedEnabled);
    QVERIFY(!at<SettingsLineEdit>(grid, 0, 3)->isEnabled());
    QCOMPARE(at<SettingsLineEdit>(grid, 0, 3)->text(), "21.0");
}

void SettingsGridsTest::advancedRowsStayWhateverTheThermistor()
{
    const auto record = recordOf("Nickel");
    AdvancedSettingsGrid *grid = advancedOf(record.get());
    const QStringList before = settingsOf(grid);
    grid->setAdvancedMode(true);
    for (const bool required : {true, false}) {
        record->getStructSettingByName("external_thermistor")->setValue(required);
        QCOMPARE(settingsOf(grid), before);
        for (const QWidget *field : grid->getFields())
            QVERIFY(!field->isHidden() && field->isEnabled());
    }
}

void SettingsGridsTest::nameTakesTheFirstTwo()
{
    for (const char *chemistry : {"Nickel", "Lead", "Lithium"}) {
        init();
        const auto record = recordOf(chemistry);
        const NameSettingsGrid grid(record.get(), &generator, form.get());
        QCOMPARE(settingsOf(&grid), QStringList({"title", "description"}));
    }
}

void SettingsGridsTest::nameRow()
{
    const auto record = recordOf("Lead");
    const auto *grid = new NameSettingsGrid(record.get(), &generator, form.get());
    QCOMPARE(form->layout(), grid);
    const QStringList names({"Name", "Description"});
    const QStringList values({"Lead", "Custom"});
    for (int row = 0; row < 2; ++row) {
        for (int column : {0, 2, 4})
            QVERIFY(spacerAt(grid, row, column));
        auto *field = at<SettingsLineEdit>(grid, row, 1);
        QVERIFY(field);
        QCOMPARE(field->text(), values.at(row));
        QCOMPARE(field->minimumSize(), QSize(150, 34));
        QCOMPARE(field->maximumSize(), QSize(150, 34));
        QCOMPARE(field->font().pointSize(), 18);
        QVERIFY(!field->styleSheet().isEmpty()); // shaded
        auto *name = at<QLabel>(grid, row, 3);
        QCOMPARE(name->text(), names.at(row));
        QCOMPARE(name->font().pointSize(), 15);
        QCOMPARE(alignmentAt(grid, row, 3), Qt::AlignLeft | Qt::AlignVCenter);
    }
}

void SettingsGridsTest::nameStopsAtTheLengthOfTheRecord()
{
    const auto record = recordOf("Lithium");
    const auto *grid = new NameSettingsGrid(record.get(), &generator, form.get());
    for (int row = 0; row < 2; ++row) {
        auto *field = at<SettingsLineEdit>(grid, row, 1);
        field->clear();
        QTest::keyClicks(field, "abcdefghijklmnopqrst");
        QTest::keyClick(field, Qt::Key_Return);
    }
    QCOMPARE(record->getStructSettingByName("title")->getValue(), "abcdefghijk");
    QCOMPARE(record->getStructSettingByName("description")->getValue(), "abcdefghijklm");
}

void SettingsGridsTest::nameFollowsTheEditMode()
{
    const auto record = recordOf("Lithium");
    auto *grid = new NameSettingsGrid(record.get(), &generator, form.get());
    QVERIFY(allEnabled(grid, true));
    grid->editSettings(false);
    QVERIFY(allEnabled(grid, false));
    grid->editSettings(true);
    QVERIFY(allEnabled(grid, true));
}

void SettingsGridsTest::nameOfAShortRecord()
{
    const auto record =
        schemaRecord({"char title[4]; // string, auto, \"Name\", \"title\", \"abc\", 0, basic"});
    const auto *grid = new NameSettingsGrid(record.get(), &generator, form.get());
    QCOMPARE(settingsOf(grid), QStringList({"title"}));
}

void SettingsGridsTest::tellsHelpTexts_data()
{
    QTest::addColumn<QString>("chemistry");
    QTest::addColumn<QString>("setting");
    QTest::addColumn<QString>("beginning");
    QTest::newRow("basic") << "Lead"
                           << "bulk_I"
                           << "<FONT>The current level for most of the";
    QTest::newRow("same name, other chemistry")
        << "Lithium"
        << "bulk_I"
        << "<FONT>The charge current for the bulk of the charging,";
    QTest::newRow("flag") << "Nickel"
                          << "external_thermistor"
                          << "<FONT>Thermistor Required? Set";
    QTest::newRow("advanced") << "Nickel"
                              << "dTdt"
                              << "<FONT>Rate of change of temperature rise";
    QTest::newRow("none") << "Global stats"
                          << "lifetime"
                          << "";
}

void SettingsGridsTest::tellsHelpTexts()
{
    QFETCH(QString, chemistry);
    QFETCH(QString, setting);
    QFETCH(QString, beginning);
    const auto record = recordOf(chemistry);
    QWidget basicForm;
    new BasicSettingsGrid(true, record.get(), &generator, &basicForm);
    advancedOf(record.get());

    int labels = 0;
    for (const QWidget *part : {&basicForm, form.get()}) {
        for (const QLabel *label : part->findChildren<QLabel *>()) {
            if (!label->buddy() || settingOf(label->buddy())->name != setting)
                continue;
            ++labels;
            QCOMPARE(label->toolTip().left(beginning.size()), beginning);
            QCOMPARE(label->toolTip().endsWith("</FONT>"), !beginning.isEmpty());
            QCOMPARE(label->toolTip().isEmpty(), beginning.isEmpty());
        }
    }
    QCOMPARE(labels, setting == "external_thermistor" ? 1 : 2); // the unit is a label too
}

void SettingsGridsTest::recordWithoutTypeHasNoHelpTexts()
{
    const auto record = schemaRecord({flag.arg("basic")});
    const auto *name = at<QLabel>(basicOf(record.get()), 0, 4);
    QVERIFY(name->toolTip().isEmpty());
}

void SettingsGridsTest::labelsAreBuddies()
{
    const auto record = recordOf("Nickel");
    const SettingsGrid *grid = basicOf(record.get());
    for (QWidget *field : grid->getFields()) {
        QCOMPARE(field->accessibleName(), settingOf(field)->descriptiveName);
        int labels = 0;
        for (const QLabel *label : form->findChildren<QLabel *>())
            labels += label->buddy() == field;
        QVERIFY(labels >= 1);
    }
}

void SettingsGridsTest::namesAreNoMarkup()
{
    const auto record =
        schemaRecord({"unsigned char low; // num, auto, 0, 9, *1, 0, \"Cells <5 & >2\", \"V<W\", "
                      "\"low\", 0, 0, advanced",
                      "unsigned char b; // num, auto, 0, 9, *1, 0, \"<b>R&D</b>\", \"<i>V&A</i>\", "
                      "\"b\", 0, 1, basic"});
    const AdvancedSettingsGrid *grid = advancedOf(record.get());
    QCOMPARE(at<QLabel>(grid, 0, 1)->text(), "<b>Cells &lt;5 &amp; &gt;2:</b>");
    QWidget basicForm;
    new BasicSettingsGrid(true, record.get(), &generator, &basicForm);
    QStringList texts;
    for (const QLabel *label : basicForm.findChildren<QLabel *>()) {
        QCOMPARE(label->textFormat(), Qt::PlainText);
        texts += label->text();
    }
    // A single & would be taken for the mark of a key.
    QCOMPARE(texts, QStringList({"<i>V&&A</i>", "<b>R&&D</b>"}));
}

void SettingsGridsTest::shortFieldTellsTheWholeNumber()
{
    const auto record = schemaRecord({flag.arg("basic"), number.arg("2").arg("basic")});
    auto *field = at<SettingsLineEdit>(basicOf(record.get()), 1, 1);
    StructSetting *sum = record->getStructSettingByName("sum");
    QCOMPARE(field->toolTip(), "");
    QCOMPARE(field->accessibleDescription(), "Ah");

    sum->setValue(1234567.25);
    QCOMPARE(field->text(), "1.23e6");
    QCOMPARE(field->toolTip(), "1234567.25 Ah");
    QCOMPARE(field->accessibleDescription(), "1234567.25 Ah");
    // A visit stores nothing of what is cut.
    field->saveSetting();
    QCOMPARE(sum->getNumber(), 1234567.25);

    // Six digits are the most that a number shows.
    sum->setValue(123456.75);
    QCOMPARE(field->text(), "123457");
    QCOMPARE(field->toolTip(), "123456.75 Ah");

    sum->setValue(-123.25);
    QCOMPARE(field->text(), "-123.2");
    QCOMPARE(field->toolTip(), "-123.25 Ah");
    sum->setValue(12.5);
    QCOMPARE(field->text(), "12.50");
    QCOMPARE(field->toolTip(), "");
    QCOMPARE(field->accessibleDescription(), "Ah");
}

void SettingsGridsTest::textIsNeverCut()
{
    const auto record = schemaRecord(
        {"char place[16]; // string, auto, \"Place\", \"place\", \"Behind the shed\", 0, basic",
         "char owner[16]; // string, auto, \"Owner\", \"owner\", \"Bicycle kitchen\", 1, "
         "advanced"});
    const auto *place = at<SettingsLineEdit>(basicOf(record.get()), 0, 1);
    QCOMPARE(place->text(), "Behind the shed");
    init();
    const auto *owner = at<SettingsLineEdit>(advancedOf(record.get()), 0, 3);
    QCOMPARE(owner->text(), "Bicycle kitchen");
}

void SettingsGridsTest::listIsNeverCut()
{
    for (const char *group : {"basic", "advanced"}) {
        init();
        const auto record =
            schemaRecord({QString("char mode; // list, auto, \"Mode\", \"mode\", \"Float\", 0, "
                                  "\"Float\", \"Constant current\", %1")
                              .arg(group)});
        StructSetting *mode = record->getStructSettingByName("mode");
        mode->setValue(QString("Constant current"));
        const SettingsGrid *grid = mode->isBasic
                                       ? static_cast<SettingsGrid *>(basicOf(record.get()))
                                       : static_cast<SettingsGrid *>(advancedOf(record.get()));
        auto *field = qobject_cast<SettingsLineEdit *>(grid->getFields().first());
        QCOMPARE(field->text(), "Constant current");
        QTest::keyClick(field, Qt::Key_Return);
        field->saveSetting();
        QCOMPARE(mode->getValue(), "Constant current");
    }
}

void SettingsGridsTest::unknownKindTakesNothing()
{
    for (const char *group : {"basic", "advanced"}) {
        init();
        const auto record = schemaRecord(
            {QString("char blob; // blob, auto, \"Blob\", \"blob\", 0, %1").arg(group)});
        QVERIFY(basicOf(record.get())->getFields().isEmpty());
        // Nor does it harm where it is shown.
        init();
        record->setStructSettings(record->getOriginalOrderStructSettings());
        AdvancedSettingsGrid *grid = advancedOf(record.get());
        auto *field = at<SettingsLineEdit>(grid, 0, 3);
        QCOMPARE(field->text(), "");
        grid->setAdvancedMode(true);
        field->setText("x");
        field->saveSetting();
        grid->setAdvancedMode(false);
        QCOMPARE(record->getStructSettingByName("blob")->getValue(), "ERROR");
    }
}

void SettingsGridsTest::emptyVisualList()
{
    const auto record = recordOf("Version");
    QVERIFY(basicOf(record.get())->getFields().isEmpty());
    init();
    QVERIFY(advancedOf(record.get())->getFields().isEmpty());
    init();
    const NameSettingsGrid name(record.get(), &generator, form.get());
    QVERIFY(name.getFields().isEmpty());
}

QTEST_MAIN(SettingsGridsTest)
#include "tst_settingsgrids.moc"
