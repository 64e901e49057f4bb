#include "ImportProfiles/parsedfselement.h"
#include "support/inchild.h"
#include "xml/readfromxml.h"

#include <QBuffer>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTextCodec>
#include <QtTest>

#include <memory>

#include <sys/resource.h>
#include <sys/stat.h>

using ImportProfiles::ParsedFSElement;
using XMLGeneratorParser::ReadFromXML;

namespace
{
QByteArray inFile(const QByteArray &content)
{
    return "<VelantorProfiles>" + content + "</VelantorProfiles>";
}

QByteArray profile(int id, const QByteArray &title, const QByteArray &more = QByteArray())
{
    return "<profile id=\"" + QByteArray::number(id) + "\"><name>Lead</name><title>" + title +
           "</title>" + more + "</profile>";
}

/// A reader that has read this text.
class Read : public ReadFromXML
{
public:
    explicit Read(QByteArray text)
    {
        QBuffer buffer(&text);
        buffer.open(QIODevice::ReadOnly);
        readProfiles(&buffer);
    }

    QMap<QString, QString> properties(int profile) const
    {
        return getProfiles().at(profile)->getProperties();
    }
    QString value(int profile, const char *key) const
    {
        return properties(profile).value(QLatin1String(key), QStringLiteral("(none)"));
    }
    QStringList titles() const
    {
        QStringList result;
        for (const ParsedFSElement *one : getProfiles())
            result.append(one->getProperties().value(QStringLiteral("title")));
        return result;
    }
};

/// What a byte of a file may take: all of it is text of two bytes a character, and some of it
/// twice.
#ifdef __SANITIZE_ADDRESS__
constexpr int memoryPerByte = 40; // what is freed stays taken for a while
#else
constexpr int memoryPerByte = 12;
#endif

/// The most memory that the process has taken so far, in kibibytes.
long peakMemory()
{
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

/// A text that repeats itself up to some size, without taking memory for it.
class LongText : public QIODevice
{
public:
    LongText(const QByteArray &start, const QByteArray &repeated, qint64 size)
        : start(start), repeated(repeated), textSize(size)
    {
        open(QIODevice::ReadOnly);
    }
    bool isSequential() const override { return true; }
    bool atEnd() const override { return given == textSize && QIODevice::bytesAvailable() == 0; }
    qint64 bytesAvailable() const override
    {
        return textSize - given + QIODevice::bytesAvailable();
    }

protected:
    qint64 readData(char *data, qint64 maxSize) override
    {
        const qint64 size = qMin(maxSize, textSize - given);
        for (qint64 i = 0; i < size; ++i, ++given)
            data[i] = given < start.size()
                          ? start.at(static_cast<int>(given))
                          : repeated.at(static_cast<int>((given - start.size()) % repeated.size()));
        return size;
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    QByteArray start;
    QByteArray repeated;
    qint64 textSize;
    qint64 given = 0;
};
} // namespace

class ReadFromXMLTest : public QObject
{
    Q_OBJECT

private slots:
    void readsAProfile();
    void readsADeliveredSet_data();
    void readsADeliveredSet();
    void chemistryGivesTheType_data();
    void chemistryGivesTheType();
    void takesNoPlaceFromTheFile();
    void missingAttributesAreEmpty();
    void keepsUnknownElements();
    void laterElementsReplaceEarlierOnes();
    void valueIsWhatFollowsTheTag_data();
    void valueIsWhatFollowsTheTag();
    void strangeIDsAreZero();
    void anyElementIsAProfile();
    void unescapesText_data();
    void unescapesText();
    void sortsByID_data();
    void sortsByID();
    void sortsManyAsFast();
    void readsUnitSettings();
    void fewUnitSettingsCountAsNone_data();
    void fewUnitSettingsCountAsNone();
    void stubLeavesEarlierSettings();
    void otherFilesHoldNothing_data();
    void otherFilesHoldNothing();
    void everyPrefixGivesTheProfilesInIt();
    void damageEndsTheFile_data();
    void damageEndsTheFile();
    void encodings_data();
    void encodings();
    void opensPlainFilesOnly();
    void unreadableFile();
    void entityBombEnds();
    void entitiesOfTheFileAreKnown();
    void deepNestingEnds();
    void memoryGrowsWithTheFileOnly_data();
    void memoryGrowsWithTheFileOnly();
    void longTagsEndTheFile_data();
    void longTagsEndTheFile();
    void tellsProgress();
    void tellsProgressWithinATitle();
    void secondFileTakesThePlaceOfTheFirst();
    void parsersWorkOnTheirOwn();
};

void ReadFromXMLTest::readsAProfile()
{
    const Read reader("<VelantorProfiles>\n"
                      "\t<profile id=\"0\" active=\"true\" default=\"true\" modifiable=\"false\">\n"
                      "\t\t<name>Lithium</name>\n"
                      "\t\t<!-- Chemistry Specific Properties: -->\n"
                      "\t\t<title>36V Li(10s)</title>\n"
                      "\t\t<subtitle>Fast Charge</subtitle>\n"
                      "\t\t<full_voltage>42</full_voltage>\n"
                      "\t\t<start_current>0.2</start_current>\n"
                      "\t</profile>\n"
                      "</VelantorProfiles>\n");
    QCOMPARE(reader.getProfiles().size(), 1);
    QCOMPARE(reader.getProfiles().first()->getID(), 0);
    QVERIFY(!reader.getUnitSettings());
    const QList<QPair<const char *, const char *>> expected = {
        {"name", "Lithium"},         {"type", "8"},           {"active", "true"},
        {"defaultprofile", "true"},  {"modifiable", "false"}, {"title", "36V Li(10s)"},
        {"subtitle", "Fast Charge"}, {"full_voltage", "42"},  {"start_current", "0.2"},
        {"profile_id", "255"},
    };
    for (const auto &[key, value] : expected)
        QCOMPARE(reader.value(0, key), QString::fromLatin1(value));
    // The schema calls the mark "default".
    QCOMPARE(reader.value(0, "default"), QStringLiteral("true"));
}

void ReadFromXMLTest::readsADeliveredSet_data()
{
    QTest::addColumn<int>("count");
    QTest::newRow("24v") << 12;
    QTest::newRow("48v") << 16;
    QTest::newRow("72v") << 17;
}

void ReadFromXMLTest::readsADeliveredSet()
{
    ReadFromXML reader;
    QVERIFY(reader.readProfiles(QStringLiteral(VELANTOR_SOURCE_DIR "/resources/saved_profiles/") +
                                QLatin1String(QTest::currentDataTag()) +
                                QStringLiteral("_default_profiles.xml")));
    const QList<ParsedFSElement *> profiles = reader.getProfiles();
    QTEST(profiles.size(), "count");
    for (int i = 0; i < profiles.size(); ++i) {
        QCOMPARE(profiles.at(i)->getID(), i);
        for (const char *flag : {"active", "defaultprofile", "modifiable"})
            QCOMPARE(profiles.at(i)->getProperties().value(QLatin1String(flag)), "false");
    }
}

void ReadFromXMLTest::chemistryGivesTheType_data()
{
    QTest::addColumn<QByteArray>("element");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("type");
    QTest::newRow("lithium") << QByteArray("<name>Lithium</name>") << "Lithium"
                             << "8";
    QTest::newRow("nickel") << QByteArray("<name>Nickel</name>") << "Nickel"
                            << "9";
    QTest::newRow("lead") << QByteArray("<name>Lead</name>") << "Lead"
                          << "10";
    QTest::newRow("an earlier version's lead")
        << QByteArray("<chemistry>Lead</chemistry>") << "Lead"
        << "10";
    QTest::newRow("a chemistry that there is not")
        << QByteArray("<name>Lead-acid</name>") << "Lead-acid"
        << "(none)";
    QTest::newRow("another case") << QByteArray("<name>lead</name>") << "lead"
                                  << "(none)";
    QTest::newRow("blanks around it") << QByteArray("<name> Lead </name>") << " Lead "
                                      << "(none)";
    QTest::newRow("both, the later one counts")
        << QByteArray("<name>Lead</name><chemistry>Nickel</chemistry>") << "Nickel"
        << "9";
    QTest::newRow("none") << QByteArray() << "(none)"
                          << "(none)";
}

void ReadFromXMLTest::chemistryGivesTheType()
{
    QFETCH(QByteArray, element);
    const Read reader(inFile("<profile id=\"0\">" + element + "</profile>"));
    QCOMPARE(reader.getProfiles().size(), 1);
    QTEST(reader.value(0, "name"), "name");
    QTEST(reader.value(0, "type"), "type");
    QCOMPARE(reader.value(0, "chemistry"), QStringLiteral("(none)"));
}

void ReadFromXMLTest::takesNoPlaceFromTheFile()
{
    const Read reader(inFile("<profile id=\"0\"><profile_id>7</profile_id></profile>"));
    QCOMPARE(reader.value(0, "profile_id"), QStringLiteral("255"));
}

void ReadFromXMLTest::missingAttributesAreEmpty()
{
    const Read reader(inFile("<profile><title>one</title></profile>"
                             "<profile><title>two</title></profile>"));
    QCOMPARE(reader.titles(), QStringList("one"));
    QCOMPARE(reader.getProfiles().first()->getID(), 0);
    for (const char *flag : {"active", "defaultprofile", "modifiable"})
        QCOMPARE(reader.properties(0).value(QLatin1String(flag)), QString());
}

void ReadFromXMLTest::keepsUnknownElements()
{
    const Read reader(inFile("<profile id=\"0\"><colour>red</colour><x/></profile>"));
    QCOMPARE(reader.value(0, "colour"), QStringLiteral("red"));
    QCOMPARE(reader.value(0, "x"), QString());
}

void ReadFromXMLTest::laterElementsReplaceEarlierOnes()
{
    const Read reader(inFile("<profile id=\"0\"><title>one</title><title>two</title></profile>"));
    QCOMPARE(reader.value(0, "title"), QStringLiteral("two"));
}

void ReadFromXMLTest::valueIsWhatFollowsTheTag_data()
{
    QTest::addColumn<QByteArray>("inside");
    QTest::addColumn<QString>("value");
    QTest::newRow("text") << QByteArray("A") << "A";
    QTest::newRow("text before an element") << QByteArray("A<b>1</b>") << "A";
    QTest::newRow("an element") << QByteArray("<b>1</b>A") << "";
    QTest::newRow("an element behind white space") << QByteArray("\n<b>1</b>") << "\n";
    QTest::newRow("a comment") << QByteArray("<!-- x -->A") << " x ";
    QTest::newRow("text before a comment") << QByteArray("A<!-- x -->B") << "A";
}

void ReadFromXMLTest::valueIsWhatFollowsTheTag()
{
    QFETCH(QByteArray, inside);
    const Read reader(inFile(profile(0, inside)));
    QCOMPARE(reader.getProfiles().size(), 1);
    QTEST(reader.value(0, "title"), "value");
}

void ReadFromXMLTest::strangeIDsAreZero()
{
    for (const char *id : {"", "one", "0x1", "1.0", "99999999999"}) {
        const Read reader(inFile("<profile id=\"" + QByteArray(id) +
                                 "\"><title>one</title></profile>" + profile(1, "two")));
        QCOMPARE(reader.titles(), QStringList({"one", "two"}));
    }
}

void ReadFromXMLTest::anyElementIsAProfile()
{
    // Whatever it is called, it goes on to the end tag of a profile.
    const Read reader(inFile("<foo id=\"0\"><title>one</title></foo>"
                             "<profile id=\"1\"> <subtitle>two</subtitle></profile>"));
    QCOMPARE(reader.titles(), QStringList("one"));
    QCOMPARE(reader.getProfiles().first()->getID(), 0);
    QCOMPARE(reader.value(0, "subtitle"), QStringLiteral("two"));
    QVERIFY(Read(inFile("<foo id=\"0\"><title>one</title></foo>")).titles().isEmpty());
}

void ReadFromXMLTest::unescapesText_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("title");
    QTest::newRow("ampersand") << QByteArray("A&amp;B") << "A&B";
    QTest::newRow("all five") << QByteArray("&quot;&amp;&apos;&lt;&gt;")
                              << QString::fromLatin1("\"&'<>");
    QTest::newRow("numbers") << QByteArray("&#65;&#x42;&#13;") << QString::fromLatin1("AB\r");
    QTest::newRow("not twice") << QByteArray("&amp;lt;") << "&lt;";
    QTest::newRow("blanks stay") << QByteArray(" a  b ") << " a  b ";
    QTest::newRow("only blanks") << QByteArray("  ") << "  ";
    QTest::newRow("nothing") << QByteArray() << "";
    QTest::newRow("line end") << QByteArray("a\r\nb") << "a\nb";
    QTest::newRow("beyond ASCII") << QByteArray("\xC2\xB0\xE2\x82\xAC\xF0\x9F\x98\x80")
                                  << QString::fromUtf8("\xC2\xB0\xE2\x82\xAC\xF0\x9F\x98\x80");
    QTest::newRow("unescaped section") << QByteArray("<![CDATA[A&B]]>") << "A&B";
}

void ReadFromXMLTest::unescapesText()
{
    QFETCH(QByteArray, text);
    const Read reader(inFile(profile(0, text)));
    QCOMPARE(reader.getProfiles().size(), 1);
    QTEST(reader.value(0, "title"), "title");
}

void ReadFromXMLTest::sortsByID_data()
{
    QTest::addColumn<QList<int>>("ids");
    QTest::addColumn<QList<int>>("places");
    const auto row = [](const char *name, const QList<int> &ids, const QList<int> &places) {
        QTest::newRow(name) << ids << places;
    };
    row("none", {}, {});
    row("in order", {0, 1, 2}, {0, 1, 2});
    row("out of order", {2, 0, 1}, {1, 2, 0});
    row("a gap", {0, 1, 5}, {0, 1});
    row("the same twice", {0, 1, 1}, {0, 1});
    row("negative", {-1, 0}, {1});
    row("from 1", {1, 2, 3}, {0, 1});
    row("far out", {0, 2147483647, -2147483647 - 1}, {0});
}

void ReadFromXMLTest::sortsByID()
{
    QFETCH(QList<int>, ids);
    QFETCH(QList<int>, places);
    QByteArray text;
    QStringList expected;
    for (int i = 0; i < ids.size(); ++i)
        text += profile(ids.at(i), QByteArray::number(i));
    for (int place : places)
        expected.append(QString::number(place));
    QCOMPARE(Read(inFile(text)).titles(), expected);
}

void ReadFromXMLTest::sortsManyAsFast()
{
    constexpr int many = 200000;
    QObject owner;
    QList<ParsedFSElement *> profiles;
    for (int i = 0; i < many; ++i) {
        auto *element = new ParsedFSElement;
        element->setID(many - 1 - i);
        profiles.append(element);
    }
    ReadFromXML reader;
    reader.setProfiles(profiles);
    reader.sortProfilesByID(); // with a search for each it would not end within the time limit
    QCOMPARE(reader.getProfiles().size(), many);
    QCOMPARE(reader.getProfiles().first(), profiles.last());
    qDeleteAll(profiles);
}

void ReadFromXMLTest::readsUnitSettings()
{
    for (const char *gap : {"\n\t\t", ""}) {
        QByteArray block = "<GlobalSettings>@<a>1</a>@<b>two</b>@<c></c>@<d>4</d>@<e>5</e>@"
                           "<a>6</a></GlobalSettings>";
        block.replace("@", gap);
        const Read reader(inFile(block + profile(0, "one")));
        QVERIFY(reader.getUnitSettings());
        const QMap<QString, QString> expected = {
            {"a", "6"}, {"b", "two"}, {"c", ""}, {"d", "4"}, {"e", "5"}};
        QCOMPARE(reader.getUnitSettings()->getProperties(), expected);
        QCOMPARE(reader.titles(), QStringList("one"));
    }
}

void ReadFromXMLTest::fewUnitSettingsCountAsNone_data()
{
    QTest::addColumn<QByteArray>("block");
    const QByteArray four = "<a>1</a><b>2</b><c>3</c><d>4</d>";
    QTest::newRow("four") << QByteArray("<GlobalSettings>" + four + "</GlobalSettings>");
    QTest::newRow("four, one of them twice")
        << QByteArray("<GlobalSettings> " + four + "<d>5</d></GlobalSettings>");
    QTest::newRow("none") << QByteArray("<GlobalSettings></GlobalSettings>");
    QTest::newRow("a closed tag") << QByteArray("<GlobalSettings/>");
    QTest::newRow("white space") << QByteArray("<GlobalSettings>\n</GlobalSettings>");
}

void ReadFromXMLTest::fewUnitSettingsCountAsNone()
{
    QFETCH(QByteArray, block);
    const Read reader(inFile(block + profile(0, "one")));
    QVERIFY(!reader.getUnitSettings());
    QCOMPARE(reader.titles(), QStringList("one"));
}

void ReadFromXMLTest::stubLeavesEarlierSettings()
{
    const QByteArray whole = "<GlobalSettings><a>1</a><b>2</b><c>3</c><d>4</d><e>5</e>"
                             "</GlobalSettings>";
    const QByteArray stub = "<GlobalSettings><a>9</a></GlobalSettings>";
    for (const QByteArray &blocks : {whole + stub, stub + whole}) {
        const Read reader(inFile(blocks));
        QVERIFY(reader.getUnitSettings());
        QCOMPARE(reader.getUnitSettings()->getProperties().value("a"), QStringLiteral("1"));
    }
    // A whole one takes the place of the one before it.
    const Read reader(inFile(whole + QByteArray(whole).replace("<a>1<", "<a>9<")));
    QCOMPARE(reader.getUnitSettings()->getProperties().value("a"), QStringLiteral("9"));
}

void ReadFromXMLTest::otherFilesHoldNothing_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("another root") << QByteArray("<Profiles><profile id=\"0\"/></Profiles>");
    QTest::newRow("no XML") << QByteArray(":10000000FFFFFF00\n:00000001FF\n");
    QTest::newRow("bytes") << QByteArray("\x7F\x45\x4C\x46\0\0\xFF", 7);
    QTest::newRow("zeros") << QByteArray(100, '\0');
    QTest::newRow("root only") << QByteArray("<VelantorProfiles>\n</VelantorProfiles>\n");
    QTest::newRow("root, closed") << QByteArray("<VelantorProfiles/>");
}

void ReadFromXMLTest::otherFilesHoldNothing()
{
    QFETCH(QByteArray, text);
    const Read reader(text);
    QVERIFY(reader.getProfiles().isEmpty());
    QVERIFY(!reader.getUnitSettings());
}

void ReadFromXMLTest::everyPrefixGivesTheProfilesInIt()
{
    const QByteArray settings = "<GlobalSettings><a>1</a><b>2</b><c>3</c><d>4</d><e>50</e>"
                                "</GlobalSettings>";
    const QByteArray text =
        inFile(settings + profile(0, "one") + profile(1, "t&amp;\xC2\xB0") + profile(2, "three"));
    const QList<int> ends = {text.indexOf("<profile id=\"1\""), text.indexOf("<profile id=\"2\""),
                             text.indexOf("</VelantorProfiles>")};
    const int settingsEnd = text.indexOf("<profile id=\"0\"");
    for (int size = 0; size <= text.size(); ++size) {
        const Read reader(text.left(size));
        int whole = 0;
        for (int end : ends)
            whole += size >= end ? 1 : 0;
        QCOMPARE(reader.titles(),
                 QStringList({"one", QString::fromUtf8("t&\xC2\xB0"), "three"}).mid(0, whole));
        QCOMPARE(reader.getUnitSettings() != nullptr, size >= settingsEnd);
    }
}

void ReadFromXMLTest::damageEndsTheFile_data()
{
    QTest::addColumn<QByteArray>("damage");
    QTest::newRow("tags that cross") << QByteArray("<profile id=\"1\"><a><b></a></b></profile>");
    QTest::newRow("a bare ampersand") << QByteArray(profile(1, "A & B"));
    QTest::newRow("an unknown entity") << QByteArray(profile(1, "&deg;"));
    QTest::newRow("a bare bracket") << QByteArray(profile(1, "a < b"));
    QTest::newRow("an attribute twice") << QByteArray("<profile id=\"1\" id=\"2\"></profile>");
    QTest::newRow("a tag that cannot be one") << QByteArray("<profile id=\"1\"><9/></profile>");
}

void ReadFromXMLTest::damageEndsTheFile()
{
    QFETCH(QByteArray, damage);
    QCOMPARE(Read(inFile(profile(0, "one") + damage + profile(2, "three"))).titles(),
             QStringList("one"));
}

void ReadFromXMLTest::encodings_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("title");
    const QString title = QString::fromUtf8("20\xC2\xB0 \xC3\xA4");
    const auto encoded = [&title](const char *codec, const QString &head = QString()) {
        const QByteArray plain = inFile(profile(0, "@"));
        return QTextCodec::codecForName(codec)->fromUnicode(
            head + QString::fromLatin1(plain).replace(QLatin1Char('@'), title));
    };
    const QString declaration = QStringLiteral("<?xml version=\"1.0\" encoding=\"%1\"?>\r\n");
    QTest::newRow("UTF-8") << encoded("UTF-8") << title;
    QTest::newRow("UTF-8 with mark") << QByteArray("\xEF\xBB\xBF" + encoded("UTF-8")) << title;
    QTest::newRow("UTF-8 declared") << encoded("UTF-8", declaration.arg("UTF-8")) << title;
    QTest::newRow("Latin-1") << encoded("ISO-8859-1") << title;
    QTest::newRow("Latin-1 declared")
        << encoded("ISO-8859-1", declaration.arg("ISO-8859-1")) << title;
    QTest::newRow("Windows-1252 declared")
        << encoded("windows-1252", declaration.arg("windows-1252")) << title;
    QTest::newRow("UTF-16") << encoded("UTF-16") << title;
    QTest::newRow("UTF-16 with CR LF") << encoded("UTF-16LE", QString("\r\n")) << title;
    QTest::newRow("a control character") << QByteArray(inFile(profile(0, "A\x01"
                                                                         "B")))
                                         << "AB";
    QTest::newRow("zeros behind the end")
        << QByteArray(inFile(profile(0, "one")) + QByteArray(5000, '\0')) << "one";
}

void ReadFromXMLTest::encodings()
{
    QFETCH(QByteArray, text);
    const Read reader(text);
    QCOMPARE(reader.getProfiles().size(), 1);
    QTEST(reader.value(0, "title"), "title");
}

void ReadFromXMLTest::opensPlainFilesOnly()
{
    QTemporaryDir folder;
    const QString pipe = folder.filePath("pipe.xml");
    QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    const QString file = folder.filePath("\xC3\xA4 file.xml");
    QFile written(file);
    QVERIFY(written.open(QIODevice::WriteOnly));
    written.write(inFile(profile(0, "one")));
    written.close();
    const QString link = folder.filePath("link.xml");
    QVERIFY(QFile::link(file, link));
    const QString linkToNothing = folder.filePath("nothing.xml");
    QVERIFY(QFile::link(folder.filePath("missing"), linkToNothing));

    ReadFromXML reader;
    for (const QString &name : {pipe, folder.path(), folder.filePath("missing.xml"), linkToNothing,
                                QString("/dev/zero"), QString("/dev/null"), QString()})
        QVERIFY2(!reader.readProfiles(name), qPrintable(name));
    for (const QString &name : {file, link}) {
        QVERIFY2(reader.readProfiles(name), qPrintable(name));
        QCOMPARE(reader.getProfiles().size(), 1);
    }
    // A second file takes the place of the first one.
    QVERIFY(written.open(QIODevice::WriteOnly));
    written.close();
    QVERIFY(reader.readProfiles(file));
    QVERIFY(reader.getProfiles().isEmpty());
}

void ReadFromXMLTest::unreadableFile()
{
    QTemporaryDir folder;
    QVERIFY(QFile::setPermissions(folder.path(), QFile::Permissions(0x7755)));
    QFile file(folder.filePath("secret.xml"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.setPermissions(QFile::WriteOwner));
    // Root may read every file.
    const int read = inChild([&] {
        if (!becomeOrdinaryUser())
            return 2;
        return ReadFromXML().readProfiles(file.fileName()) ? 1 : 0;
    });
    QCOMPARE(read, 0);
}

void ReadFromXMLTest::entityBombEnds()
{
    QByteArray text = "<!DOCTYPE VelantorProfiles [<!ENTITY e0 \"ha\">";
    for (int i = 1; i < 40; ++i) {
        const QByteArray inner = "&e" + QByteArray::number(i - 1) + ";";
        text += "<!ENTITY e" + QByteArray::number(i) + " \"" + inner + inner + inner + "\">";
    }
    text += "]>" + inFile(profile(0, "one") + profile(1, "&e39;"));
    const long before = peakMemory();
    QCOMPARE(Read(text).titles(), QStringList("one"));
    QVERIFY(peakMemory() - before < 20 * 1024);
    // Nor by outside entities: they are not fetched.
    const Read outside("<!DOCTYPE a [<!ENTITY e SYSTEM \"/etc/passwd\">]>" +
                       inFile(profile(0, "a&e;b")));
    QVERIFY(!outside.titles().join(QString()).contains(QStringLiteral("root")));
}

void ReadFromXMLTest::entitiesOfTheFileAreKnown()
{
    const Read reader("<!DOCTYPE VelantorProfiles [<!ENTITY deg \"\xC2\xB0\">]>" +
                      inFile(profile(0, "20&deg;")));
    QCOMPARE(reader.titles(), QStringList(QString::fromUtf8("20\xC2\xB0")));
}

void ReadFromXMLTest::deepNestingEnds()
{
    QByteArray nested;
    for (int i = 0; i < 100; ++i)
        nested = "<a>" + nested + "</a>";
    QCOMPARE(Read(inFile(profile(0, "one", nested) + profile(1, "two"))).titles(),
             QStringList({"one", "two"}));
    const QByteArray opened = QByteArray("<a>").repeated(1000000);
    const long before = peakMemory();
    QCOMPARE(Read(inFile(profile(0, "one") + "<profile id=\"1\">" + opened)).titles(),
             QStringList("one"));
    QVERIFY(peakMemory() - before < 50 * 1024);
}

void ReadFromXMLTest::memoryGrowsWithTheFileOnly_data()
{
    QTest::addColumn<QByteArray>("start");
    QTest::addColumn<QByteArray>("repeated");
    QTest::newRow("a title without end")
        << QByteArray("<VelantorProfiles><profile id=\"0\"><title>") << QByteArray("long title ");
    QTest::newRow("many profiles") << QByteArray("<VelantorProfiles>") << profile(0, "one");
    QTest::newRow("many elements")
        << QByteArray("<VelantorProfiles><profile id=\"0\">") << QByteArray("<x>1</x>");
    QTest::newRow("white space and comments")
        << QByteArray("<VelantorProfiles>") << QByteArray("\n\t\t<!-- a comment -->");
}

void ReadFromXMLTest::memoryGrowsWithTheFileOnly()
{
    QFETCH(QByteArray, start);
    QFETCH(QByteArray, repeated);
    constexpr qint64 size = 20 * 1000 * 1000;
    LongText device(start, repeated, size);
    const long before = peakMemory();
    ReadFromXML reader;
    reader.readProfiles(&device);
    QVERIFY(device.atEnd());
    QVERIFY2(peakMemory() - before < memoryPerByte * size / 1024,
             qPrintable(QString::number(peakMemory() - before)));
}

void ReadFromXMLTest::longTagsEndTheFile_data()
{
    QTest::addColumn<QByteArray>("middle");
    QTest::addColumn<QStringList>("titles");
    const QStringList first = {"one"};
    const QStringList both = {"one", "two"};
    QByteArray attributes;
    for (int i = 0; i < 300000; ++i)
        attributes += " a" + QByteArray::number(i) + "='>'";
    QTest::newRow("attributes") << QByteArray("<x" + attributes + "/>") << first;
    QTest::newRow("a value") << QByteArray("<x a=\"" + QByteArray(40000, '\'') + "\"/>") << first;
    QTest::newRow("a name") << QByteArray("<" + QByteArray(40000, 'x') + "/>") << first;
    // What is long and no tag goes through.
    QTest::newRow("a long value that is no freeze")
        << QByteArray("<x a=\"" + QByteArray(30000, '>') + "\"/>") << both;
    QTest::newRow("a text") << QByteArray("<x>" + QByteArray(100000, '\'') + "</x>") << both;
    QTest::newRow("a comment") << QByteArray("<!-- \"" + QByteArray(100000, 'x') + "-->") << both;
    QTest::newRow("a comment that looks like a tag")
        << QByteArray("<!-- <it's> --><x>" + QByteArray(100000, 'x') + "</x>") << both;
    QTest::newRow("an instruction") << QByteArray("<?x " + QByteArray(100000, 'x') + "?>") << both;
}

void ReadFromXMLTest::longTagsEndTheFile()
{
    QFETCH(QByteArray, middle);
    const Read reader(inFile(profile(0, "one") + profile(1, "two", middle)));
    QTEST(reader.titles(), "titles");
}

void ReadFromXMLTest::tellsProgress()
{
    QByteArray text;
    for (int i = 0; i < 5000; ++i)
        text += profile(i, "one");
    text = inFile(text);
    QBuffer buffer(&text);
    QVERIFY(buffer.open(QIODevice::ReadOnly));
    ReadFromXML reader;
    QSignalSpy progress(&reader, &ReadFromXML::progressed);
    reader.readProfiles(&buffer);
    QVERIFY(progress.size() > 5);
    qint64 last = 0;
    for (const QList<QVariant> &step : qAsConst(progress)) {
        QVERIFY(step.at(0).toLongLong() >= last);
        last = step.at(0).toLongLong();
        QCOMPARE(step.at(1).toLongLong(), qint64(text.size()));
    }
    QCOMPARE(last, qint64(text.size()));
}

void ReadFromXMLTest::tellsProgressWithinATitle()
{
    QByteArray text = inFile(profile(0, QByteArray(1000 * 1000, 'x')));
    QBuffer buffer(&text);
    QVERIFY(buffer.open(QIODevice::ReadOnly));
    ReadFromXML reader;
    QSignalSpy progress(&reader, &ReadFromXML::progressed);
    reader.readProfiles(&buffer);
    QVERIFY(progress.size() > 50);
    QCOMPARE(reader.getProfiles().size(), 1);
}

void ReadFromXMLTest::secondFileTakesThePlaceOfTheFirst()
{
    QByteArray settings = inFile("<GlobalSettings><a>1</a><b>2</b><c>3</c><d>4</d><e>5</e>"
                                 "</GlobalSettings>");
    QByteArray none = inFile(profile(0, "one"));
    QBuffer first(&settings);
    QBuffer second(&none);
    QVERIFY(first.open(QIODevice::ReadOnly) && second.open(QIODevice::ReadOnly));
    ReadFromXML reader;
    reader.readProfiles(&first);
    QVERIFY(reader.getUnitSettings());
    reader.readProfiles(&second);
    QVERIFY(!reader.getUnitSettings());
    QCOMPARE(reader.getProfiles().size(), 1);
}

void ReadFromXMLTest::parsersWorkOnTheirOwn()
{
    ReadFromXML parser;
    QXmlStreamReader outside("<VelantorProfiles><profile id=\"3\"><title>one</title></profile>"
                             "<GlobalSettings> <a>1</a><b>2</b><c>3</c><d>4</d><e>5</e>"
                             "</GlobalSettings><profile id=\"1\"/></VelantorProfiles>");
    parser.readFirstElement(&outside);
    QCOMPARE(outside.name(), QStringLiteral("VelantorProfiles"));
    QVERIFY(outside.readNextStartElement());
    const ParsedFSElement *profile = parser.parseProfile(&outside);
    QVERIFY(profile);
    QCOMPARE(profile->getID(), 3);
    QVERIFY(outside.readNextStartElement());
    const ParsedFSElement *settings = parser.parseUnitSettings(&outside);
    QVERIFY(settings);
    QCOMPARE(settings->getProperties().size(), 5);
    const QList<ParsedFSElement *> rest = parser.parseProfiles(&outside);
    QCOMPARE(rest.size(), 1);
    QCOMPARE(rest.first()->getID(), 1);
}

QTEST_GUILESS_MAIN(ReadFromXMLTest)
#include "tst_readfromxml.moc"
