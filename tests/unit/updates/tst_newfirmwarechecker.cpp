#include "updates/newfirmwarechecker.h"

#include "app/applicationglobalmap.h"
#include "support/filesizelimit.h"
#include "support/inchild.h"
#include "support/patience.h"
#include "support/updatesite.h"
#include "support/webserver.h"
#include "support/workingdirectory.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTest>

#include <memory>

using NewFirmwareChecker::FileDownloader;
using Info = QMap<QString, QString>;
using Checker = NewFirmwareChecker::NewFirmwareChecker;
using UpdateSite::BUNDLE;
using UpdateSite::DOCUMENT;

namespace
{
const QByteArray SAMPLE("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                        "<updates>\n"
                        "    <current_version>1.040</current_version>\n"
                        "    <download_link>https://site.example/v1.040.velantor</download_link>\n"
                        "    <download_size>340</download_size>\n"
                        "    <build_type>RELEASE</build_type>\n"
                        "    <hardware_version>7</hardware_version>\n"
                        "    <os name=\"Windows\">\n"
                        "        <sw_version>9.9</sw_version>\n"
                        "        <sw_link>https://site.example/windows</sw_link>\n"
                        "    </os>\n"
                        "    <os name=\"Linux\">\n"
                        "        <sw_version>1.106</sw_version>\n"
                        "        <sw_link>https://site.example/linux</sw_link>\n"
                        "    </os>\n"
                        "    <os name=\"Mac\">\n"
                        "        <sw_version>8.8</sw_version>\n"
                        "        <sw_link>https://site.example/mac</sw_link>\n"
                        "    </os>\n"
                        "</updates>\n");

QStringList files()
{
    return QDir().entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}
} // namespace

/// What is made of the information document, and how a bundle comes into the current directory.
class NewFirmwareCheckerTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void readsTheDocument();
    void readsItInAnyShape_data();
    void readsItInAnyShape();
    void damageOnlyShortensIt();
    void hugeEntitiesEndQuickly();
    void infosStay();
    void bundleIsNeededWhenNewer_data();
    void bundleIsNeededWhenNewer();
    void softwareIsNewWhenNewer_data();
    void softwareIsNewWhenNewer();
    void longVersionsTakeNoTime();

    void asksTheSite();
    void documentsThatCannotBeFetchedAreErrors_data();
    void documentsThatCannotBeFetchedAreErrors();
    void documentsAreSmall_data();
    void documentsAreSmall();
    void emptyDocumentSaysNothing();
    void storesTheBundle();
    void replacesABundleOfThatName();
    void whatIsFetchedIsNotJudged();
    void whatIsNoFileIsNotStored_data();
    void whatIsNoFileIsNotStored();
    void versionsThatAreNoneNameNoFile_data();
    void versionsThatAreNoneNameNoFile();
    void obstacleIsAnError();
    void fullDiskLeavesNothing_data();
    void fullDiskLeavesNothing();
    void readOnlyFolderIsAnError();
    void bundlesThatCannotBeFetchedAreErrors_data();
    void bundlesThatCannotBeFetchedAreErrors();
    void localFilesAreNoBundles();
    void theLibrarysEndIsToldOnce();
    void cancelledFetchIsSilent();

private:
    struct Told {
        Info firmware;
        Info software;
    };
    /// What a document says.
    static Told read(const QByteArray &document);
    /// A document that names a bundle.
    static QByteArray document(const QString &version, const QString &link);
    /// Fetches a document from the server that leads to BUNDLE there.
    bool fetchInfo(const QString &version = QStringLiteral("1.040"));
    bool fetchBundle();
    static bool awaitOne(const QSignalSpy &good, const QSignalSpy &bad);

    std::unique_ptr<WorkingDirectory> folder;
    std::unique_ptr<WebServer> server;
    std::unique_ptr<Checker> checker;
    std::unique_ptr<QSignalSpy> info;
    std::unique_ptr<QSignalSpy> stored;
    std::unique_ptr<QSignalSpy> error;
};

void NewFirmwareCheckerTest::init()
{
    qRegisterMetaType<Info>();
    folder = std::make_unique<WorkingDirectory>();
    if (server)
        server->forget();
    else
        server = std::make_unique<WebServer>();
    server->becomeTheSite();
    checker = std::make_unique<Checker>();
    info = std::make_unique<QSignalSpy>(checker.get(), &Checker::infoDownloaded);
    stored = std::make_unique<QSignalSpy>(checker.get(), &Checker::firmwareDownloaded);
    error = std::make_unique<QSignalSpy>(checker.get(), &Checker::error);
    ApplicationGlobalMap::putString(QStringLiteral("bundle_version"), QStringLiteral("1.039"));
}

void NewFirmwareCheckerTest::cleanup()
{
    checker.reset();
    info.reset();
    stored.reset();
    error.reset();
    folder.reset();
}

NewFirmwareCheckerTest::Told NewFirmwareCheckerTest::read(const QByteArray &document)
{
    Checker checker;
    QSignalSpy info(&checker, &Checker::infoDownloaded);
    QSignalSpy error(&checker, &Checker::error);
    checker.on_InfoDownloaded(document);
    if (info.size() != 1 || !error.isEmpty())
        qFatal("a document is told once");
    return {info.first().at(0).value<Info>(), info.first().at(1).value<Info>()};
}

QByteArray NewFirmwareCheckerTest::document(const QString &version, const QString &link)
{
    return QStringLiteral("<updates>\n<current_version>%1</current_version>\n"
                          "<download_link>%2</download_link>\n</updates>\n")
        .arg(version.toHtmlEscaped(), link.toHtmlEscaped())
        .toUtf8();
}

bool NewFirmwareCheckerTest::awaitOne(const QSignalSpy &good, const QSignalSpy &bad)
{
    if (!QTest::qWaitFor([&] { return good.size() + bad.size() > 0; }, PATIENCE))
        qFatal("nothing is told");
    QCoreApplication::processEvents();
    if (good.size() + bad.size() != 1)
        qFatal("the end is told more than once");
    return !good.isEmpty();
}

bool NewFirmwareCheckerTest::fetchInfo(const QString &version)
{
    server->setAnswer(DOCUMENT, document(version, server->url(BUNDLE)));
    checker->downloadXMLInfo();
    const bool fetched = awaitOne(*info, *error);
    return fetched;
}

bool NewFirmwareCheckerTest::fetchBundle()
{
    checker->downloadLatestFirmware();
    return awaitOne(*stored, *error);
}

void NewFirmwareCheckerTest::readsTheDocument()
{
    const Told told = read(SAMPLE);
    QCOMPARE(told.firmware, Info({{"current_version", "1.040"},
                                  {"download_link", "https://site.example/v1.040.velantor"},
                                  {"download_size", "340"},
                                  {"build_type", "RELEASE"},
                                  {"hardware_version", "7"}}));
    QCOMPARE(told.software,
             Info({{"sw_version", "1.106"}, {"sw_link", "https://site.example/linux"}}));
}

void NewFirmwareCheckerTest::readsItInAnyShape_data()
{
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<Info>("firmware");
    QTest::addColumn<Info>("software");
    const Info none;
    const Info linux{{"sw_version", "1.2"}, {"sw_link", "x"}};

    QTest::newRow("empty") << QByteArray() << none << none;
    QTest::newRow("no XML") << QByteArray("Not found") << none << none;
    QTest::newRow("zeros") << QByteArray(100, '\0') << none << none;
    QTest::newRow("nothing inside") << QByteArray("<updates/>") << none << none;
    QTest::newRow("a web page")
        << QByteArray("<!DOCTYPE html><html><head><title>Log in</title></head></html>") << none
        << none;
    QTest::newRow("root of another name")
        << QByteArray("<news><current_version>1.2</current_version></news>")
        << Info{{"current_version", "1.2"}} << none;
    QTest::newRow("a bundle element as root")
        << QByteArray("<current_version>1.2</current_version>") << Info{{"current_version", "1.2"}}
        << none;
    QTest::newRow("deep inside")
        << QByteArray("<updates><a><b><current_version>1.2</current_version></b></a></updates>")
        << Info{{"current_version", "1.2"}} << none;
    QTest::newRow("inside an os, which does not matter to bundles")
        << QByteArray("<updates><os name=\"Mac\">\n<build_type>X</build_type>\n</os></updates>")
        << Info{{"build_type", "X"}} << none;
    QTest::newRow("the last one wins")
        << QByteArray("<updates><build_type>A</build_type><build_type>B</build_type></updates>")
        << Info{{"build_type", "B"}} << none;
    QTest::newRow("empty element")
        << QByteArray("<updates><build_type/></updates>") << Info{{"build_type", ""}} << none;
    QTest::newRow("other elements")
        << QByteArray("<updates><colour>red</colour><Build_type>A</Build_type></updates>") << none
        << none;
    QTest::newRow("escaped text")
        << QByteArray("<updates><download_link>h?a=1&amp;b=&lt;</download_link></updates>")
        << Info{{"download_link", "h?a=1&b=<"}} << none;
    QTest::newRow("white space stays")
        << QByteArray("<updates><current_version> 1.2\n</current_version></updates>")
        << Info{{"current_version", " 1.2\n"}} << none;
    QTest::newRow("software outside of an os")
        << QByteArray("<updates>\n<sw_version>1.2</sw_version>\n</updates>") << none << none;
    QTest::newRow("this platform")
        << QByteArray("<os name=\"Linux\">\n<sw_version>1.2</sw_version>\n<sw_link>x</sw_link>\n"
                      "</os>")
        << none << linux;
    QTest::newRow("the link first")
        << QByteArray("<os name=\"Linux\">\n<sw_link>x</sw_link>\n<sw_version>1.2</sw_version>\n"
                      "</os>")
        << none << linux;
    QTest::newRow("no white space before the first")
        << QByteArray("<os name=\"Linux\"><sw_version>1.2</sw_version>\n<sw_link>x</sw_link></os>")
        << none << linux;
    QTest::newRow("no white space between them")
        << QByteArray("<os name=\"Linux\">\n<sw_version>1.2</sw_version><sw_link>x</sw_link>\n"
                      "</os>")
        << none << Info{{"sw_version", "1.2"}};
    QTest::newRow("another element between them")
        << QByteArray("<os name=\"Linux\">\n<sw_version>1.2</sw_version>\n<size>3</size>\n"
                      "<sw_link>x</sw_link>\n</os>")
        << none << Info{{"sw_version", "1.2"}};
    QTest::newRow("another element before them")
        << QByteArray("<os name=\"Linux\">\n<size>3</size>\n<sw_version>1.2</sw_version>\n</os>")
        << none << none;
    QTest::newRow("another end tag") << QByteArray("<os name=\"Linux\">\n<sw_version>1.2</os>")
                                     << none << Info{{"sw_version", "1.2"}};
    for (const char *name : {"Windows", "linux", "Linux ", ""})
        QTest::addRow("platform \"%s\"", name)
            << QByteArray("<os name=\"") + name + "\">\n<sw_version>1.2</sw_version>\n</os>" << none
            << none;
    QTest::newRow("no platform") << QByteArray("<os>\n<sw_version>1.2</sw_version>\n</os>") << none
                                 << none;
    QTest::newRow("nothing for this platform")
        << QByteArray("<updates><os name=\"Linux\"/>\n<os name=\"Mac\">\n"
                      "<sw_version>1.2</sw_version>\n</os></updates>")
        << none << none;
    QTest::newRow("bundle elements behind the software")
        << QByteArray("<updates>\n<os name=\"Linux\">\n<sw_version>1.2</sw_version>\n"
                      "<sw_link>x</sw_link>\n</os>\n<build_type>A</build_type>\n</updates>")
        << Info{{"build_type", "A"}} << linux;
}

void NewFirmwareCheckerTest::readsItInAnyShape()
{
    QFETCH(QByteArray, document);
    QFETCH(Info, firmware);
    QFETCH(Info, software);
    const Told told = read(document);
    QCOMPARE(told.firmware, firmware);
    QCOMPARE(told.software, software);
}

void NewFirmwareCheckerTest::damageOnlyShortensIt()
{
    const Told whole = read(SAMPLE);
    for (int size = 0; size < SAMPLE.size(); ++size) {
        const Told told = read(SAMPLE.left(size));
        for (const QString &key : told.firmware.keys())
            QVERIFY(whole.firmware.value(key).startsWith(told.firmware.value(key)));
        for (const QString &key : told.software.keys())
            QVERIFY(whole.software.value(key).startsWith(told.software.value(key)));
    }
    // What stands before the damage counts.
    const QByteArray damaged = SAMPLE.left(SAMPLE.indexOf("<build_type>")) + "</os></nothing><";
    QCOMPARE(read(damaged).firmware,
             Info({{"current_version", "1.040"},
                   {"download_link", "https://site.example/v1.040.velantor"},
                   {"download_size", "340"}}));
}

void NewFirmwareCheckerTest::hugeEntitiesEndQuickly()
{
    QByteArray document(
        "<?xml version=\"1.0\"?>\n<!DOCTYPE updates [\n<!ENTITY a \"aaaaaaaaaa\">\n");
    for (char name = 'b'; name <= 'z'; ++name)
        document += QByteArray("<!ENTITY ") + name + " \"" +
                    QByteArray(10, '\0').replace('\0', QByteArray("&") + char(name - 1) + ";") +
                    "\">\n";
    document += "]>\n<updates>\n<current_version>&z;</current_version>\n</updates>\n";
    const Told told = read(document);
    QVERIFY(told.firmware.value("current_version").size() < 10000);
}

void NewFirmwareCheckerTest::infosStay()
{
    checker->on_InfoDownloaded("<updates><build_type>A</build_type></updates>");
    checker->on_InfoDownloaded("<updates><download_size>3</download_size></updates>");
    QCOMPARE(info->last().at(0).value<Info>(), Info({{"build_type", "A"}, {"download_size", "3"}}));
}

void NewFirmwareCheckerTest::bundleIsNeededWhenNewer_data()
{
    QTest::addColumn<QString>("latest");
    QTest::addColumn<QString>("installed");
    QTest::addColumn<bool>("needed");
    QTest::newRow("newer") << "1.040"
                           << "1.039" << true;
    QTest::newRow("same") << "1.039"
                          << "1.039" << false;
    QTest::newRow("same number") << "1.39"
                                 << "1.039" << false;
    QTest::newRow("older") << "1.038"
                           << "1.039" << false;
    QTest::newRow("by number, not by text") << "1.100"
                                            << "1.039" << true;
    QTest::newRow("more detailed") << "1.039.0"
                                   << "1.039" << true;
    QTest::newRow("surrounded by white space") << "\n 1.040 \n"
                                               << "1.039" << true;
    QTest::newRow("no version") << ""
                                << "1.039" << false;
    QTest::newRow("with a letter") << "v1.040"
                                   << "1.039" << false;
    QTest::newRow("no version installed") << "1.000"
                                          << "" << true;
    QTest::newRow("no version at all") << ""
                                       << "" << false;
}

void NewFirmwareCheckerTest::bundleIsNeededWhenNewer()
{
    QFETCH(QString, latest);
    QFETCH(QString, installed);
    QFETCH(bool, needed);
    ApplicationGlobalMap::putString(QStringLiteral("bundle_version"), installed);
    checker->on_InfoDownloaded(document(latest, QString()));
    QCOMPARE(checker->downloadNeeded(), needed);
    QVERIFY(!Checker().downloadNeeded()); // nothing is known
}

void NewFirmwareCheckerTest::softwareIsNewWhenNewer_data()
{
    QTest::addColumn<QString>("latest");
    QTest::addColumn<bool>("isNew");
    QTest::newRow("newer") << "1.106" << true;
    QTest::newRow("much newer") << "2.0" << true;
    QTest::newRow("same") << "1.105" << false;
    QTest::newRow("older") << "1.104" << false;
    QTest::newRow("older, though longer by text") << "1.99" << false;
    QTest::newRow("with a letter") << "v1.106" << false;
    QTest::newRow("empty") << "" << false;
}

void NewFirmwareCheckerTest::softwareIsNewWhenNewer()
{
    QFETCH(QString, latest);
    QFETCH(bool, isNew);
    checker->on_InfoDownloaded("<os name=\"Linux\">\n<sw_version>" + latest.toUtf8() +
                               "</sw_version>\n</os>");
    QCOMPARE(checker->isSoftwareUpdate(), isNew);
    QVERIFY(!Checker().isSoftwareUpdate());
}

void NewFirmwareCheckerTest::longVersionsTakeNoTime()
{
    for (const QByteArray &part : {QByteArray("1."), QByteArray("1"), QByteArray("1.x")}) {
        QByteArray version;
        while (version.size() < 1000000)
            version += part;
        checker->on_InfoDownloaded(document(QString::fromLatin1(version + "1"), QString()));
        QElapsedTimer watch;
        watch.start();
        checker->downloadNeeded();
        QVERIFY(watch.elapsed() < PATIENCE);
        checker->on_firmwareDownloaded("...\n");
    }
    QVERIFY(stored->isEmpty());
    QCOMPARE(error->size(), 3);
    QCOMPARE(files(), QStringList());
}

void NewFirmwareCheckerTest::asksTheSite()
{
    server->setAnswer(DOCUMENT, SAMPLE);
    checker->downloadXMLInfo();
    QVERIFY(awaitOne(*info, *error));
    QCOMPARE(server->requests().size(), 1);
    QCOMPARE(server->requests().first().path, DOCUMENT);
    QCOMPARE(server->requests().first().agent, QStringLiteral("Tolk-Tech-Velantor-Profile-Editor"));
    QCOMPARE(info->first().at(0).value<Info>().value("current_version"), QStringLiteral("1.040"));
    QCOMPARE(info->first().at(1).value<Info>().value("sw_version"), QStringLiteral("1.106"));
    QVERIFY(checker->downloadNeeded());
    QVERIFY(checker->isSoftwareUpdate());
    QCOMPARE(files(), QStringList()); // nothing is fetched without being asked for
}

void NewFirmwareCheckerTest::documentsThatCannotBeFetchedAreErrors_data()
{
    QTest::addColumn<QString>("how");
    QTest::addColumn<int>("status");
    QTest::newRow("missing") << "whole" << 404;
    QTest::newRow("server error") << "whole" << 500;
    QTest::newRow("redirect") << "whole" << 302;
    QTest::newRow("connection cut") << "cut" << 200;
    QTest::newRow("without an end") << "endless" << 200;
    QTest::newRow("2 GB") << "huge" << 200;
}

void NewFirmwareCheckerTest::documentsThatCannotBeFetchedAreErrors()
{
    QFETCH(QString, how);
    QFETCH(int, status);
    server->setAnswer(DOCUMENT, SAMPLE, how, status);
    checker->downloadXMLInfo();
    QVERIFY(!awaitOne(*info, *error));
    QVERIFY(!checker->downloadNeeded());
    QTRY_VERIFY(server->state(DOCUMENT) != QLatin1String("open"));
    QVERIFY(server->requests().first().sent < 50000000);
}

void NewFirmwareCheckerTest::documentsAreSmall_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<bool>("isRead");
    QTest::newRow("1 MiB") << 1024 * 1024 << true;
    QTest::newRow("a byte more") << 1024 * 1024 + 1 << false;
}

void NewFirmwareCheckerTest::documentsAreSmall()
{
    QFETCH(int, size);
    QFETCH(bool, isRead);
    server->setAnswer(DOCUMENT, SAMPLE + QByteArray(size - SAMPLE.size(), ' '));
    checker->downloadXMLInfo();
    QCOMPARE(awaitOne(*info, *error), isRead);
    QCOMPARE(checker->downloadNeeded(), isRead);
}

void NewFirmwareCheckerTest::emptyDocumentSaysNothing()
{
    server->setAnswer(DOCUMENT, QByteArray());
    checker->downloadXMLInfo();
    QVERIFY(awaitOne(*info, *error));
    QCOMPARE(info->first().at(0).value<Info>(), Info());
    QCOMPARE(info->first().at(1).value<Info>(), Info());
}

void NewFirmwareCheckerTest::storesTheBundle()
{
    QByteArray bundle("...\nVERSION = 1.040\n...\n");
    while (bundle.size() < 400000)
        bundle += "; a line\r\n\x00\xff\n";
    server->setAnswer(BUNDLE, bundle);
    QVERIFY(fetchInfo());
    QVERIFY(fetchBundle());
    QCOMPARE(files(), QStringList("v1.040.velantor"));
    QCOMPARE(folder->read("v1.040.velantor"), bundle);
    QCOMPARE(server->count(DOCUMENT), 1);
    QCOMPARE(server->count(BUNDLE), 1);
    QCOMPARE(info->size(), 1); // the bundle is not taken for a document
}

void NewFirmwareCheckerTest::replacesABundleOfThatName()
{
    folder->write("v1.040.velantor", "an older one, which was longer");
    server->setAnswer(BUNDLE, "...\nnew\n");
    QVERIFY(fetchInfo());
    QVERIFY(fetchBundle());
    QCOMPARE(files(), QStringList("v1.040.velantor"));
    QCOMPARE(folder->read("v1.040.velantor"), QByteArray("...\nnew\n"));
}

void NewFirmwareCheckerTest::whatIsFetchedIsNotJudged()
{
    checker->on_InfoDownloaded(document("1.041", QString()));
    checker->on_firmwareDownloaded("of no use");
    QCOMPARE(stored->size(), 1);
    QVERIFY(error->isEmpty());
    QCOMPARE(folder->read("v1.041.velantor"), QByteArray("of no use"));
}

void NewFirmwareCheckerTest::whatIsNoFileIsNotStored_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("a web page") << QByteArray("<!DOCTYPE html><html></html>");
    QTest::newRow("a web page behind empty lines") << QByteArray("\r\n\n <html>\n");
}

void NewFirmwareCheckerTest::whatIsNoFileIsNotStored()
{
    QFETCH(QByteArray, reply);
    folder->write("v1.040.velantor", "an older one");
    server->setAnswer(BUNDLE, reply);
    QVERIFY(fetchInfo());
    QVERIFY(!fetchBundle());
    QCOMPARE(folder->read("v1.040.velantor"), QByteArray("an older one"));
}

void NewFirmwareCheckerTest::versionsThatAreNoneNameNoFile_data()
{
    QTest::addColumn<QString>("version");
    QTest::newRow("empty") << QString();
    QTest::newRow("above") << "/../../above";
    QTest::newRow("absolute") << "/etc/passwd";
    QTest::newRow("a folder") << "1/2";
    QTest::newRow("dots") << "..";
    QTest::newRow("a letter") << "1.040b";
    QTest::newRow("two lines") << "1.040\n1.041";
    QTest::newRow("another extension") << "1.040.velantor/x";
    QTest::newRow("zeros") << QString(2, QChar());
}

void NewFirmwareCheckerTest::versionsThatAreNoneNameNoFile()
{
    QFETCH(QString, version);
    QVERIFY(QDir().mkdir("sub") && QDir::setCurrent("sub"));
    checker->on_InfoDownloaded(document(version, QString()));
    checker->on_firmwareDownloaded("...\n");
    QCOMPARE(files(), QStringList());
    QVERIFY(QDir::setCurrent(folder->path()));
    QCOMPARE(files(), QStringList("sub"));
    QVERIFY(stored->isEmpty());
    QCOMPARE(error->size(), 1);
}

void NewFirmwareCheckerTest::obstacleIsAnError()
{
    QVERIFY(QDir().mkdir("v1.040.velantor"));
    server->setAnswer(BUNDLE, "...\n");
    QVERIFY(fetchInfo());
    QVERIFY(!fetchBundle());
    QCOMPARE(files(), QStringList("v1.040.velantor"));
    QVERIFY(QDir("v1.040.velantor").isEmpty());
}

void NewFirmwareCheckerTest::fullDiskLeavesNothing_data()
{
    QTest::addColumn<int>("size");
    QTest::newRow("small bundle") << 100;
    QTest::newRow("usual bundle") << 400000;
}

void NewFirmwareCheckerTest::fullDiskLeavesNothing()
{
    QFETCH(int, size);
    checker->on_InfoDownloaded(document("1.040", QString()));
    for (int room : {0, size / 2, size - 1}) {
        const FileSizeLimit limit(static_cast<rlim_t>(room));
        checker->on_firmwareDownloaded(QByteArray(size, '.'));
    }
    QVERIFY(stored->isEmpty());
    QCOMPARE(error->size(), 3);
    QCOMPARE(files(), QStringList());
    checker->on_firmwareDownloaded(QByteArray(size, '.'));
    QCOMPARE(stored->size(), 1);
    QCOMPARE(folder->read("v1.040.velantor").size(), size);
}

void NewFirmwareCheckerTest::readOnlyFolderIsAnError()
{
    checker->on_InfoDownloaded(document("1.040", QString()));
    QVERIFY(QFile::setPermissions(folder->path(), QFile::Permissions(0x5555)));
    const int refused = inChild([this] {
        if (!becomeOrdinaryUser())
            return 2;
        checker->on_firmwareDownloaded("...\n");
        return stored->isEmpty() && error->size() == 1 ? 1 : 0;
    });
    QVERIFY(QFile::setPermissions(folder->path(), QFile::Permissions(0x7777)));
    QCOMPARE(refused, 1);
    QCOMPARE(files(), QStringList());
}

void NewFirmwareCheckerTest::bundlesThatCannotBeFetchedAreErrors_data()
{
    documentsThatCannotBeFetchedAreErrors_data();
    QTest::newRow("connection closed") << "close" << 200;
}

void NewFirmwareCheckerTest::bundlesThatCannotBeFetchedAreErrors()
{
    QFETCH(QString, how);
    QFETCH(int, status);
    server->setAnswer(BUNDLE, "...\nVERSION = 1.040\n...\n", how, status);
    QVERIFY(fetchInfo());
    QVERIFY(!fetchBundle());
    QCOMPARE(files(), QStringList());
    QTRY_VERIFY(server->state(BUNDLE) != QLatin1String("open"));
    QVERIFY(server->requests().last().sent < 100000000);
}

void NewFirmwareCheckerTest::localFilesAreNoBundles()
{
    folder->write("private", "...\nprivate\n");
    for (const QString &link :
         {QStringLiteral("file://") + folder->path() + "/private", folder->path() + "/private",
          QStringLiteral("private"), QString()}) {
        checker->on_InfoDownloaded(document("1.040", link));
        error->clear();
        QVERIFY(!fetchBundle());
        QCOMPARE(files(), QStringList("private"));
    }
}

void NewFirmwareCheckerTest::theLibrarysEndIsToldOnce()
{
    // A second check by the same object is one check more, not two.
    server->setAnswer(DOCUMENT, SAMPLE);
    checker->downloadXMLInfo();
    QVERIFY(awaitOne(*info, *error));
    info->clear();
    checker->downloadXMLInfo();
    QVERIFY(awaitOne(*info, *error));
}

void NewFirmwareCheckerTest::cancelledFetchIsSilent()
{
    server->setAnswer(BUNDLE, "...\nVERSION = 1.040\n...\n", "stall");
    QVERIFY(fetchInfo());
    info->clear();
    checker->downloadLatestFirmware();
    QTRY_COMPARE(server->state(BUNDLE), QStringLiteral("open"));
    checker->cancel();
    QTRY_COMPARE(server->state(BUNDLE), QStringLiteral("left"));
    QCoreApplication::processEvents();
    QVERIFY(info->isEmpty() && stored->isEmpty() && error->isEmpty());
    QCOMPARE(files(), QStringList());
}

QTEST_GUILESS_MAIN(NewFirmwareCheckerTest)
#include "tst_newfirmwarechecker.moc"
