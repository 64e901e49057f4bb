#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"

#include <QFile>
#include <QTest>
#include <QXmlStreamReader>

namespace
{
struct Profile {
    QXmlStreamAttributes attributes;
    QStringList tags;
    QStringList values;
};

/// The profiles of a delivered set; empty where the file is no well-formed list of them.
QList<Profile> read(const QByteArray &text)
{
    QList<Profile> profiles;
    QXmlStreamReader reader(text);
    if (!reader.readNextStartElement() || reader.name() != QLatin1String("VelantorProfiles"))
        return {};
    while (reader.readNextStartElement()) {
        if (reader.name() != QLatin1String("profile"))
            return {};
        Profile profile;
        profile.attributes = reader.attributes();
        while (reader.readNextStartElement()) {
            profile.tags.append(reader.name().toString());
            profile.values.append(reader.readElementText());
        }
        profiles.append(profile);
    }
    return reader.hasError() ? QList<Profile>() : profiles;
}

QByteArray load(const QString &name)
{
    QFile file(QStringLiteral(VELANTOR_SOURCE_DIR "/resources/saved_profiles/") + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The lines of the list of profiles that belong to the set of this file.
QStringList expectedProfiles(const QString &name)
{
    QFile file(QStringLiteral(VELANTOR_SOURCE_DIR "/tests/unit/bundles/saved_profiles.txt"));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("no list of profiles");
    const QString set = name.section(QLatin1Char('_'), 0, 0);
    QStringList lines;
    for (const QString &line : QString::fromLatin1(file.readAll()).split(QLatin1Char('\n'))) {
        if (line.startsWith(set + QLatin1Char('|')))
            lines.append(line);
    }
    return lines;
}

QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char('|'));
}
} // namespace

/// The profile sets that come with the application.
class SavedProfilesTest : public QObject
{
    Q_OBJECT

private slots:
    void holdsItsProfiles_data();
    void holdsItsProfiles();
    void isLaidOutAsTheWriterWould_data() { holdsItsProfiles_data(); }
    void isLaidOutAsTheWriterWould();
    void holdsTheProfiles_data() { holdsItsProfiles_data(); }
    void holdsTheProfiles();
    void fitsItsHardware_data();
    void fitsItsHardware();
};

void SavedProfilesTest::holdsItsProfiles_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("lead");
    QTest::newRow("24 V") << "24v_default_profiles.xml" << 12 << 4;
    QTest::newRow("48 V") << "48v_default_profiles.xml" << 16 << 3;
    QTest::newRow("72 V") << "72v_default_profiles.xml" << 17 << 0;
}

void SavedProfilesTest::holdsItsProfiles()
{
    QFETCH(QString, name);
    const QStringList common = words("name|title|subtitle|full_voltage|bulk_current");
    const QStringList lead =
        common + words("float_voltage|charge_complete_below_current|max_time_at_full_voltage");
    const QStringList lithium = common + words("min_starting_voltage|start_current|"
                                               "bulk_start_voltage|charge_complete_below_current");
    const QList<Profile> profiles = read(load(name));
    QTEST(profiles.size(), "count");
    int leads = 0;
    for (int i = 0; i < profiles.size(); ++i) {
        const Profile &profile = profiles.at(i);
        QCOMPARE(profile.attributes.value(QLatin1String("id")).toString(), QString::number(i));
        for (const char *flag : {"active", "default", "modifiable"})
            QCOMPARE(profile.attributes.value(QLatin1String(flag)), QLatin1String("false"));
        if (profile.values.first() == QLatin1String("Lead"))
            ++leads;
        else
            QCOMPARE(profile.values.first(), QStringLiteral("Lithium"));
        QCOMPARE(profile.tags, profile.values.first() == QLatin1String("Lead") ? lead : lithium);
        // What the list and the charger's display can show of a title and its second line.
        QVERIFY2(profile.values.at(1).size() <= 11, qPrintable(profile.values.at(1)));
        QVERIFY2(profile.values.at(2).size() <= 13, qPrintable(profile.values.at(2)));
        for (const QString &value : profile.values.mid(3))
            QCOMPARE(QString::number(value.toDouble()), value);
    }
    QTEST(leads, "lead");
}

void SavedProfilesTest::isLaidOutAsTheWriterWould()
{
    QFETCH(QString, name);
    const QByteArray text = load(name);
    QByteArray expected = "<VelantorProfiles>\n";
    for (const Profile &profile : read(text)) {
        expected += "\t<profile id=\"" + profile.attributes.value(QLatin1String("id")).toUtf8() +
                    "\" active=\"false\" default=\"false\" modifiable=\"false\">\n";
        for (int i = 0; i < profile.tags.size(); ++i) {
            const QByteArray tag = profile.tags.at(i).toUtf8();
            expected += "\t\t<" + tag + ">" + profile.values.at(i).toUtf8() + "</" + tag + ">\n";
            if (i == 0)
                expected += "\t\t<!-- Chemistry Specific Properties: -->\n";
        }
        expected += "\t</profile>\n";
    }
    expected += "</VelantorProfiles>\n";
    QCOMPARE(text, expected);
}

void SavedProfilesTest::holdsTheProfiles()
{
    QFETCH(QString, name);
    QStringList found;
    const QList<Profile> profiles = read(load(name));
    for (int i = 0; i < profiles.size(); ++i)
        found.append((QStringList{name.section(QLatin1Char('_'), 0, 0), QString::number(i)} +
                      profiles.at(i).values)
                         .join(QLatin1Char('|')));
    QCOMPARE(found, expectedProfiles(name));
}

void SavedProfilesTest::fitsItsHardware_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("schema");
    QTest::newRow("24 V") << "24v_default_profiles.xml"
                          << "24V_rev7.ss";
    QTest::newRow("48 V") << "48v_default_profiles.xml"
                          << "48V_FSv2.ss";
    QTest::newRow("48 V, first generation") << "48v_default_profiles.xml"
                                            << "48V_FSv1.ss";
    QTest::newRow("72 V") << "72v_default_profiles.xml"
                          << "72V_rev7.ss";
}

void SavedProfilesTest::fitsItsHardware()
{
    QFETCH(QString, name);
    QFETCH(QString, schema);
    HParser::Generator generator;
    generator.parseSSFile(QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/") + schema);
    for (const Profile &profile : read(load(name))) {
        const QScopedPointer<HParser::StructSettings> record(
            generator.copyFlashstackElementSettings(profile.values.first()));
        QVERIFY(record);
        record->buildFormulaTrees();
        QStringList taken{profile.values.first()};
        // Bounds before what they bound, as an import sets them.
        for (HParser::StructSetting *setting : record->getDependancyOrderStructSettings()) {
            const int at = profile.tags.indexOf(setting->xmlName);
            if (at == -1)
                continue;
            setting->advancedEnabled = true;
            const QString value = profile.values.at(at);
            if (setting->settingKind == HParser::SettingKind::String)
                setting->setValue(value);
            else
                QVERIFY2(setting->setValue(value.toDouble()), qPrintable(setting->name));
        }
        for (const HParser::StructSetting *setting : record->getStructSettings())
            taken.append(setting->getValue());
        QCOMPARE(taken, profile.values); // in the order of the display, too
    }
}

QTEST_GUILESS_MAIN(SavedProfilesTest)
#include "tst_savedprofiles.moc"
