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
    void holdsTheProfile_data();
    void holdsTheProfile();
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

void SavedProfilesTest::holdsTheProfile_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("id");
    QTest::addColumn<QStringList>("values");
    const QString set24 = QStringLiteral("24v_default_profiles.xml");
    const QString set48 = QStringLiteral("48v_default_profiles.xml");
    const QString set72 = QStringLiteral("72v_default_profiles.xml");
    QTest::newRow("24 V, first") << set24 << 0
                                 << words("Lead|12V SLA|Stnd Charge|14.4|8|13.5|0.4|4");
    QTest::newRow("24 V, first Lithium")
        << set24 << 4 << words("Lithium|11V Li (3s)|Fast Charge|12.6|15|6.3|0.4|8.8|0.4");
    QTest::newRow("24 V, last") << set24 << 11
                                << words(
                                       "Lithium|24V Li (7s)|85% Charge|28.4|15|14.2|0.4|19.9|0.4");
    QTest::newRow("48 V, first") << set48 << 0
                                 << words("Lithium|36V Li(10s)|Fast Charge|42|8|21|0.2|29.4|0.15");
    QTest::newRow("48 V, LiFe") << set48 << 11
                                << words("Lithium|48V LiFe|(16s) Fast|57.6|7|28.8|0.2|40.3|0.15");
    QTest::newRow("48 V, last") << set48 << 15 << words("Lead|48V SLA|Stnd Charge|57.6|4|54|0.5|4");
    QTest::newRow("72 V, first") << set72 << 0
                                 << words("Lithium|36V Li(10s)|Full Charge|42|3|21|0.2|29.4|0.15");
    QTest::newRow("72 V, highest voltage")
        << set72 << 12 << words("Lithium|88V Li(24s)|Full Charge|100.8|5|50.4|0.2|70.6|0.15");
    QTest::newRow("72 V, last") << set72 << 16
                                << words("Lithium|72V LiFe|(24s) Full|86.4|5|43.2|0.2|60.5|0.15");
}

void SavedProfilesTest::holdsTheProfile()
{
    QFETCH(QString, name);
    QFETCH(int, id);
    QTEST(read(load(name)).value(id).values, "values");
}

QTEST_GUILESS_MAIN(SavedProfilesTest)
#include "tst_savedprofiles.moc"
