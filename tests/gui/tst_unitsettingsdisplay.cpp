#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "editors/settingcheckboxextended.h"
#include "editors/settingscheckbox.h"
#include "editors/settingslider.h"
#include "editors/settingslineedit.h"
#include "editors/unitsettingsdisplay.h"
#include "support/schemarecord.h"

#include <QApplication>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QSignalSpy>
#include <QSlider>
#include <QTest>
#include <QVBoxLayout>

#include <memory>

using HParser::StructSetting;

class UnitSettingsDisplayTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void form();
    void rowsInVisualOrder();
    void ranges_data();
    void ranges();
    void previewsBrightnessAlone();
    void picturesTheDisplayAlone();
    void tooltips_data();
    void tooltips();
    void tooltipsWhateverTheTypeOfTheRecord();
    void noTooltipWithoutAText();
    void isEditableBeforeAnyCharger();
    void opensSilently();
    void tellsEveryChange();
    void tellsBeforeItShows();
    void defaultsAreThoseOfTheSchema();
    void defaultsAtDefaultsChangeNothing();
    void loadsDefaults();
    void hiddenMembersKeepTheirValues();
    void enablesEditing();
    void savingEndsEditing();
    void restoresItsBackup();
    void restoresValuesBehindTheirBounds();
    void freshPageReadsNewBounds();
    void emptyStruct();
    void otherKindsOfSettings();
    void unknownKindsGetNoRow();
    void tabGoesDownThePage();
    void titlesAreReadableOnDarkDesktops();

private:
    StructSetting *member(const char *name) const
    {
        return settings->getStructSettingByName(QLatin1String(name));
    }
    QWidget *row(int index) const
    {
        return page->findChild<QWidget *>("sliderTests")->layout()->itemAt(index)->widget();
    }
    static QLabel *title(const QWidget *row) { return row->findChildren<QLabel *>().constFirst(); }

    std::unique_ptr<HParser::Generator> generator;
    HParser::StructSettings *settings = nullptr;
    std::unique_ptr<UnitSettingsDisplay> page;
};

void UnitSettingsDisplayTest::init()
{
    generator = std::make_unique<HParser::Generator>();
    generator->setHFileLocation(VELANTOR_BUNDLE_MEMBERS "/master.ss");
    generator->setTooltipFileLoc(VELANTOR_BUNDLE_MEMBERS "/setting_tooltips.txt");
    QVERIFY(generator->parseSSAndTooltips());
    settings = generator->getUnitSettingsStruct();
    page = std::make_unique<UnitSettingsDisplay>(settings, generator.get());
}

void UnitSettingsDisplayTest::cleanup()
{
    page.reset();
}

void UnitSettingsDisplayTest::form()
{
    QCOMPARE(page->objectName(), QString("UnitSettingsDisplay"));
    auto *inner = page->findChild<QWidget *>("sliderTests");
    QVERIFY(inner);
    QVERIFY(qobject_cast<QVBoxLayout *>(inner->layout()));
    QCOMPARE(page->minimumWidth(), 475);
    QCOMPARE(page->minimumHeight(), 6 * 75);
    QCOMPARE(inner->minimumHeight(), 6 * 75);
}

void UnitSettingsDisplayTest::rowsInVisualOrder()
{
    const QStringList titles{"<b>Brightness:</b>",        "<b>Rotate Display?</b>",
                             "<b>Screensaver Delay:</b>", "<b>Longpress Time:</b>",
                             "<b>Cable Resistance:</b>",  "<b>Current Tare Period:</b>"};
    QCOMPARE(page->findChild<QWidget *>("sliderTests")->layout()->count(), titles.size());
    for (int i = 0; i < titles.size(); ++i) {
        QCOMPARE(title(row(i))->text(), titles.at(i));
        QCOMPARE(bool(qobject_cast<SettingCheckboxExtended *>(row(i))), i == 1);
        QCOMPARE(bool(qobject_cast<SettingSlider *>(row(i))), i != 1);
    }
}

void UnitSettingsDisplayTest::ranges_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("minimum");
    QTest::addColumn<int>("maximum");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("unit");
    QTest::newRow("brightness") << 0 << 0 << 9 << "5"
                                << "";
    QTest::newRow("screensaver") << 2 << 0 << 240 << "5"
                                 << "min";
    QTest::newRow("longpress") << 3 << 4 << 200 << "0.80"
                               << "s";
    QTest::newRow("cable") << 4 << 0 << 999 << "0.087"
                           << "Ohm";
    QTest::newRow("tare") << 5 << 0 << 255 << "30"
                          << "min";
}

void UnitSettingsDisplayTest::ranges()
{
    QFETCH(int, index);
    const auto *slider = row(index)->findChild<QSlider *>();
    QTEST(slider->minimum(), "minimum");
    QTEST(slider->maximum(), "maximum");
    QTEST(row(index)->findChild<QDoubleSpinBox *>()->text(), "shown");
    QTEST(row(index)->findChildren<QLabel *>().at(1)->text(), "unit");
}

void UnitSettingsDisplayTest::previewsBrightnessAlone()
{
    for (const int index : {0, 2, 3, 4, 5})
        QCOMPARE(title(row(index))->styleSheet().contains("rgba(255, 240, 0, 215)"), index == 0);
}

void UnitSettingsDisplayTest::picturesTheDisplayAlone()
{
    const auto labels = row(1)->findChildren<QLabel *>();
    QCOMPARE(labels.size(), 2);
    const QLabel *picture = labels.at(1);
    QCOMPARE(picture->height(), 33);
    const QImage upright = picture->pixmap(Qt::ReturnByValue).toImage();
    QCOMPARE(upright,
             QPixmap(":/new/images/velantor.png").toImage().convertToFormat(upright.format()));
    member("flip_display")->setValue(true);
    const QImage flipped = picture->pixmap(Qt::ReturnByValue).toImage();
    QVERIFY(flipped != upright);
    QCOMPARE(flipped.convertToFormat(QImage::Format_ARGB32),
             upright.mirrored(true, true).convertToFormat(QImage::Format_ARGB32));
}

void UnitSettingsDisplayTest::tooltips_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("beginning");
    QTest::newRow("slider") << 0 << "<FONT>Velantor screen brightness.";
    QTest::newRow("check box") << 1 << "<FONT>Check this to rotate the display screen";
    QTest::newRow("no text") << 5 << "";
}

void UnitSettingsDisplayTest::tooltips()
{
    QFETCH(int, index);
    QFETCH(QString, beginning);
    const QString text = title(row(index))->toolTip();
    QVERIFY2(beginning.isEmpty() || text.startsWith(beginning), qPrintable(text));
    QCOMPARE(text.isEmpty(), beginning.isEmpty());
    QVERIFY(text.isEmpty() || text.endsWith("</FONT>"));
}

void UnitSettingsDisplayTest::tooltipsWhateverTheTypeOfTheRecord()
{
    const auto record = schemaRecord(
        {"unsigned char type; // num, auto, 8, 8, *1, 0, \"type\", \"\", \"type\", 8, -1, advanced",
         "char brightness; // num, auto, 0, 9, *1, 0, \"A\", \"\", \"a\", 5, 0, advanced",
         "char start_I; // num, auto, 0, 9, *1, 0, \"B\", \"\", \"b\", 5, 1, advanced"});
    const UnitSettingsDisplay other(record.get(), generator.get());
    const QList<QWidget *> rows = {other.findChildren<SettingSlider *>().at(0),
                                   other.findChildren<SettingSlider *>().at(1)};
    QVERIFY(title(rows.at(0))->toolTip().startsWith("<FONT>Velantor screen brightness."));
    QCOMPARE(title(rows.at(1))->toolTip(), QString()); // a lithium profile would have one
}

void UnitSettingsDisplayTest::noTooltipWithoutAText()
{
    const auto record =
        schemaRecord({"char a; // num, auto, 0, 9, *1, 0, \"A\", \"\", \"a\", 5, 0, advanced",
                      "char b; // bool, 1, \"B\", \"b\", 0, 1, advanced",
                      "char c[6]; // string, auto, \"C\", \"c\", \"Nobody\", 2, advanced"});
    const UnitSettingsDisplay other(record.get(), generator.get());
    const auto labels = other.findChildren<QLabel *>();
    QCOMPARE(labels.size(), 4); // a unit among them
    for (const QLabel *label : labels)
        QCOMPARE(label->toolTip(), QString());
}

void UnitSettingsDisplayTest::isEditableBeforeAnyCharger()
{
    row(0)->findChild<QSlider *>()->setValue(7);
    QCOMPARE(member("brightness")->getNumber(), 7.0);
    row(1)->findChild<SettingsCheckBox *>()->click();
    QVERIFY(member("flip_display")->getBool());
}

void UnitSettingsDisplayTest::opensSilently()
{
    page.reset();
    generator->parseSSFile(VELANTOR_BUNDLE_MEMBERS "/master.ss");
    settings = generator->getUnitSettingsStruct();
    int told = 0;
    for (StructSetting *setting : settings->getOriginalOrderStructSettings()) {
        connect(setting, &StructSetting::valueChanged, this, [&told] { ++told; });
        connect(setting, &StructSetting::enableView, this, [&told] { ++told; });
    }
    page = std::make_unique<UnitSettingsDisplay>(settings, generator.get());
    QCOMPARE(told, 0);
    for (const StructSetting *setting : settings->getOriginalOrderStructSettings())
        QCOMPARE(setting->advancedEnabled,
                 settings->getStructSettings().contains(const_cast<StructSetting *>(setting)));
}

void UnitSettingsDisplayTest::tellsEveryChange()
{
    const QSignalSpy changes(page.get(), &UnitSettingsDisplay::settingChanged);
    int expected = 0;
    for (StructSetting *setting : settings->getStructSettings()) {
        if (setting->settingKind == HParser::SettingKind::Bool)
            setting->setValue(true);
        else
            setting->setValue(setting->getNumber() + 1);
        QCOMPARE(changes.count(), ++expected);
    }
    member("splashscreen_time_decis")->advancedEnabled = true;
    member("splashscreen_time_decis")->setValue(5.0);
    QCOMPARE(changes.count(), expected);
}

void UnitSettingsDisplayTest::tellsBeforeItShows()
{
    const auto *spinBox = row(0)->findChild<QDoubleSpinBox *>();
    double shown = 0;
    connect(page.get(), &UnitSettingsDisplay::settingChanged, this,
            [&] { shown = spinBox->value(); });
    member("brightness")->setValue(7.0);
    QCOMPARE(shown, 5.0);
    QCOMPARE(spinBox->value(), 7.0);
}

void UnitSettingsDisplayTest::defaultsAreThoseOfTheSchema()
{
    const auto record = schemaRecord(
        {"char brightness; // num, auto, 0, 9, *1, 0, \"A\", \"\", \"a\", 5, 0, advanced"});
    UnitSettingsDisplay other(record.get(), generator.get());
    record->getStructSettingByName("brightness")->setValue(9.0);
    member("brightness")->setValue(9.0);
    other.on_resetDefaultsClicked();
    QCOMPARE(member("brightness")->getNumber(), 5.0);
    QCOMPARE(record->getStructSettingByName("brightness")->getNumber(), 9.0);
}

void UnitSettingsDisplayTest::defaultsAtDefaultsChangeNothing()
{
    const QSignalSpy changes(page.get(), &UnitSettingsDisplay::settingChanged);
    page->on_resetDefaultsClicked();
    QCOMPARE(changes.count(), 0);
}

void UnitSettingsDisplayTest::loadsDefaults()
{
    member("brightness")->setValue(9.0);
    member("flip_display")->setValue(true);
    member("screensaver_delay_m")->setValue(0.0);
    member("longpress_time_cs")->setValue(2.0);
    member("cable_resistance_mOhm")->setValue(0.5);
    member("current_tare_period_minutes")->setValue(255.0);
    const QSignalSpy changes(page.get(), &UnitSettingsDisplay::settingChanged);
    page->on_resetDefaultsClicked();
    QCOMPARE(changes.count(), 6);
    QCOMPARE(member("brightness")->getValue(), QString("5"));
    QCOMPARE(member("flip_display")->getValue(), QString("false"));
    QCOMPARE(member("screensaver_delay_m")->getValue(), QString("5"));
    QCOMPARE(member("longpress_time_cs")->getValue(), QString("0.8"));
    QCOMPARE(member("cable_resistance_mOhm")->getValue(), QString("0.087"));
    QCOMPARE(member("current_tare_period_minutes")->getValue(), QString("30"));
    QCOMPARE(row(0)->findChild<QDoubleSpinBox *>()->text(), QString("5"));
    QVERIFY(!row(1)->findChild<SettingsCheckBox *>()->isChecked());
    QCOMPARE(row(4)->findChild<QSlider *>()->value(), 87);
}

void UnitSettingsDisplayTest::hiddenMembersKeepTheirValues()
{
    StructSetting *limit = member("temperature_limit_degrees_celsius");
    limit->advancedEnabled = true;
    limit->setValue(40.0);
    page->on_resetDefaultsClicked();
    QCOMPARE(limit->getNumber(), 40.0);
    for (const QLabel *label : page->findChildren<QLabel *>())
        QVERIFY(!label->text().contains("Temperature"));
}

void UnitSettingsDisplayTest::enablesEditing()
{
    for (const bool on : {false, true}) {
        page->enableEditing(on);
        for (const QWidget *control : page->findChildren<QSlider *>())
            QCOMPARE(control->isEnabled(), on);
        for (const QWidget *control : page->findChildren<QDoubleSpinBox *>())
            QCOMPARE(control->isEnabled(), on);
        QCOMPARE(page->findChild<SettingsCheckBox *>()->isEnabled(), on);
    }
}

void UnitSettingsDisplayTest::savingEndsEditing()
{
    page->on_saveInProgramClicked();
    QVERIFY(!page->findChild<QSlider *>()->isEnabled());
    QVERIFY(!page->findChild<SettingsCheckBox *>()->isEnabled());
}

void UnitSettingsDisplayTest::restoresItsBackup()
{
    member("brightness")->setValue(9.0);
    member("flip_display")->setValue(true);
    page->restoreBackup();
    QCOMPARE(member("brightness")->getNumber(), 5.0);
    QVERIFY(!member("flip_display")->getBool());

    member("cable_resistance_mOhm")->setValue(0.29);
    page->saveBackups();
    member("cable_resistance_mOhm")->setValue(0.3);
    page->restoreBackup();
    QCOMPARE(member("cable_resistance_mOhm")->getNumber(), 0.29);
    QCOMPARE(row(4)->findChild<QSlider *>()->value(), 290);
}

void UnitSettingsDisplayTest::restoresValuesBehindTheirBounds()
{
    // longpress stands before shortpress, twice which is its lower bound.
    member("shortpress_time_cs")->advancedEnabled = true;
    member("shortpress_time_cs")->setValue(0.01);
    member("longpress_time_cs")->setValue(0.02);
    page->saveBackups();
    member("shortpress_time_cs")->setValue(0.03);
    QCOMPARE(member("longpress_time_cs")->getNumber(), 0.06);
    page->restoreBackup();
    QCOMPARE(member("shortpress_time_cs")->getNumber(), 0.01);
    QCOMPARE(member("longpress_time_cs")->getNumber(), 0.02);
}

void UnitSettingsDisplayTest::freshPageReadsNewBounds()
{
    member("shortpress_time_cs")->advancedEnabled = true;
    member("shortpress_time_cs")->setValue(0.03);
    QCOMPARE(row(3)->findChild<QSlider *>()->minimum(), 4);
    page = std::make_unique<UnitSettingsDisplay>(settings, generator.get());
    QCOMPARE(row(3)->findChild<QSlider *>()->minimum(), 6);
}

void UnitSettingsDisplayTest::emptyStruct()
{
    const auto record =
        schemaRecord({"char x; // num, auto, 0, 9, *1, 0, \"X\", \"\", \"x\", 5, -1, basic"});
    UnitSettingsDisplay empty(record.get(), generator.get());
    QCOMPARE(empty.minimumHeight(), 0);
    QCOMPARE(empty.findChild<QWidget *>("sliderTests")->minimumHeight(), 0);
    QVERIFY(empty.findChildren<QLabel *>().isEmpty());
    empty.enableEditing(false);
    empty.restoreBackup();
}

void UnitSettingsDisplayTest::otherKindsOfSettings()
{
    const auto record = schemaRecord(
        {"char brightness; // num, auto, 0, 9, *1, 0, \"B\", \"\", \"b\", 5, 0, advanced",
         "char owner[6]; // string, auto, \"Owner\", \"owner\", \"Nobody\", 1, advanced",
         "char mode; // list, auto, \"Mode\", \"mode\", \"a\", 2, \"a\", \"b\", advanced"});
    StructSetting *owner = record->getStructSettingByName("owner");
    StructSetting *mode = record->getStructSettingByName("mode");
    UnitSettingsDisplay other(record.get(), generator.get());
    const QSignalSpy changes(&other, &UnitSettingsDisplay::settingChanged);
    const auto edits = other.findChildren<SettingsLineEdit *>();
    QCOMPARE(edits.size(), 2);
    QCOMPARE(edits.at(0)->text(), QString("Nobod"));
    QCOMPARE(edits.at(0)->accessibleName(), QString("Owner"));
    QStringList titles;
    for (const QLabel *label : other.findChildren<QLabel *>())
        titles.append(label->text());
    QVERIFY(titles.contains("<b>Owner:</b>"));
    QVERIFY(titles.contains("<b>Mode:</b>"));

    edits.at(0)->setText("me");
    edits.at(0)->saveSetting();
    QCOMPARE(owner->getValue(), QString("me"));
    QCOMPARE(changes.count(), 1);
    mode->setValue(QString("b"));
    QCOMPARE(edits.at(1)->text(), QString("b"));
    owner->setDefault();
    QCOMPARE(edits.at(0)->text(), QString("Nobod"));
    other.enableEditing(false);
    QVERIFY(!edits.at(0)->isEnabled());
    other.restoreBackup();
    QCOMPARE(owner->getValue(), QString("Nobod"));
}

void UnitSettingsDisplayTest::unknownKindsGetNoRow()
{
    const auto record = schemaRecord({"char x; // blob, 1, \"X\", \"x\", 0, 0, basic"});
    record->setStructSettings(record->getOriginalOrderStructSettings());
    UnitSettingsDisplay other(record.get(), generator.get());
    QVERIFY(other.findChildren<QLabel *>().isEmpty());
}

void UnitSettingsDisplayTest::tabGoesDownThePage()
{
    page->show();
    page->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(page.get()));
    QWidgetList expected;
    for (int i = 0; i < 6; ++i) {
        if (i == 1) {
            expected.append(row(i)->findChild<SettingsCheckBox *>());
            continue;
        }
        expected.append(row(i)->findChild<QDoubleSpinBox *>());
        expected.append(row(i)->findChild<QSlider *>());
    }
    expected.constFirst()->setFocus();
    for (QWidget *control : qAsConst(expected)) {
        QCOMPARE(QApplication::focusWidget(), control);
        QVERIFY(!control->accessibleName().isEmpty());
        QTest::keyClick(control, Qt::Key_Tab);
    }
}

void UnitSettingsDisplayTest::titlesAreReadableOnDarkDesktops()
{
    const QPalette before = QApplication::palette();
    QApplication::setPalette(QPalette(QColor(40, 40, 40), QColor(30, 30, 30)));
    page = std::make_unique<UnitSettingsDisplay>(settings, generator.get());
    page->resize(475, 520);
    for (const bool enabled : {true, false}) {
        page->enableEditing(enabled);
        const QImage picture = page->grab().toImage();
        const auto brightest = [&](const QWidget *widget) {
            int most = 0;
            const QRect area(widget->mapTo(page.get(), QPoint(0, 0)), widget->size());
            for (int y = area.top(); y <= area.bottom(); ++y) {
                for (int x = area.left(); x <= area.right(); ++x)
                    most = qMax(most, qGray(picture.pixel(x, y)));
            }
            return most;
        };
        for (int i = 0; i < 6; ++i)
            QVERIFY(brightest(title(row(i))) > 150);
        for (const QWidget *control : page->findChildren<QSlider *>())
            QVERIFY(brightest(control) > 120);
        for (const QWidget *control : page->findChildren<QDoubleSpinBox *>()) {
            const QPoint centre(control->mapTo(page.get(), QPoint(5, control->height() / 2)));
            QVERIFY(qGray(picture.pixel(centre)) > 200);
        }
    }
    QApplication::setPalette(before);
}

QTEST_MAIN(UnitSettingsDisplayTest)
#include "tst_unitsettingsdisplay.moc"
