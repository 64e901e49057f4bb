#include "ImportProfiles/importprofilesmain.h"
#include "SSGenerator/formula.h"
#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "profiles/profilename.h"
#include "profiles/profilenamelistwidget.h"
#include "profiles/profilesettings.h"
#include "support/filecontent.h"
#include "support/filesizelimit.h"
#include "support/inchild.h"
#include "support/messageboxanswers.h"
#include "xml/readfromxml.h"
#include "xml/writetoxml.h"

#include <QBuffer>
#include <QProcess>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTextCodec>
#include <QTextStream>
#include <QtTest>

#include <clocale>
#include <csignal>
#include <memory>
#include <vector>

#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using HParser::SettingKind;
using HParser::StructSetting;
using HParser::StructSettings;
using ImportProfiles::ImportProfilesMain;
using XMLGeneratorParser::ReadFromXML;
using XMLGeneratorParser::WriteToXML;

namespace
{
const QStringList chemistries = {"Lithium", "Lead", "Nickel"};

/// Rows that are in no list, on profiles of their own.
class Rows
{
public:
    Rows() { generator.parseSSFile(QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/master.ss")); }

    ProfileSettings *add(const QString &chemistry = "Lithium")
    {
        auto *profile = new ProfileSettings;
        if (!profile->initializeStructSettings(chemistry, &generator))
            qFatal("no such chemistry");
        addRow(profile);
        return profile;
    }
    void addRow(ProfileSettings *profile)
    {
        items.push_back(std::make_unique<ProfileNameListWidget>(profile));
    }
    static void set(ProfileSettings *profile, const char *member, const QString &text)
    {
        profile->structSettings->getStructSettingByName(member)->setValue(text);
    }
    static void set(ProfileSettings *profile, const char *member, double value)
    {
        StructSetting *setting = profile->structSettings->getStructSettingByName(member);
        setting->advancedEnabled = true;
        setting->setValue(value);
    }
    ProfileName *row(int index) const { return items.at(index)->profileName; }
    QList<ProfileName *> names() const
    {
        QList<ProfileName *> result;
        for (const auto &item : items)
            result.append(item->profileName);
        return result;
    }
    QByteArray written(const StructSettings *globalSettings = nullptr) const
    {
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        return WriteToXML().write(&buffer, names(), globalSettings) ? buffer.data() : QByteArray();
    }

    HParser::Generator generator;

private:
    std::vector<std::unique_ptr<ProfileNameListWidget>> items;
};

QString shownTexts(const StructSettings *record)
{
    QString texts = record->getDescriptiveName();
    for (const StructSetting *setting : record->getStructSettings())
        texts += "\n" + setting->name + "=" + setting->getValue();
    return texts;
}

QStringList texts(const Rows &rows)
{
    QStringList result;
    for (const ProfileName *row : rows.names())
        result.append(shownTexts(row->getProfileSettings()->structSettings) +
                      QString("\nactive %1, default %2, modifiable %3")
                          .arg(row->getActiveStatus())
                          .arg(row->getDefaultStatus())
                          .arg(row->getProfileSettings()->getModifiable()));
    return result;
}

/// The rows that a file leads to.
void load(QByteArray text, Rows *rows)
{
    QBuffer buffer(&text);
    buffer.open(QIODevice::ReadOnly);
    ReadFromXML reader;
    reader.readProfiles(&buffer);
    ImportProfilesMain importer(nullptr, &rows->generator);
    QObject::connect(&importer, &ImportProfilesMain::profileReadyForImport,
                     [rows](ProfileSettings *profile, bool active, bool isDefault) {
                         rows->addRow(profile);
                         rows->row(rows->names().size() - 1)->setActive(active);
                         rows->row(rows->names().size() - 1)->setDefault(isDefault);
                     });
    importer.importSSFileStruct(reader.getUnitSettings(), rows->generator.getUnitSettingsStruct());
    importer.importProfilesAndStats(reader.getProfiles(), {}, {});
}

/// A character that a user can type, now and then an odd one.
QString randomCharacter(QRandomGenerator *random)
{
    switch (random->bounded(4)) {
    case 0:
        return QString(QChar(random->bounded(0xA1, 0x250)));
    case 1:
        return QString(QChar(random->bounded(0x2010, 0x3100)));
    case 2: {
        const char32_t beyond = random->bounded(0x1F300, 0x1F600);
        return QString::fromUcs4(&beyond, 1);
    }
    default:
        return QString(QChar(random->bounded(' ', 0x7F)));
    }
}

/// Gives a setting some value within its limits, often one of the limits.
void setAnyValue(StructSetting *setting, QRandomGenerator *random)
{
    setting->advancedEnabled = true;
    if (setting->settingKind == SettingKind::Bool) {
        setting->setValue(random->bounded(2) == 1);
    } else if (setting->settingKind == SettingKind::String) {
        QString text;
        const int size = random->bounded(setting->arraySize);
        while (text.size() < size - 1)
            text += randomCharacter(random);
        setting->setValue(text);
    } else {
        const double low = setting->lowerBound->toDouble();
        const double high = setting->upperBound->toDouble();
        switch (random->bounded(4)) {
        case 0:
            setting->setValue(low);
            break;
        case 1:
            setting->setValue(high);
            break;
        default:
            setting->setValue(low + (high - low) * random->generateDouble());
        }
    }
}

void makeRandom(Rows *rows, int count, QRandomGenerator *random)
{
    for (int i = 0; i < count; ++i) {
        ProfileSettings *profile = rows->add(chemistries.at(random->bounded(3)));
        for (StructSetting *setting : profile->structSettings->getDependancyOrderStructSettings()) {
            if (profile->structSettings->getStructSettings().contains(setting))
                setAnyValue(setting, random);
        }
        profile->setModifiable(random->bounded(2) == 1);
        rows->row(rows->names().size() - 1)->setActive(random->bounded(2) == 1);
        rows->row(rows->names().size() - 1)->setDefault(random->bounded(2) == 1);
    }
}
} // namespace

class WriteToXMLTest : public QObject
{
    Q_OBJECT

private slots:
    void emptyList();
    void layoutOfAProfile();
    void layoutOfTheOtherChemistries_data();
    void layoutOfTheOtherChemistries();
    void globalSettingsComeFirst();
    void idsCountRows();
    void flagsComeFromTheirOwners();
    void writesADeliveredSetAsItIs_data();
    void writesADeliveredSetAsItIs();
    void settingLines_data();
    void settingLines();
    void largeNumbersHaveAnExponent();
    void boolsAreWords();
    void titlesAreWellFormed_data();
    void titlesAreWellFormed();
    void whatIsWrittenLoadsBackEqual();
    void settingsLoadBackEqual();
    void localeDoesNotMatter();
    void replacesAFile();
    void followsALink();
    void fullDiskLeavesTheOldFile_data();
    void fullDiskLeavesTheOldFile();
    void fullFileSystemLeavesTheOldFile();
    void readOnlyFolderLeavesTheOldFile();
    void killLeavesTheOldFile();
    void placesThatTakeNoFile();
    void deviceThatTakesNotEverything();
    void tellsProgress();

private:
    MessageBoxAnswers user;
};

void WriteToXMLTest::emptyList()
{
    QCOMPARE(Rows().written(), QByteArray("<VelantorProfiles>\n</VelantorProfiles>\n"));
}

void WriteToXMLTest::layoutOfAProfile()
{
    Rows rows;
    ProfileSettings *profile = rows.add();
    Rows::set(profile, "title", "36V Li(10s)");
    Rows::set(profile, "description", "Fast Charge");
    Rows::set(profile, "full_V", 42);
    Rows::set(profile, "bulk_I", 8);
    Rows::set(profile, "min_start_V", 21);
    Rows::set(profile, "start_I", 0.2);
    Rows::set(profile, "bulk_start_V", 29.4);
    Rows::set(profile, "complete_I", 0.15);
    profile->setModifiable(false);
    QCOMPARE(rows.written(),
             QByteArray("<VelantorProfiles>\n"
                        "\t<profile id=\"0\" active=\"false\" default=\"false\" "
                        "modifiable=\"false\">\n"
                        "\t\t<name>Lithium</name>\n"
                        "\t\t<!-- Chemistry Specific Properties: -->\n"
                        "\t\t<title>36V Li(10s)</title>\n"
                        "\t\t<subtitle>Fast Charge</subtitle>\n"
                        "\t\t<full_voltage>42</full_voltage>\n"
                        "\t\t<bulk_current>8</bulk_current>\n"
                        "\t\t<min_starting_voltage>21</min_starting_voltage>\n"
                        "\t\t<start_current>0.2</start_current>\n"
                        "\t\t<bulk_start_voltage>29.4</bulk_start_voltage>\n"
                        "\t\t<charge_complete_below_current>0.15</charge_complete_below_current>\n"
                        "\t</profile>\n"
                        "</VelantorProfiles>\n"));
}

void WriteToXMLTest::layoutOfTheOtherChemistries_data()
{
    QTest::addColumn<QByteArray>("settings");
    QTest::newRow("Lead") << QByteArray(
        "\t\t<title>Lead</title>\n"
        "\t\t<subtitle>Custom</subtitle>\n"
        "\t\t<full_voltage>43.2</full_voltage>\n"
        "\t\t<bulk_current>4</bulk_current>\n"
        "\t\t<float_voltage>40.6</float_voltage>\n"
        "\t\t<charge_complete_below_current>0.15</charge_complete_below_current>\n"
        "\t\t<max_time_at_full_voltage>4</max_time_at_full_voltage>\n");
    QTest::newRow("Nickel") << QByteArray(
        "\t\t<title>Nickel</title>\n"
        "\t\t<subtitle>Custom</subtitle>\n"
        "\t\t<nominal_voltage>36</nominal_voltage>\n"
        "\t\t<bulk_current>8</bulk_current>\n"
        "\t\t<thermistor>false</thermistor>\n"
        "\t\t<slow_start_current>0.5</slow_start_current>\n"
        "\t\t<bulk_start_voltage>28.8</bulk_start_voltage>\n"
        "\t\t<charge_complete_at_-delta_v>0.3</charge_complete_at_-delta_v>\n"
        "\t\t<charge_complete_at_max_temperature>55</charge_complete_at_max_temperature>\n"
        "\t\t<charge_complete_at_dt_dt>1</charge_complete_at_dt_dt>\n"
        "\t\t<top-up_current>0.5</top-up_current>\n"
        "\t\t<top-up_time>1</top-up_time>\n"
        "\t\t<charge_complete_at_max_voltage>50.4</charge_complete_at_max_voltage>\n");
}

void WriteToXMLTest::layoutOfTheOtherChemistries()
{
    QFETCH(QByteArray, settings);
    Rows rows;
    rows.add(QTest::currentDataTag());
    QCOMPARE(rows.written(), QByteArray("<VelantorProfiles>\n"
                                        "\t<profile id=\"0\" active=\"false\" default=\"false\" "
                                        "modifiable=\"true\">\n"
                                        "\t\t<name>") +
                                 QTest::currentDataTag() +
                                 "</name>\n"
                                 "\t\t<!-- Chemistry Specific Properties: -->\n" +
                                 settings +
                                 "\t</profile>\n"
                                 "</VelantorProfiles>\n");
}

void WriteToXMLTest::globalSettingsComeFirst()
{
    Rows rows;
    StructSettings *settings = rows.generator.getUnitSettingsStruct();
    settings->buildFormulaTrees();
    const QByteArray block = "<VelantorProfiles>\n"
                             "\t<GlobalSettings>\n"
                             "\t\t<brightness>5</brightness>\n"
                             "\t\t<flip_display>false</flip_display>\n"
                             "\t\t<screensaver_delay>5</screensaver_delay>\n"
                             "\t\t<longpress_time>0.8</longpress_time>\n"
                             "\t\t<cable_resistance>0.087</cable_resistance>\n"
                             "\t\t<current_tare_period>30</current_tare_period>\n"
                             "\t</GlobalSettings>\n";
    QCOMPARE(rows.written(settings), QByteArray(block + "</VelantorProfiles>\n"));
    rows.add();
    QVERIFY(rows.written(settings).startsWith(block + "\t<profile id=\"0\" "));
}

void WriteToXMLTest::idsCountRows()
{
    Rows rows;
    for (int id : {255, 7, 7}) {
        ProfileSettings *profile = rows.add();
        profile->setProfileID(id);
        Rows::set(profile, "title", QString::number(id));
    }
    const QByteArray text = rows.written();
    int from = 0;
    for (int i = 0; i < 3; ++i) {
        from = text.indexOf("<profile id=\"" + QByteArray::number(i) + "\" ", from);
        QVERIFY(from != -1);
    }
    QCOMPARE(text.count("<profile "), 3);
}

void WriteToXMLTest::flagsComeFromTheirOwners()
{
    const char *yes[] = {"false", "true"};
    for (int flags = 0; flags < 8; ++flags) {
        Rows rows;
        ProfileSettings *profile = rows.add();
        rows.row(0)->setActive(flags & 1);
        rows.row(0)->setDefault(flags & 2);
        profile->setModifiable(flags & 4);
        const QByteArray expected =
            QString("\t<profile id=\"0\" active=\"%1\" default=\"%2\" modifiable=\"%3\">\n")
                .arg(yes[flags & 1], yes[flags >> 1 & 1], yes[flags >> 2 & 1])
                .toUtf8();
        QVERIFY(rows.written().contains(expected));
    }
}

void WriteToXMLTest::writesADeliveredSetAsItIs_data()
{
    QTest::addColumn<QString>("schema");
    QTest::newRow("24v") << "24V_rev7.ss";
    QTest::newRow("48v") << "48V_FSv2.ss";
    QTest::newRow("72v") << "72V_rev7.ss";
}

void WriteToXMLTest::writesADeliveredSetAsItIs()
{
    QFETCH(QString, schema);
    const QByteArray set =
        contentOf(QStringLiteral(VELANTOR_SOURCE_DIR "/resources/saved_profiles/") +
                  QTest::currentDataTag() + "_default_profiles.xml");
    QVERIFY(!set.isEmpty());
    Rows rows;
    rows.generator.parseSSFile(QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/") + schema);
    load(set, &rows);
    QVERIFY(user.seen().isEmpty());
    QCOMPARE(rows.written(), set);
}

void WriteToXMLTest::settingLines_data()
{
    QTest::addColumn<QString>("declaration");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("line");
    const QString string = "char t[40]; // string, auto, \"T\", \"%1\", \"x\", 0, basic";
    QTest::newRow("plain") << string.arg("title") << "36V Li(10s)"
                           << QByteArray("\t\t<title>36V Li(10s)</title>\n");
    QTest::newRow("ampersand and quotes")
        << string.arg("title") << "A&B \"x\""
        << QByteArray("\t\t<title>A&amp;B &quot;x&quot;</title>\n");
    QTest::newRow("a key that is no tag")
        << string.arg("Rate/Max %") << "1" << QByteArray("\t\t<rate_max__>1</rate_max__>\n");
    QTest::newRow("empty") << string.arg("t") << "" << QByteArray("\t\t<t></t>\n");
    QTest::newRow("beyond ASCII") << string.arg("t") << QString::fromUtf8("20\xC2\xB0")
                                  << QByteArray("\t\t<t>20\xC2\xB0</t>\n");
    QTest::newRow("blanks") << string.arg("t") << " a  b " << QByteArray("\t\t<t> a  b </t>\n");
    QTest::newRow("a carriage return")
        << string.arg("t") << "a\rb" << QByteArray("\t\t<t>a&#13;b</t>\n");
    QTest::newRow("what no XML can hold")
        << string.arg("t") << (QString("a\x01") + QChar(0xD83D)) << QByteArray("\t\t<t>a</t>\n");
}

void WriteToXMLTest::settingLines()
{
    QFETCH(QString, declaration);
    QFETCH(QString, text);
    StructSetting setting(declaration);
    setting.setValue(text);
    QBuffer buffer;
    QVERIFY(buffer.open(QIODevice::WriteOnly));
    QTextStream out(&buffer);
    out.setCodec("UTF-8");
    WriteToXML().xmlOutputSettings(&out, {&setting});
    out.flush();
    QTEST(buffer.data(), "line");
}

void WriteToXMLTest::largeNumbersHaveAnExponent()
{
    StructSetting setting(
        "unsigned long n; // num, auto, 0, 9999999, *1, 0, \"N\", \"\", \"n\", 0, "
        "0, basic");
    setting.buildFormulaTrees({});
    setting.setValue(1234567.0);
    QString text;
    QTextStream out(&text);
    WriteToXML().xmlOutputSettings(&out, {&setting});
    QCOMPARE(text, QString("\t\t<n>1.23457e+06</n>\n"));
}

void WriteToXMLTest::boolsAreWords()
{
    QCOMPARE(WriteToXML().boolToString(true), QString("true"));
    QCOMPARE(WriteToXML().boolToString(false), QString("false"));
}

void WriteToXMLTest::titlesAreWellFormed_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("kept");
    const auto same = [](const char *name, const QString &title) {
        QTest::newRow(name) << title << title;
    };
    same("the end of an unescaped section", "a]]>b");
    same("its beginning", "<![CDATA[a");
    same("a comment", "<!-- a -->");
    same("dashes", "--a--->");
    same("quotes", "\"a'b");
    same("ampersands", "&a;&#1;&&");
    same("an instruction", "<?xml ?>");
    same("an end tag", "</title>");
    same("tab and line ends", "\ta\nb\r\nc\r");
    same("blanks", "  ");
    same("a pair of surrogates", QString::fromUtf8("\xF0\x9F\x98\x80"));
    same("a byte order mark", QString(QChar(0xFEFF)) + "a");
    same("line ends beyond ASCII", QString::fromUtf8("\xC2\x85\xE2\x80\xA8"));
    same("beyond ASCII", QString::fromUtf8("\xC2\xB0\xE2\x82\xAC\xEF\xBF\xBD"));
    same("delete", "\x7F");
    for (char c = 0; c < ' '; ++c) {
        if (c != '\t' && c != '\n' && c != '\r')
            QTest::addRow("control character %d", c) << QString("a") + QChar(c) + "b"
                                                     << "ab";
    }
    QTest::newRow("half a pair of surrogates") << QString("a") + QChar(0xD83D) << "a";
    QTest::newRow("its other half") << QString(QChar(0xDE00)) + "a"
                                    << "a";
    QTest::newRow("no characters") << QString("a") + QChar(0xFFFE) + QChar(0xFFFF) << "a";
}

void WriteToXMLTest::titlesAreWellFormed()
{
    QFETCH(QString, title);
    const QString xmllint = QStandardPaths::findExecutable("xmllint");
    QVERIFY2(!xmllint.isEmpty(), "xmllint is missing");
    Rows rows;
    ProfileSettings *profile = rows.add();
    Rows::set(profile, "title", title);
    QTemporaryDir folder;
    const QString file = folder.filePath("profiles.xml");
    StructSettings *settings = rows.generator.getUnitSettingsStruct();
    settings->buildFormulaTrees();
    QVERIFY(WriteToXML().write(file, rows.names(), settings));
    QProcess check;
    check.setProcessChannelMode(QProcess::MergedChannels);
    check.start(xmllint, {"--noout", file});
    QVERIFY(check.waitForFinished());
    QVERIFY2(check.exitCode() == 0, check.readAll());

    Rows again;
    load(contentOf(file), &again);
    QCOMPARE(again.names().size(), 1);
    const StructSettings *record = again.row(0)->getProfileSettings()->structSettings;
    QTEST(record->getStructSettingByName("title")->getValue(), "kept");
}

void WriteToXMLTest::whatIsWrittenLoadsBackEqual()
{
    QRandomGenerator random(20);
    for (int round = 0; round < 30; ++round) {
        Rows rows;
        makeRandom(&rows, 17, &random);
        Rows again;
        load(rows.written(), &again);
        QVERIFY2(user.seen().isEmpty(), rows.written());
        const QStringList before = texts(rows);
        const QStringList after = texts(again);
        for (int i = 0; i < before.size(); ++i)
            QCOMPARE(after.value(i), before.at(i));
        QCOMPARE(again.written(), rows.written());
    }
}

void WriteToXMLTest::settingsLoadBackEqual()
{
    QRandomGenerator random(5);
    for (int round = 0; round < 50; ++round) {
        Rows rows;
        StructSettings *settings = rows.generator.getUnitSettingsStruct();
        settings->buildFormulaTrees();
        for (StructSetting *setting : settings->getStructSettings())
            setAnyValue(setting, &random);
        Rows again;
        load(rows.written(settings), &again);
        QCOMPARE(shownTexts(again.generator.getUnitSettingsStruct()), shownTexts(settings));
    }
}

void WriteToXMLTest::localeDoesNotMatter()
{
    Rows rows;
    Rows::set(rows.add(), "title", QString::fromUtf8("20\xC2\xB0\xE2\x82\xAC"));
    Rows::set(rows.add(), "start_I", 0.25);
    const QByteArray expected = rows.written();
    QVERIFY(expected.contains("<title>20\xC2\xB0\xE2\x82\xAC</title>"));
    QVERIFY(expected.contains("<start_current>0.25</start_current>"));
    QTextCodec *codec = QTextCodec::codecForLocale();
    for (const char *other : {"ISO-8859-1", "UTF-8", "windows-1251", "Shift_JIS"}) {
        QTextCodec::setCodecForLocale(QTextCodec::codecForName(other));
        QLocale::setDefault(QLocale("de_DE"));
        QCOMPARE(rows.written(), expected);
        Rows again;
        load(expected, &again);
        QCOMPARE(texts(again), texts(rows));
    }
    QTextCodec::setCodecForLocale(codec);
    QLocale::setDefault(QLocale::c());
}

void WriteToXMLTest::replacesAFile()
{
    QTemporaryDir folder;
    const QString file = folder.filePath("profiles.xml");
    writeFile(file, QByteArray(100000, 'x'));
    QVERIFY(QFile::setPermissions(file, QFile::ReadOwner | QFile::WriteOwner));
    Rows rows;
    rows.add();
    QVERIFY(WriteToXML().write(file, rows.names(), nullptr));
    QCOMPARE(contentOf(file), rows.written());
    // Nothing else has changed.
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden),
             QStringList("profiles.xml"));
    struct stat info = {};
    QCOMPARE(stat(QFile::encodeName(file).constData(), &info), 0);
    QCOMPARE(info.st_mode & 0777, 0600U);
}

void WriteToXMLTest::followsALink()
{
    QTemporaryDir folder;
    const QString file = folder.filePath("profiles.xml");
    const QString link = folder.filePath("link.xml");
    writeFile(file, "old");
    QVERIFY(QFile::link(file, link));
    QVERIFY(WriteToXML().write(link, {}, nullptr));
    QVERIFY(QFileInfo(link).isSymLink());
    QCOMPARE(contentOf(file), Rows().written());
}

void WriteToXMLTest::fullDiskLeavesTheOldFile_data()
{
    QTest::addColumn<int>("count");
    // Less than a buffer is noticed only when it is flushed.
    QTest::newRow("one profile") << 1;
    QTest::newRow("many profiles") << 400;
}

void WriteToXMLTest::fullDiskLeavesTheOldFile()
{
    QFETCH(int, count);
    QTemporaryDir folder;
    const QString file = folder.filePath("profiles.xml");
    writeFile(file, "old");
    Rows rows;
    while (rows.names().size() < count)
        rows.add();
    const int size = rows.written().size();
    for (int room : {0, 1, 100, size / 2, size - 1}) {
        bool written = true;
        {
            const FileSizeLimit limit(static_cast<rlim_t>(room));
            written = WriteToXML().write(file, rows.names(), nullptr);
        }
        QVERIFY2(!written, qPrintable(QString::number(room)));
        QCOMPARE(contentOf(file), QByteArray("old"));
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden),
                 QStringList("profiles.xml"));
    }
    const FileSizeLimit limit(static_cast<rlim_t>(size));
    QVERIFY(WriteToXML().write(file, rows.names(), nullptr));
    QCOMPARE(contentOf(file).size(), size);
}

void WriteToXMLTest::fullFileSystemLeavesTheOldFile()
{
    enum Outcome { NoFileSystem, Written, Refused, Harmed };
    QTemporaryDir folder;
    const QString file = folder.filePath("profiles.xml");
    Rows rows;
    while (rows.names().size() < 400)
        rows.add();
    const int outcome = inChild([&] {
        // Seen by this process only.
        const QByteArray place = QFile::encodeName(folder.path());
        if (unshare(CLONE_NEWNS) != 0 ||
            mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("none", place.constData(), "tmpfs", 0, "size=64k") != 0)
            return NoFileSystem;
        writeFile(file, "old");
        if (WriteToXML().write(file, rows.names(), nullptr))
            return Written;
        return contentOf(file) == "old" ? Refused : Harmed;
    });
    // Who may not mount has the test before this one: there a limit on files stands for the disk.
    if (outcome != NoFileSystem)
        QCOMPARE(outcome, int(Refused));
}

void WriteToXMLTest::readOnlyFolderLeavesTheOldFile()
{
    QTemporaryDir folder;
    const QString file = folder.filePath("profiles.xml");
    writeFile(file, "old");
    // The file itself may be written by everybody.
    QVERIFY(QFile::setPermissions(file, QFile::Permissions(0x6666)));
    QVERIFY(QFile::setPermissions(folder.path(), QFile::Permissions(0x5555)));
    const int written = inChild([&] {
        if (!becomeOrdinaryUser())
            return 2;
        return WriteToXML().write(file, {}, nullptr) ? 1 : 0;
    });
    QVERIFY(QFile::setPermissions(folder.path(), QFile::Permissions(0x7777)));
    QCOMPARE(written, 0);
    QCOMPARE(contentOf(file), QByteArray("old"));
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList("profiles.xml"));
}

void WriteToXMLTest::killLeavesTheOldFile()
{
    QTemporaryDir folder;
    const QString file = folder.filePath("profiles.xml");
    writeFile(file, "old");
    Rows rows;
    while (rows.names().size() < 200)
        rows.add();
    const pid_t child = fork();
    QVERIFY(child >= 0);
    if (child == 0) {
        // The system ends the process as soon as it has written so much.
        const rlimit core = {0, 0};
        setrlimit(RLIMIT_CORE, &core);
        const rlimit limit = {20000, 20000};
        setrlimit(RLIMIT_FSIZE, &limit);
        std::signal(SIGXFSZ, SIG_DFL);
        WriteToXML().write(file, rows.names(), nullptr);
        _exit(0);
    }
    int status = 0;
    QCOMPARE(waitpid(child, &status, 0), child);
    QVERIFY(WIFSIGNALED(status));
    QCOMPARE(WTERMSIG(status), SIGXFSZ);
    QCOMPARE(contentOf(file), QByteArray("old"));
}

void WriteToXMLTest::placesThatTakeNoFile()
{
    QTemporaryDir folder;
    const QString closed = folder.filePath("closed");
    QVERIFY(QDir().mkdir(closed));
    const QString inClosed = closed + "/profiles.xml";
    writeFile(inClosed, "old");
    QVERIFY(QFile::setPermissions(closed, QFile::ReadOwner | QFile::ExeOwner));
    const QString pipe = folder.filePath("pipe.xml");
    QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);

    QStringList places = {folder.path(),        folder.filePath("missing/profiles.xml"),
                          "/proc/profiles.xml", pipe,
                          "/dev/full",          QString()};
    if (geteuid() != 0)
        places += inClosed; // root may write there
    for (const QString &place : qAsConst(places))
        QVERIFY2(!WriteToXML().write(place, {}, nullptr), qPrintable(place));

    struct stat info = {};
    QCOMPARE(stat("/dev/full", &info), 0);
    QVERIFY(S_ISCHR(info.st_mode));
    QCOMPARE(stat(QFile::encodeName(pipe).constData(), &info), 0);
    QVERIFY(S_ISFIFO(info.st_mode));
    QCOMPARE(contentOf(inClosed), QByteArray("old"));
    QVERIFY(QFile::setPermissions(closed, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
}

void WriteToXMLTest::deviceThatTakesNotEverything()
{
    QFile full("/dev/full");
    QVERIFY(full.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    QVERIFY(!WriteToXML().write(&full, {}, nullptr));
}

void WriteToXMLTest::tellsProgress()
{
    Rows rows;
    for (int i = 0; i < 3; ++i)
        rows.add();
    QBuffer buffer;
    QVERIFY(buffer.open(QIODevice::WriteOnly));
    WriteToXML writer;
    QSignalSpy progress(&writer, &WriteToXML::progressed);
    QVERIFY(writer.write(&buffer, rows.names(), nullptr));
    QCOMPARE(progress, QList<QVariantList>({{1, 3}, {2, 3}, {3, 3}}));
}

QTEST_MAIN(WriteToXMLTest)
#include "tst_writetoxml.moc"
