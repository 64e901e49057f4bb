#include "bundles/velantorbundle.h"

#include "support/inchild.h"
#include "support/workingdirectory.h"

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QRegExp>
#include <QTest>
#include <QTextStream>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

namespace
{
QString operator""_s(const char *text, std::size_t size)
{
    return QString::fromUtf8(text, int(size));
}

const QByteArray endLine = "\\\\\\\\\\\\ END FILE \\\\\\\\\\\\\n";

QByteArray member(const QByteArray &name, const QByteArray &content)
{
    return "////// " + name + " //////\n" + content + endLine;
}

QByteArray header(const QByteArray &lines)
{
    return "...\n" + lines + "...\n";
}

const QByteArray tables = member("device_overwrite_profiles.txt", "overwrite\n") +
                          member("device_keep_profiles.txt", "keep\n");

QStringList filesHere()
{
    QStringList names = QDir().entryList(QDir::Files | QDir::Hidden);
    names.removeOne("b.velantor"_s);
    return names;
}

/// What unpacking means, word for word: members by name, through a text stream.
QMap<QString, QByteArray> unpackedByTextStream(const QByteArray &bundle)
{
    QMap<QString, QByteArray> members;
    QFile file("reference"_s);
    if (!file.open(QIODevice::WriteOnly) || file.write(bundle) != bundle.size())
        qFatal("cannot write the bundle");
    file.close();
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        qFatal("cannot read the bundle");
    QTextStream stream(&file);
    stream.setCodec("UTF-8");
    stream.setAutoDetectUnicode(false);
    const QRegExp start("^//////.*//////$"_s);
    const QRegExp end("\\\\\\\\\\\\\\s*END FILE\\s*\\\\\\\\\\\\"_s);
    while (!stream.atEnd()) {
        QString line = stream.readLine();
        if (start.indexIn(line) < 0)
            continue;
        const QString name = line.remove("//////"_s).trimmed();
        QString content;
        line = stream.readLine();
        while (!stream.atEnd() && end.indexIn(line) < 0) {
            content += line + QLatin1Char('\n');
            line = stream.readLine();
        }
        if (!name.isEmpty())
            members.insert(name, content.toUtf8());
    }
    file.close();
    file.remove();
    return members;
}
} // namespace

class VelantorBundleTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { folder.reset(new WorkingDirectory); }
    void cleanup() { folder.reset(); }

    void startLine_data();
    void startLine();
    void endLine_data();
    void endLine();
    void fileName_data();
    void fileName();
    void storesOnePair_data();
    void storesOnePair();
    void readsTheHeader_data();
    void readsTheHeader();
    void aLaterHeaderValueReplaces();
    void anUnreadableFileKeepsTheValues();
    void readsNothingBeforeItIsAsked();
    void version_data();
    void version();
    void versionOfAFileInAFolder();

    void unpacksEveryMember();
    void remembersTheLastFirmwareImage();
    void unpacks_data();
    void unpacks();
    void overwritesOlderFiles();
    void leavesEqualFilesAlone();
    void unpacksAsATextStreamWould();
    void aMissingBundleIsFalse();
    void aMissingOverwriteTableIsFalseAfterUnpacking();
    void anUnwritableMemberStopsNothing();
    void selectsTheDeviceTable();
    void aMissingDeviceTableLeavesNone();
    void saveFile();
    void saveFileFails();

    void staysInTheWorkingDirectory_data();
    void staysInTheWorkingDirectory();
    void writesIntoAFolderThatExists();
    void leavesWhatIsNotItsOwn_data();
    void leavesWhatIsNotItsOwn();
    void followsNoLink_data();
    void followsNoLink();
    void waitsForNoPipe();

    void firmwareIsWhole_data();
    void firmwareIsWhole();
    void firmwareIsNotWholeBeforeItIsRead();
    void firmwareThatCannotBeWrittenIsNotWhole();
    void firmwareOnAFullDiskIsNotWhole();

    void unpacksTheLargestBundle();
    void refusesLargerBundles_data();
    void refusesLargerBundles();
    void unpacksTheMostMembers();
    void refusesMoreMembers();
    void refusesWhatIsNoFile_data();
    void refusesWhatIsNoFile();
    void refusesAFileWithoutPermission();
    void hostileBundlesTakeLittleMemory_data();
    void hostileBundlesTakeLittleMemory();
    void longLinesAreReadInReasonableTime();

private:
    void write(const QByteArray &content) { folder->write("b.velantor"_s, content); }

    QScopedPointer<WorkingDirectory> folder;
    VelantorBundle bundle{"b.velantor"_s};
};

void VelantorBundleTest::startLine_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<bool>("matches");
    QTest::newRow("usual") << "////// master.ss //////"_s << true;
    QTest::newRow("without blanks") << "//////master.ss//////"_s << true;
    QTest::newRow("without a name") << "////////////"_s << true;
    QTest::newRow("eleven slashes") << "///////////"_s << false;
    QTest::newRow("thirteen slashes") << "/////////////"_s << true;
    QTest::newRow("five slashes in front") << "///// master.ss //////"_s << false;
    QTest::newRow("five slashes behind") << "////// master.ss /////"_s << false;
    QTest::newRow("blank in front") << " ////// master.ss //////"_s << false;
    QTest::newRow("blank behind") << "////// master.ss ////// "_s << false;
    QTest::newRow("front alone") << "////// master.ss"_s << false;
    QTest::newRow("nothing") << QString() << false;
}

void VelantorBundleTest::startLine()
{
    QFETCH(QString, line);
    QTEST(bundle.matchesStartLine(line), "matches");
    QCOMPARE(bundle.matchesStartLine(line), line.contains(QRegExp("^//////.*//////$"_s)));
}

void VelantorBundleTest::endLine_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<bool>("matches");
    QTest::newRow("usual") << R"(\\\\\\ END FILE \\\\\\)" << true;
    QTest::newRow("three backslashes") << R"(\\\ END FILE \\\)" << true;
    QTest::newRow("two in front") << R"(\\ END FILE \\\)" << false;
    QTest::newRow("two behind") << R"(\\\ END FILE \\)" << false;
    QTest::newRow("without blanks") << R"(\\\END FILE\\\)" << true;
    QTest::newRow("tabs and many blanks") << "\\\\\\ \t  END FILE \t \\\\\\" << true;
    QTest::newRow("text around") << R"(before \\\ END FILE \\\ behind)" << true;
    QTest::newRow("text before the words") << R"(\\\ x END FILE \\\)" << false;
    QTest::newRow("two blanks in the words") << R"(\\\ END  FILE \\\)" << false;
    QTest::newRow("small letters") << R"(\\\ end file \\\)" << false;
    QTest::newRow("slashes") << "/// END FILE ///" << false;
    QTest::newRow("wide blanks") << "\\\\\\\u00a0END FILE\u2003\\\\\\"_s << true;
    QTest::newRow("nothing") << QString() << false;
}

void VelantorBundleTest::endLine()
{
    QFETCH(QString, line);
    QTEST(bundle.matchesEndLine(line), "matches");
}

void VelantorBundleTest::fileName_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("firmware");
    QTest::newRow("usual") << "////// master.ss //////"
                           << "master.ss" << QString();
    QTest::newRow("without blanks") << "//////master.ss//////"
                                    << "master.ss" << QString();
    QTest::newRow("firmware") << "////// v1.039.hex //////"
                              << "v1.039.hex"
                              << "v1.039.hex";
    QTest::newRow("firmware in capitals") << "////// V1.HEX //////"
                                          << "V1.HEX"
                                          << "V1.HEX";
    QTest::newRow("mixed letters") << "////// v1.Hex //////"
                                   << "v1.Hex" << QString();
    QTest::newRow("extension alone") << "////// .hex //////"
                                     << ".hex"
                                     << ".hex";
    QTest::newRow("extension inside") << "////// v1.hex.txt //////"
                                      << "v1.hex.txt" << QString();
    QTest::newRow("no dot") << "////// vhex //////"
                            << "vhex" << QString();
    QTest::newRow("inner blanks stay") << "////// a b.txt //////"
                                       << "a b.txt" << QString();
    QTest::newRow("marks inside go") << "////// a//////b //////"
                                     << "ab" << QString();
    QTest::newRow("no name") << "////////////" << QString() << QString();
}

void VelantorBundleTest::fileName()
{
    QFETCH(QString, line);
    VelantorBundle fresh("b.velantor"_s);
    QTEST(fresh.parseFileName(line), "name");
    QTEST(fresh.getHexFileName(), "firmware");
}

void VelantorBundleTest::storesOnePair_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("value");
    QTest::newRow("blanks") << "  A  =  1  "
                            << "A"
                            << "1";
    QTest::newRow("no value") << "A ="
                              << "A"
                              << "before";
    QTest::newRow("blank value replaces") << "A = "
                                          << "A"
                                          << "";
    QTest::newRow("no key") << "= 1"
                            << ""
                            << "";
    QTest::newRow("blank key") << " = 1"
                               << ""
                               << "1";
    QTest::newRow("three parts") << "A = B = C"
                                 << "A"
                                 << "before";
    QTest::newRow("empty parts are no parts") << "A == 2"
                                              << "A"
                                              << "2";
    QTest::newRow("any characters") << "my key = a-b"
                                    << "my key"
                                    << "a-b";
}

void VelantorBundleTest::storesOnePair()
{
    QFETCH(QString, line);
    QFETCH(QString, key);
    VelantorBundle fresh("b.velantor"_s);
    fresh.extractAndStoreKeyValuePair("A=before"_s);
    fresh.extractAndStoreKeyValuePair(line);
    QTEST(fresh.valueFromKey(key), "value");
}

void VelantorBundleTest::readsTheHeader_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("value");
    const QString version = "VERSION"_s;
    QTest::newRow("blanks") << header("VERSION = 1.039\n") << version << "1.039";
    QTest::newRow("no blanks") << header("VERSION=1.039\n") << version << "1.039";
    QTest::newRow("many blanks") << header(" \tVERSION\t = 1.039 \t\n") << version << "1.039";
    QTest::newRow("Windows line ends")
        << QByteArray("...\r\nVERSION = 1.039\r\n...\r\n") << version << "1.039";
    QTest::newRow("unknown key") << header("VERSION = 1.039\n") << "NOPE"
                                 << "";
    QTest::newRow("second key") << header(
                                       "VERSION = 1.039\nMIN_SOFTWARE_VERSION_REQUIRED = 1.100\n")
                                << "MIN_SOFTWARE_VERSION_REQUIRED"
                                << "1.100";
    QTest::newRow("trailing blank in the first line")
        << QByteArray("... \nVERSION = 1.039\n...\n") << version << "";
    QTest::newRow("leading blank in the first line")
        << QByteArray(" ...\nVERSION = 1.039\n...\n") << version << "";
    QTest::newRow("four full stops") << QByteArray("....\nVERSION = 1\n...\n") << version << "";
    QTest::newRow("not in the first line") << "\n" + header("VERSION = 1.039\n") << version << "";
    QTest::newRow("empty file") << QByteArray() << version << "";
    QTest::newRow("byte order mark") << "\xef\xbb\xbf" + header("VERSION = 2\n") << version << "2";
    QTest::newRow("header alone, no line end")
        << QByteArray("...\nVERSION = 1.039") << version << "1.039";
    QTest::newRow("two equals signs") << header("A = B = C\nVERSION = 1\n") << "A"
                                      << "";
    QTest::newRow("line behind a bad line") << header("A = B = C\nVERSION = 1\n") << version << "1";
    QTest::newRow("no value") << header("A =\nVERSION = 1\n") << "A"
                              << "";
    QTest::newRow("dash in the value") << header("VERSION = 1-2\n") << version << "";
    QTest::newRow("two words in the value") << header("VERSION = 1 2\n") << version << "";
    QTest::newRow("two words in the key") << header("THE VERSION = 1\n") << "THE VERSION"
                                          << "";
    QTest::newRow("underscore and full stop") << header("a_1.b = c_2.d\n") << "a_1.b"
                                              << "c_2.d";
    QTest::newRow("letters beyond ASCII") << header("GR\xc3\x96SSE = 1\n") << "GR\u00d6SSE"_s
                                          << "1";
    QTest::newRow("behind the end") << header("A = 1\n") + "VERSION = 2\n" << version << "";
    QTest::newRow("end with a trailing blank is none")
        << QByteArray("...\nA = 1\n... \nVERSION = 2\n") << version << "2";
    QTest::newRow("no end: member lines count")
        << "...\nVERSION = 1\n" + member("x.txt", "inner = 7\n") << "inner"
        << "7";
}

void VelantorBundleTest::readsTheHeader()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, key);
    write(content);
    VelantorBundle fresh("b.velantor"_s);
    fresh.parseKeyValuePairs();
    QTEST(fresh.valueFromKey(key), "value");
    QVERIFY(filesHere().isEmpty());
}

void VelantorBundleTest::aLaterHeaderValueReplaces()
{
    write(header("VERSION = 1\nVERSION = 2\n"));
    VelantorBundle fresh("b.velantor"_s);
    fresh.parseKeyValuePairs();
    QCOMPARE(fresh.valueFromKey("VERSION"_s), "2"_s);
}

void VelantorBundleTest::anUnreadableFileKeepsTheValues()
{
    VelantorBundle fresh("b.velantor"_s);
    fresh.extractAndStoreKeyValuePair("A = 1"_s);
    fresh.parseKeyValuePairs();
    QCOMPARE(fresh.valueFromKey("A"_s), "1"_s);
}

void VelantorBundleTest::readsNothingBeforeItIsAsked()
{
    write(header("VERSION = 1\n") + member("v1.hex", ":00000001FF\n"));
    VelantorBundle fresh("b.velantor"_s);
    QCOMPARE(fresh.valueFromKey("VERSION"_s), QString());
    QCOMPARE(fresh.getHexFileName(), ""_s);
    QVERIFY(filesHere().isEmpty());
}

void VelantorBundleTest::version_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("version");
    QTest::newRow("header first") << "v2.velantor" << header("VERSION = 1.039\n") << "1.039";
    QTest::newRow("name") << "v1.039.velantor" << QByteArray("x\n") << "1.039";
    QTest::newRow("name of one number") << "v2.velantor" << QByteArray() << "2";
    QTest::newRow("name without a number") << "notes.velantor" << QByteArray() << "0";
    QTest::newRow("invalid header text") << "v2.velantor" << header("VERSION = 1.0rc\n") << "1.0rc";
    QTest::newRow("header without the key") << "v2.velantor" << header("A = 1\n") << "2";
    QTest::newRow("empty version") << "v2.5.velantor" << header("VERSION = \n") << "2.5";
    QTest::newRow("text behind the number") << "v1.2-beta.velantor" << QByteArray() << "1.2";
    QTest::newRow("first of two numbers") << "3 of 4.5.velantor" << QByteArray() << "3";
    QTest::newRow("number behind the extension") << "a.velantor2" << QByteArray() << "0";
    QTest::newRow("number at once") << "1.2.3.velantor" << QByteArray() << "1.2.3";
}

void VelantorBundleTest::version()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    folder->write(name, content);
    QTEST(VelantorBundle::getBundleVersion(name), "version");
}

void VelantorBundleTest::versionOfAFileInAFolder()
{
    QVERIFY(QDir().mkdir("7.7"_s));
    folder->write("7.7/notes.velantor"_s, QByteArray());
    QCOMPARE(VelantorBundle::getBundleVersion("7.7/notes.velantor"_s), "0"_s);
    QCOMPARE(VelantorBundle::getBundleVersion(folder->path() + "/v3.4.velantor"_s), "3.4"_s);
}

void VelantorBundleTest::unpacksEveryMember()
{
    write(header("VERSION = 1.039\nMIN_SOFTWARE_VERSION_REQUIRED = 1.100\n") + "between\n" +
          tables + member("master.ss", "#define X 1\n\n  y\t \n") + "nobody reads this\n" +
          member("v1.039.hex", ":00000001FF\n; note\n") + member("checksums", "not implemented\n"));
    VelantorBundle fresh(folder->path() + "/b.velantor"_s);
    QVERIFY(fresh.parseBundle());
    QCOMPARE(filesHere(),
             (QStringList{"checksums"_s, "device.txt"_s, "device_keep_profiles.txt"_s,
                          "device_overwrite_profiles.txt"_s, "master.ss"_s, "v1.039.hex"_s}));
    QCOMPARE(folder->read("master.ss"_s), QByteArray("#define X 1\n\n  y\t \n"));
    QCOMPARE(folder->read("v1.039.hex"_s), QByteArray(":00000001FF\n; note\n"));
    QCOMPARE(folder->read("checksums"_s), QByteArray("not implemented\n"));
    QCOMPARE(folder->read("device.txt"_s), QByteArray("overwrite\n"));
    QCOMPARE(fresh.getHexFileName(), "v1.039.hex"_s);
    QCOMPARE(fresh.valueFromKey("VERSION"_s), "1.039"_s);
    QCOMPARE(fresh.valueFromKey("MIN_SOFTWARE_VERSION_REQUIRED"_s), "1.100"_s);
}

void VelantorBundleTest::remembersTheLastFirmwareImage()
{
    write(tables + member("a.hex", "1\n") + member("b.HEX", "2\n") + member("c.txt", "3\n"));
    VelantorBundle fresh("b.velantor"_s);
    QVERIFY(fresh.parseBundle());
    QCOMPARE(fresh.getHexFileName(), "b.HEX"_s);
}

void VelantorBundleTest::unpacks_data()
{
    QTest::addColumn<QByteArray>("member");
    QTest::addColumn<QByteArray>("content");
    const QByteArray start = "////// x.txt //////\n";
    QTest::newRow("empty") << start + ::endLine << QByteArray();
    QTest::newRow("end line is the last of the file, without a line end")
        << start + "a\n" + ::endLine.chopped(1) << QByteArray("a\n");
    QTest::newRow("end line with text around") << start + "a\nsee \\\\\\END FILE\\\\\\ here\nb\n"
                                               << QByteArray("a\n");
    QTest::newRow("a start line inside is content")
        << start + "a\n////// y.txt //////\nb\n" + ::endLine
        << QByteArray("a\n////// y.txt //////\nb\n");
    QTest::newRow("end of file: the line read last is lost") << start + "a\nb\nc\n"
                                                             << QByteArray("a\nb\n");
    QTest::newRow("end of file without a line end") << start + "a\nb" << QByteArray("a\n");
    QTest::newRow("end of file behind one line") << start + "a\n" << QByteArray();
    QTest::newRow("end of file behind the start line") << start << QByteArray();
    QTest::newRow("Windows line ends") << start + "a\r\nb\r\n" + ::endLine << QByteArray("a\nb\n");
    QTest::newRow("lone carriage returns") << start + "a\rb\n" + ::endLine << QByteArray("ab\n");
    QTest::newRow("words of the end alone")
        << start + "END FILE\n" + ::endLine << QByteArray("END FILE\n");
    QTest::newRow("degree sign") << start +
                                        "20 \xc2\xb0"
                                        "C\n" +
                                        ::endLine
                                 << QByteArray("20 \xc2\xb0"
                                               "C\n");
    QTest::newRow("no UTF-8") << start + "20 \xb0\xff\xfe\n" + ::endLine
                              << QByteArray("20 \xb0\xff\xfe\n");
    QTest::newRow("zero byte") << start + QByteArray("a\0b\n", 4) + ::endLine
                               << QByteArray("a\0b\n", 4);
    QTest::newRow("the later of one name")
        << start + "first\n" + ::endLine + start + "second\n" + ::endLine << QByteArray("second\n");
}

void VelantorBundleTest::unpacks()
{
    QFETCH(QByteArray, member);
    write(tables + member);
    VelantorBundle fresh("b.velantor"_s);
    QVERIFY(fresh.parseBundle());
    QVERIFY(filesHere().contains("x.txt"_s));
    QTEST(folder->read("x.txt"_s), "content");
    QVERIFY(!filesHere().contains("y.txt"_s));
}

void VelantorBundleTest::overwritesOlderFiles()
{
    folder->write("x.txt"_s, "older and longer\n");
    folder->write("device.txt"_s, "older\n");
    write(tables + member("x.txt", "new\n"));
    QVERIFY(VelantorBundle("b.velantor"_s).parseBundle());
    QCOMPARE(folder->read("x.txt"_s), QByteArray("new\n"));
    QCOMPARE(folder->read("device.txt"_s), QByteArray("overwrite\n"));
}

void VelantorBundleTest::leavesEqualFilesAlone()
{
    write(tables + member("same.txt", "same\n") + member("other.txt", "new\n"));
    const QDateTime before(QDate(2023, 3, 23), QTime(12, 0));
    for (const QString &name : {"same.txt"_s, "other.txt"_s}) {
        folder->write(name, name.startsWith(QLatin1Char('s')) ? "same\n" : "old\n");
        QFile file(name);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(before, QFileDevice::FileModificationTime));
    }
    QVERIFY(VelantorBundle("b.velantor"_s).parseBundle());
    QCOMPARE(QFileInfo("same.txt"_s).lastModified(), before);
    QVERIFY(QFileInfo("other.txt"_s).lastModified() != before);
    QCOMPARE(folder->read("same.txt"_s), QByteArray("same\n"));
    QCOMPARE(folder->read("other.txt"_s), QByteArray("new\n"));
}

void VelantorBundleTest::unpacksAsATextStreamWould()
{
    const QList<QByteArray> pieces{"\n",
                                   "\n",
                                   "\n",
                                   "\r\n",
                                   "\r",
                                   "////// m1 //////\n",
                                   "////// m2 //////\n",
                                   "//////m3//////\r\n",
                                   "//////",
                                   ::endLine,
                                   "\\\\\\",
                                   "END FILE",
                                   "\\\\\\ END FILE \\\\\\",
                                   " ",
                                   "\t",
                                   "...",
                                   "a = b",
                                   "text",
                                   "\xc2\xb0",
                                   "\xc2\xa0",
                                   "\xe2\x80\x83"};
    QRandomGenerator random(1039);
    for (int round = 0; round < 400; ++round) {
        QByteArray content;
        for (int i = random.bounded(40); i > 0; --i)
            content += pieces.at(random.bounded(pieces.size()));
        // A carriage return without a line behind it: no file ends so, and the two differ on it.
        while (content.endsWith('\r'))
            content.chop(1);
        for (const QString &name : filesHere())
            QFile::remove(name);
        const QMap<QString, QByteArray> expected = unpackedByTextStream(content);
        write(content);
        VelantorBundle("b.velantor"_s).parseBundle();
        for (auto it = expected.begin(); it != expected.end(); ++it)
            QVERIFY2(folder->read(it.key()) == it.value(), content.toPercentEncoding(" /=\n"));
        QCOMPARE(filesHere(), QStringList(expected.keys()));
    }
}

void VelantorBundleTest::aMissingBundleIsFalse()
{
    folder->write("device.txt"_s, "older\n");
    QVERIFY(!VelantorBundle("b.velantor"_s).parseBundle());
    QCOMPARE(folder->read("device.txt"_s), QByteArray("older\n"));
}

void VelantorBundleTest::aMissingOverwriteTableIsFalseAfterUnpacking()
{
    folder->write("device.txt"_s, "older\n");
    write(member("device_keep_profiles.txt", "keep\n") + member("x.txt", "x\n"));
    QVERIFY(!VelantorBundle("b.velantor"_s).parseBundle());
    QCOMPARE(filesHere(), (QStringList{"device_keep_profiles.txt"_s, "x.txt"_s}));
}

void VelantorBundleTest::anUnwritableMemberStopsNothing()
{
    QVERIFY(QDir().mkdir("taken"_s));
    write(member("taken", "x\n") + tables + member("later", "y\n"));
    QVERIFY(VelantorBundle("b.velantor"_s).parseBundle());
    QVERIFY(QFileInfo("taken"_s).isDir());
    QCOMPARE(folder->read("later"_s), QByteArray("y\n"));
}

void VelantorBundleTest::selectsTheDeviceTable()
{
    write(tables);
    VelantorBundle fresh("b.velantor"_s);
    QVERIFY(fresh.parseBundle());
    QCOMPARE(folder->read("device.txt"_s), QByteArray("overwrite\n"));
    QVERIFY(fresh.allowOverwriteProfiles(false));
    QCOMPARE(folder->read("device.txt"_s), QByteArray("keep\n"));
    QVERIFY(fresh.allowOverwriteProfiles(true));
    QCOMPARE(folder->read("device.txt"_s), QByteArray("overwrite\n"));
}

void VelantorBundleTest::aMissingDeviceTableLeavesNone()
{
    folder->write("device.txt"_s, "older\n");
    folder->write("device_overwrite_profiles.txt"_s, "overwrite\n");
    QVERIFY(!bundle.allowOverwriteProfiles(false));
    QVERIFY(!QFile::exists("device.txt"_s));
    QVERIFY(bundle.allowOverwriteProfiles(true));
}

void VelantorBundleTest::saveFile()
{
    folder->write("x.txt"_s, "older and longer\n");
    QVERIFY(bundle.saveFile("20 \u00b0C\nb"_s, "x.txt"_s));
    QCOMPARE(folder->read("x.txt"_s), QByteArray("20 \xc2\xb0"
                                                 "C\nb"));
}

void VelantorBundleTest::saveFileFails()
{
    QVERIFY(!bundle.saveFile("x"_s, "missing/x.txt"_s));
    QVERIFY(QDir().mkdir("taken"_s));
    QVERIFY(!bundle.saveFile("x"_s, "taken"_s));
}

void VelantorBundleTest::staysInTheWorkingDirectory_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("parent") << QByteArray("../outside.hex");
    QTest::newRow("parent of a folder") << QByteArray("inner/../../outside.hex");
    QTest::newRow("parent of a folder, staying") << QByteArray("inner/../outside.hex");
    QTest::newRow("parent at the end") << QByteArray("inner/..");
    QTest::newRow("absolute") << QByteArray("%1/outside.hex");
    QTest::newRow("absolute, two slashes") << QByteArray("/%1/outside.hex");
    QTest::newRow("resource") << QByteArray(":/outside.hex");
    QTest::newRow("no name") << QByteArray();
    QTest::newRow("folder") << QByteArray("inner");
    QTest::newRow("this folder") << QByteArray(".");
    QTest::newRow("missing folder") << QByteArray("missing/outside.txt");
    QTest::newRow("zero byte behind the parent") << QByteArray("..\0/outside.txt", 15);
    QTest::newRow("longer than any name") << QByteArray(100000, 'n');
}

void VelantorBundleTest::staysInTheWorkingDirectory()
{
    QFETCH(QByteArray, name);
    const QString outer = QDir::currentPath();
    QVERIFY(QDir().mkpath("work/inner"_s) && QDir::setCurrent("work"_s));
    name.replace("%1", outer.toUtf8());
    folder->write("work/b.velantor"_s, member("good.hex", "good\n") + tables +
                                           member(name, "bad\n") +
                                           member("behind.txt", "behind\n"));
    VelantorBundle fresh("b.velantor"_s);
    QVERIFY(fresh.parseBundle());
    QCOMPARE(filesHere(), (QStringList{"behind.txt"_s, "device.txt"_s, "device_keep_profiles.txt"_s,
                                       "device_overwrite_profiles.txt"_s, "good.hex"_s}));
    QVERIFY(QDir("inner"_s).isEmpty());
    QDir::setCurrent(outer);
    QCOMPARE(filesHere(), QStringList());
    QCOMPARE(fresh.getHexFileName(), "good.hex"_s);
}

void VelantorBundleTest::writesIntoAFolderThatExists()
{
    QVERIFY(QDir().mkdir("saved_profiles"_s));
    write(tables + member("saved_profiles/a..b.xml", "x\n"));
    QVERIFY(VelantorBundle("b.velantor"_s).parseBundle());
    QCOMPARE(folder->read("saved_profiles/a..b.xml"_s), QByteArray("x\n"));
}

void VelantorBundleTest::leavesWhatIsNotItsOwn_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("file");
    QTest::newRow("uploader") << QByteArray("vexa.bin") << "vexa.bin";
    QTest::newRow("uploader of another system") << QByteArray("vexa.exe") << "vexa.exe";
    QTest::newRow("program by a part of its name") << QByteArray("x.mac.txt") << "x.mac.txt";
    QTest::newRow("program as firmware") << QByteArray("vexa.bin.hex") << "vexa.bin.hex";
    QTest::newRow("program by a detour") << QByteArray("./vexa.bin") << "vexa.bin";
    QTest::newRow("preferences") << QByteArray("config.txt") << "config.txt";
    QTest::newRow("preferences by a detour") << QByteArray(".//config.txt") << "config.txt";
    QTest::newRow("itself") << QByteArray("b.velantor") << "b.velantor";
    QTest::newRow("another bundle") << QByteArray("v2.velantor") << "v2.velantor";
    QTest::newRow("log of profile runs") << QByteArray("vexaLog.txt") << "vexaLog.txt";
    QTest::newRow("log of an update")
        << QByteArray("logs/outputlog-x.txt") << "logs/outputlog-x.txt";
    QTest::newRow("profile file of the user")
        << QByteArray("saved_profiles/mine.xml") << "saved_profiles/mine.xml";
}

void VelantorBundleTest::leavesWhatIsNotItsOwn()
{
    QFETCH(QByteArray, name);
    QFETCH(QString, file);
    QVERIFY(QDir().mkdir("logs"_s) && QDir().mkdir("saved_profiles"_s));
    folder->write(file, "the user's\n");
    write(tables + member(name, "hostile\n") + member("behind.txt", "behind\n"));
    const QByteArray before = folder->read(file);
    VelantorBundle fresh("b.velantor"_s);
    QVERIFY(fresh.parseBundle());
    QCOMPARE(folder->read(file), before);
    QCOMPARE(folder->read("behind.txt"_s), QByteArray("behind\n"));
    QCOMPARE(fresh.getHexFileName(), QString());
}

void VelantorBundleTest::followsNoLink_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("to a file") << QByteArray("file-link.hex");
    QTest::newRow("to nothing") << QByteArray("loose-link.hex");
    QTest::newRow("to a folder") << QByteArray("folder-link/new.hex");
    QTest::newRow("to a folder, over a file") << QByteArray("folder-link/outside.hex");
    QTest::newRow("in a folder") << QByteArray("inner/link.hex");
    QTest::newRow("behind a full stop") << QByteArray("./folder-link/./new.hex");
}

void VelantorBundleTest::followsNoLink()
{
    QFETCH(QByteArray, name);
    const WorkingDirectory outside;
    outside.write("outside.hex"_s, "outside\n");
    QVERIFY(QDir::setCurrent(folder->path()));
    QVERIFY(QDir().mkdir("inner"_s));
    QVERIFY(QFile::link(outside.path() + "/outside.hex"_s, "file-link.hex"_s));
    QVERIFY(QFile::link(outside.path() + "/new.hex"_s, "loose-link.hex"_s));
    QVERIFY(QFile::link(outside.path(), "folder-link"_s));
    QVERIFY(QFile::link(outside.path() + "/outside.hex"_s, "inner/link.hex"_s));
    write(tables + member("good.hex", "good\n") + member(name, "hostile\n"));
    VelantorBundle fresh("b.velantor"_s);
    QVERIFY(fresh.parseBundle());
    QCOMPARE(QDir(outside.path()).entryList(QDir::Files), QStringList("outside.hex"_s));
    QCOMPARE(outside.read("outside.hex"_s), QByteArray("outside\n"));
    QVERIFY(QFileInfo("file-link.hex"_s).isSymLink());
    QCOMPARE(fresh.getHexFileName(), "good.hex"_s);
    QVERIFY(!fresh.isFirmwareWhole());
}

void VelantorBundleTest::waitsForNoPipe()
{
    QCOMPARE(mkfifo("pipe.txt", 0600), 0);
    write(tables + member("pipe.txt", "hostile\n") + member("pipe.txt", QByteArray()) +
          member("behind.txt", "behind\n"));
    QVERIFY(VelantorBundle("b.velantor"_s).parseBundle());
    QCOMPARE(folder->read("behind.txt"_s), QByteArray("behind\n"));
}

void VelantorBundleTest::firmwareIsWhole_data()
{
    QTest::addColumn<QByteArray>("members");
    QTest::addColumn<bool>("whole");
    const QByteArray image = member("a.hex", ":00000001FF\n");
    const QByteArray start = "////// b.hex //////\n:00000001FF\n";
    QTest::newRow("closed") << image << true;
    QTest::newRow("in capitals") << member("A.HEX", ":00000001FF\n") << true;
    QTest::newRow("end line is the last of the file, without a line end")
        << image.chopped(1) << true;
    QTest::newRow("member behind it is cut off") << image + "////// x.txt //////\nx\n" << true;
    QTest::newRow("none") << QByteArray() << false;
    QTest::newRow("no more than a similar name") << member("a.Hex", "x\n") << false;
    QTest::newRow("cut off behind the start line") << start.left(20) << false;
    QTest::newRow("cut off within a line") << start.chopped(4) << false;
    QTest::newRow("cut off behind a line") << start << false;
    QTest::newRow("cut off within the end line") << image.chopped(5) << false;
    QTest::newRow("last of two is cut off") << image + start << false;
    QTest::newRow("first of two has no end line of its own") << start + image << true;
    QTest::newRow("same name again, cut off")
        << image + member("b.hex", "x\n") + image.chopped(9) << false;
    QTest::newRow("same name again, closed") << image + image << true;
    QTest::newRow("last of two leads outside") << image + member("../b.hex", "x\n") << false;
    QTest::newRow("name longer than any line")
        << image + member(QByteArray(100000, 'n') + ".hex", "x\n") << true;
}

void VelantorBundleTest::firmwareIsWhole()
{
    QFETCH(QByteArray, members);
    QFETCH(bool, whole);
    write(tables + members);
    VelantorBundle fresh("b.velantor"_s);
    QVERIFY(fresh.parseBundle());
    QCOMPARE(fresh.isFirmwareWhole(), whole);
    // What the first run has written is left alone by the second, and as good.
    QVERIFY(fresh.parseBundle());
    QCOMPARE(fresh.isFirmwareWhole(), whole);
}

void VelantorBundleTest::firmwareIsNotWholeBeforeItIsRead()
{
    write(tables + member("a.hex", "1\n"));
    VelantorBundle fresh("b.velantor"_s);
    QVERIFY(!fresh.isFirmwareWhole());
    QVERIFY(fresh.parseBundle());
    QVERIFY(fresh.isFirmwareWhole());
    QVERIFY(QFile::remove("b.velantor"_s));
    QVERIFY(!fresh.parseBundle());
    QVERIFY(!fresh.isFirmwareWhole());
}

void VelantorBundleTest::firmwareThatCannotBeWrittenIsNotWhole()
{
    folder->write("a.hex"_s, "of an earlier bundle\n");
    QVERIFY(QFile::setPermissions("a.hex"_s, QFile::ReadOwner));
    write(tables + member("a.hex", "new\n"));
    QCOMPARE(inChild([] {
                 if (!becomeOrdinaryUser())
                     return 2;
                 VelantorBundle fresh("b.velantor"_s);
                 fresh.parseBundle();
                 return fresh.isFirmwareWhole() ? 1 : 0;
             }),
             0);
    QCOMPARE(folder->read("a.hex"_s), QByteArray("of an earlier bundle\n"));
}

void VelantorBundleTest::firmwareOnAFullDiskIsNotWhole()
{
    write(tables + member("a.hex", QByteArray(9999, 'x') + '\n'));
    for (const rlim_t space : {0, 1, 4096, 9999, 10000}) {
        QFile::remove("a.hex"_s);
        const int result = inChild([space] {
            signal(SIGXFSZ, SIG_IGN);
            const rlimit disk{space, space};
            setrlimit(RLIMIT_FSIZE, &disk);
            VelantorBundle fresh("b.velantor"_s);
            fresh.parseBundle();
            return fresh.isFirmwareWhole() ? 1 : 0;
        });
        QCOMPARE(result, space < 10000 ? 0 : 1);
    }
}

void VelantorBundleTest::unpacksTheLargestBundle()
{
    const QByteArray rest = tables + member("v1.hex", ":00000001FF\n");
    const QByteArray filler(int(VelantorBundle::longestBundle) - rest.size() - 1, 'x');
    write(filler + '\n' + rest);
    QCOMPARE(QFileInfo("b.velantor"_s).size(), qint64(16777216));
    VelantorBundle fresh("b.velantor"_s);
    QVERIFY(fresh.parseBundle());
    QVERIFY(fresh.isFirmwareWhole());
}

void VelantorBundleTest::refusesLargerBundles_data()
{
    QTest::addColumn<qint64>("size");
    QTest::newRow("one byte too many") << qint64(16777217);
    QTest::newRow("200 megabytes") << qint64(200000000);
    QTest::newRow("2 gigabytes") << qint64(1) * 2147483648;
    QTest::newRow("beyond 32 bits") << qint64(4294967296) + 100;
}

void VelantorBundleTest::refusesLargerBundles()
{
    QFETCH(qint64, size);
    folder->write("device.txt"_s, "older\n");
    write(header("VERSION = 7\n") + tables + member("v1.hex", ":00000001FF\n"));
    QVERIFY(QFile::resize("b.velantor"_s, size)); // zeros that take no room on the disk
    VelantorBundle fresh("b.velantor"_s);
    QVERIFY(!VelantorBundle::canBeBundle("b.velantor"_s));
    QVERIFY(!fresh.parseBundle());
    QVERIFY(!fresh.isFirmwareWhole());
    QCOMPARE(fresh.valueFromKey("VERSION"_s), QString());
    QCOMPARE(filesHere(), QStringList("device.txt"_s));
    QCOMPARE(folder->read("device.txt"_s), QByteArray("older\n"));
}

void VelantorBundleTest::unpacksTheMostMembers()
{
    QByteArray members = tables;
    for (int i = 2; i < 256; ++i)
        members += member(QByteArray::number(i), "x\n");
    write(members);
    QVERIFY(VelantorBundle("b.velantor"_s).parseBundle());
    QCOMPARE(filesHere().size(), 257); // the device table in force beside them
}

void VelantorBundleTest::refusesMoreMembers()
{
    QByteArray members = tables;
    for (int i = 2; i < 257; ++i)
        members += member(QByteArray::number(i), "x\n");
    write(members);
    QVERIFY(!VelantorBundle("b.velantor"_s).parseBundle());
    QCOMPARE(filesHere(), QStringList());
}

void VelantorBundleTest::refusesWhatIsNoFile_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("folder") << "folder"_s;
    QTest::newRow("pipe") << "pipe"_s;
    QTest::newRow("device") << "device"_s;
    QTest::newRow("link to nothing") << "link"_s;
}

void VelantorBundleTest::refusesWhatIsNoFile()
{
    QFETCH(QString, kind);
    const QString name = "v2.velantor"_s;
    if (kind == "folder"_s)
        QVERIFY(QDir().mkdir(name));
    else if (kind == "pipe"_s)
        QCOMPARE(mkfifo(name.toUtf8(), 0600), 0);
    else
        QVERIFY(QFile::link(kind == "device"_s ? "/dev/zero"_s : "missing"_s, name));
    folder->write("device.txt"_s, "older\n");
    VelantorBundle fresh(name);
    QVERIFY(!VelantorBundle::canBeBundle(name));
    QVERIFY(!fresh.parseBundle());
    QCOMPARE(folder->read("device.txt"_s), QByteArray("older\n"));
    QCOMPARE(VelantorBundle::getBundleVersion(name), "2"_s);
}

void VelantorBundleTest::refusesAFileWithoutPermission()
{
    write(header("VERSION = 7\n") + tables);
    QVERIFY(QFile::setPermissions("b.velantor"_s, QFile::Permissions()));
    QCOMPARE(inChild([] {
                 if (!becomeOrdinaryUser())
                     return 2;
                 return VelantorBundle("b.velantor"_s).parseBundle() ? 1 : 0;
             }),
             0);
    QCOMPARE(filesHere(), QStringList());
}

void VelantorBundleTest::hostileBundlesTakeLittleMemory_data()
{
    QTest::addColumn<QByteArray>("start");
    QTest::addColumn<QByteArray>("piece"); // again and again up to the size
    const QByteArray memberStart = tables + "////// v1.hex //////\n";
    QTest::newRow("keys") << QByteArray("...\n") << QByteArray("%1=1\n");
    QTest::newRow("one key") << QByteArray("...\n") << QByteArray("k");
    QTest::newRow("equals signs") << QByteArray("...\n") << QByteArray("=");
    QTest::newRow("empty header lines") << QByteArray("...\n") << QByteArray("\n");
    QTest::newRow("empty lines") << QByteArray() << QByteArray("\n");
    QTest::newRow("carriage returns") << QByteArray() << QByteArray("\r");
    QTest::newRow("slashes") << QByteArray() << QByteArray("/");
    QTest::newRow("empty members") << QByteArray() << QByteArray("////////////\n" + ::endLine);
    QTest::newRow("short lines in a member") << memberStart << QByteArray("\n");
    QTest::newRow("long line in a member") << memberStart << QByteArray("x");
    QTest::newRow("backslashes in a member") << memberStart << QByteArray("\\");
    QTest::newRow("almost an end line") << memberStart + R"(\\\END FILE)" << QByteArray(" ");
    QTest::newRow("many ends") << memberStart << QByteArray(R"(\\END FILE\\)");
}

void VelantorBundleTest::hostileBundlesTakeLittleMemory()
{
    QFETCH(QByteArray, start);
    QFETCH(QByteArray, piece);
    QByteArray content = start;
    for (int i = 0; content.size() + 20 < VelantorBundle::longestBundle; ++i)
        content +=
            piece.contains("%1") ? QByteArray(piece).replace("%1", QByteArray::number(i)) : piece;
    write(content);
    content.clear();
    content.squeeze();
    QElapsedTimer timer;
    timer.start();
#ifdef __SANITIZE_ADDRESS__
    constexpr long allowedMegabytes = 500; // what was given back is kept for a while
#else
    constexpr long allowedMegabytes = 100;
#endif
    const int grown = inChild([] {
        const auto megabytes = [] {
            rusage usage{};
            getrusage(RUSAGE_SELF, &usage);
            return usage.ru_maxrss / 1024;
        };
        const long before = megabytes();
        VelantorBundle::getBundleVersion("b.velantor"_s);
        VelantorBundle("b.velantor"_s).parseBundle();
        return megabytes() - before < allowedMegabytes ? 0 : 1;
    });
    QCOMPARE(grown, 0);
    QVERIFY2(timer.elapsed() < 20000, QByteArray::number(timer.elapsed()) + " ms");
}

void VelantorBundleTest::longLinesAreReadInReasonableTime()
{
    const QByteArray blanks(2000000, ' ');
    const QByteArray backslashes(2000000, '\\');
    write("...\n" + blanks.left(300000) + "=\n" + QByteArray(300000, '=') + "\nVERSION = 1\n...\n" +
          tables + member("x.txt", backslashes + " END FILE\n" + "\\\\\\" + blanks + "END FILE\n"));
    QElapsedTimer timer;
    timer.start();
    VelantorBundle fresh("b.velantor"_s);
    QVERIFY(fresh.parseBundle());
    QCOMPARE(fresh.valueFromKey("VERSION"_s), "1"_s);
    QCOMPARE(folder->read("x.txt"_s).size(), 4000000 + 22);
    QVERIFY2(timer.elapsed() < 30000, QByteArray::number(timer.elapsed()) + " ms");
}

QTEST_GUILESS_MAIN(VelantorBundleTest)
#include "tst_velantorbundle.moc"
