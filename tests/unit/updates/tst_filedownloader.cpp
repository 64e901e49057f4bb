#include "updates/filedownloader.h"

#include "support/patience.h"
#include "support/webserver.h"

#include <QElapsedTimer>
#include <QFile>
#include <QSignalSpy>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryFile>
#include <QTest>

#include <memory>

using NewFirmwareChecker::FileDownloader;

namespace
{
const QString PATH = QStringLiteral("/file");

QByteArray bytes(int count)
{
    QByteArray result(count, Qt::Uninitialized);
    for (int i = 0; i < count; ++i)
        result[i] = static_cast<char>(i * 7 + i / 251);
    return result;
}
} // namespace

/// Fetching files from a real server.
class FileDownloaderTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void fetchesTheWholeFile_data();
    void fetchesTheWholeFile();
    void namesItself();
    void tellsHowFarItIs();
    void wholeFileIsTakenAsItIs();
    void refusedRepliesAreErrors_data();
    void refusedRepliesAreErrors();
    void redirectsAreNotFollowed_data();
    void redirectsAreNotFollowed();
    void brokenConnectionsAreErrors_data();
    void brokenConnectionsAreErrors();
    void repliesThatEndWithTheConnectionAreWhole_data();
    void repliesThatEndWithTheConnectionAreWhole();
    void nobodyThereIsAnError();
    void otherAddressesAreErrors_data();
    void otherAddressesAreErrors();
    void errorsComeLater();
    void tooMuchIsAnError_data();
    void tooMuchIsAnError();
    void exactlyEnoughIsNone();
    void aSecondDownloadEndsTheFirst();
    void aDroppedDownloadIsSilent_data();
    void aDroppedDownloadIsSilent();
    void aFileMayBeFetchedFromWithinTheEnd();
    void worksAgainAfterAnError();
    void knownAuthorityIsTrusted();
    void otherCertificatesAreErrors_data();
    void otherCertificatesAreErrors();

private:
    /// Waits for the one end of a download; true for finished().
    bool fetch(const QString &url);
    QByteArray data() const { return finished->value(0).value(0).toByteArray(); }

    std::unique_ptr<WebServer> server;
    std::unique_ptr<FileDownloader> downloader;
    std::unique_ptr<QSignalSpy> finished;
    std::unique_ptr<QSignalSpy> error;
};

void FileDownloaderTest::init()
{
    if (server)
        server->forget();
    else
        server = std::make_unique<WebServer>();
    downloader = std::make_unique<FileDownloader>();
    finished = std::make_unique<QSignalSpy>(downloader.get(), &FileDownloader::finished);
    error = std::make_unique<QSignalSpy>(downloader.get(), &FileDownloader::error);
}

void FileDownloaderTest::cleanup()
{
    downloader.reset();
    finished.reset();
    error.reset();
}

bool FileDownloaderTest::fetch(const QString &url)
{
    finished->clear();
    error->clear();
    downloader->startDownloading(url);
    if (!QTest::qWaitFor([this] { return finished->size() + error->size() > 0; }, PATIENCE))
        qFatal("the download does not end");
    // The end comes once.
    QCoreApplication::processEvents();
    if (finished->size() + error->size() != 1)
        qFatal("the download ends more than once");
    return !finished->isEmpty();
}

void FileDownloaderTest::fetchesTheWholeFile_data()
{
    QTest::addColumn<int>("size");
    for (const int size : {0, 1, 262143, 262144, 262145, 5000000})
        QTest::addRow("%d bytes", size) << size;
}

void FileDownloaderTest::fetchesTheWholeFile()
{
    QFETCH(int, size);
    server->setAnswer(PATH, bytes(size));
    QVERIFY(fetch(server->url(PATH)));
    QCOMPARE(data().size(), size);
    QCOMPARE(data(), bytes(size));
}

void FileDownloaderTest::namesItself()
{
    fetch(server->url(PATH));
    fetch(server->url(PATH));
    QCOMPARE(server->requests().size(), 2);
    for (const WebServer::Request &request : server->requests())
        QCOMPARE(request.agent, QStringLiteral("Tolk-Tech-Velantor-Profile-Editor"));
}

void FileDownloaderTest::tellsHowFarItIs()
{
    server->setAnswer(PATH, bytes(1000000));
    QSignalSpy progress(downloader.get(), &FileDownloader::downloadProgress);
    QVERIFY(fetch(server->url(PATH)));
    QVERIFY(!progress.isEmpty());
    qint64 before = 0;
    for (const QList<QVariant> &told : progress) {
        QVERIFY(told.first().toLongLong() >= before);
        before = told.first().toLongLong();
    }
    QCOMPARE(before, qint64(1000000));
}

/// Nothing unpacks itself on the way, to a size that nobody has seen before.
void FileDownloaderTest::wholeFileIsTakenAsItIs()
{
    const QByteArray packed =
        QByteArray::fromHex("1f8b0800000000000203cb48cdc9c9070086a6103605000000"); // hello
    WebServer::Answer answer;
    answer.body = packed;
    answer.headers[QStringLiteral("Content-Encoding")] = QStringLiteral("gzip");
    server->setAnswer(PATH, answer);
    QVERIFY(fetch(server->url(PATH)));
    QCOMPARE(data(), packed);
}

void FileDownloaderTest::refusedRepliesAreErrors_data()
{
    QTest::addColumn<int>("status");
    for (const int status : {400, 401, 403, 404, 407, 410, 429, 500, 502, 503})
        QTest::addRow("%d", status) << status;
}

void FileDownloaderTest::refusedRepliesAreErrors()
{
    QFETCH(int, status);
    server->setAnswer(PATH, "a page about that", QStringLiteral("whole"), status);
    QVERIFY(!fetch(server->url(PATH)));
    QCOMPARE(server->count(PATH), 1);
}

void FileDownloaderTest::redirectsAreNotFollowed_data()
{
    QTest::addColumn<int>("status");
    for (const int status : {300, 301, 302, 303, 304, 307, 308})
        QTest::addRow("%d", status) << status;
}

void FileDownloaderTest::redirectsAreNotFollowed()
{
    QFETCH(int, status);
    server->setAnswer(PATH, "the file");
    WebServer::Answer answer;
    answer.status = status;
    answer.body = "it is over there";
    answer.headers[QStringLiteral("Location")] = server->url(PATH);
    server->setAnswer(QStringLiteral("/moved"), answer);
    QVERIFY(!fetch(server->url(QStringLiteral("/moved"))));
    QCOMPARE(server->count(PATH), 0);
}

void FileDownloaderTest::brokenConnectionsAreErrors_data()
{
    QTest::addColumn<QString>("how");
    for (const char *how : {"cut", "close"})
        QTest::newRow(how) << QString::fromLatin1(how);
}

void FileDownloaderTest::brokenConnectionsAreErrors()
{
    QFETCH(QString, how);
    server->setAnswer(PATH, bytes(100000), how);
    QVERIFY(!fetch(server->url(PATH)));
}

void FileDownloaderTest::repliesThatEndWithTheConnectionAreWhole_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<bool>("whole");
    const QByteArray ok("HTTP/1.1 200 OK\r\n");
    QTest::newRow("all of it") << ok + "Content-Length: 5\r\n\r\n12345" << true;
    QTest::newRow("one byte short") << ok + "Content-Length: 5\r\n\r\n1234" << false;
    QTest::newRow("long, one byte short")
        << ok + "Content-Length: 1000001\r\n\r\n" + bytes(1000000) << false;
    QTest::newRow("no byte") << ok + "Content-Length: 5\r\n\r\n" << false;
    QTest::newRow("size unknown") << ok + "\r\n12345" << true;
    QTest::newRow("chunks") << ok + "Transfer-Encoding: chunked\r\n\r\n5\r\n12345\r\n0\r\n\r\n"
                            << true;
}

void FileDownloaderTest::repliesThatEndWithTheConnectionAreWhole()
{
    QFETCH(QByteArray, reply);
    QFETCH(bool, whole);
    // The reply and the end of the connection are there before the downloader looks for either.
    QTcpServer listener;
    QVERIFY(listener.listen(QHostAddress::LocalHost));
    connect(&listener, &QTcpServer::newConnection, this, [&] {
        const std::unique_ptr<QTcpSocket> socket(listener.nextPendingConnection());
        QVERIFY(socket->waitForReadyRead(PATIENCE));
        socket->readAll();
        socket->write(reply);
        socket->disconnectFromHost();
        QVERIFY(socket->state() == QAbstractSocket::UnconnectedState ||
                socket->waitForDisconnected(PATIENCE));
    });
    const QString url = QStringLiteral("http://127.0.0.1:%1/file").arg(listener.serverPort());
    for (int time = 0; time < 20; ++time) {
        QCOMPARE(fetch(url), whole);
        if (whole)
            QCOMPARE(data(), QByteArray("12345"));
    }
}

void FileDownloaderTest::nobodyThereIsAnError()
{
    // A port that was free a moment ago.
    QTcpServer listener;
    QVERIFY(listener.listen(QHostAddress::LocalHost));
    const QString url = QStringLiteral("http://127.0.0.1:%1/file").arg(listener.serverPort());
    listener.close();
    QVERIFY(!fetch(url));
}

void FileDownloaderTest::otherAddressesAreErrors_data()
{
    QTest::addColumn<QString>("url");
    QTest::newRow("empty") << QString();
    QTest::newRow("a file of this computer") << QStringLiteral("file://{file}");
    QTest::newRow("a file of this computer, by its path") << QStringLiteral("{file}");
    QTest::newRow("relative") << QStringLiteral("bundles/v1.040.velantor");
    QTest::newRow("without a scheme") << QStringLiteral("//127.0.0.1/file");
    QTest::newRow("without a host") << QStringLiteral("http:///file");
    QTest::newRow("scheme only") << QStringLiteral("https:");
    QTest::newRow("FTP") << QStringLiteral("ftp://127.0.0.1/file");
    QTest::newRow("data") << QStringLiteral("data:text/plain,hello");
    QTest::newRow("embedded") << QStringLiteral("qrc:/new/images/upload.png");
    QTest::newRow("embedded, by its path") << QStringLiteral(":/new/images/upload.png");
    QTest::newRow("no address") << QStringLiteral("http://[::1/ %%% \n");
    QTest::newRow("zeros") << QString(3, QChar());
}

void FileDownloaderTest::otherAddressesAreErrors()
{
    QFETCH(QString, url);
    QTemporaryFile file;
    QVERIFY(file.open());
    file.write("private");
    file.flush();
    QVERIFY(!fetch(url.replace(QStringLiteral("{file}"), file.fileName())));
}

void FileDownloaderTest::errorsComeLater()
{
    downloader->startDownloading(QString());
    QVERIFY(error->isEmpty());
    QTRY_COMPARE(error->size(), 1);
    QVERIFY(finished->isEmpty());
}

void FileDownloaderTest::tooMuchIsAnError_data()
{
    QTest::addColumn<QString>("how");
    QTest::addColumn<int>("size");
    QTest::newRow("a byte too much") << QStringLiteral("whole") << 1000001;
    QTest::newRow("without an end") << QStringLiteral("endless") << 0;
    QTest::newRow("2 GB") << QStringLiteral("huge") << 0;
}

void FileDownloaderTest::tooMuchIsAnError()
{
    QFETCH(QString, how);
    QFETCH(int, size);
    server->setAnswer(PATH, bytes(size), how);
    downloader->setLargestSize(1000000);
    QVERIFY(!fetch(server->url(PATH)));
    QTRY_VERIFY(server->state(PATH) != QLatin1String("open"));
    // The rest was not taken: what is on its way lies in buffers.
    QVERIFY(server->requests().first().sent < 50000000);
}

void FileDownloaderTest::exactlyEnoughIsNone()
{
    server->setAnswer(PATH, bytes(1000000));
    downloader->setLargestSize(1000000);
    QVERIFY(fetch(server->url(PATH)));
    QCOMPARE(data().size(), 1000000);
}

void FileDownloaderTest::aSecondDownloadEndsTheFirst()
{
    const QString slow = QStringLiteral("/slow");
    server->setAnswer(slow, bytes(1000), QStringLiteral("stall"));
    server->setAnswer(PATH, "the second");
    downloader->startDownloading(server->url(slow));
    QTRY_COMPARE(server->sent(slow), qint64(500));
    QVERIFY(fetch(server->url(PATH)));
    QCOMPARE(data(), QByteArray("the second"));
    QTRY_COMPARE(server->state(slow), QStringLiteral("left"));
}

void FileDownloaderTest::aDroppedDownloadIsSilent_data()
{
    QTest::addColumn<QString>("how");
    QTest::addColumn<bool>("destroyed");
    QTest::newRow("half way") << QStringLiteral("stall") << false;
    QTest::newRow("half way, with its downloader") << QStringLiteral("stall") << true;
    QTest::newRow("at the end") << QStringLiteral("whole") << false;
}

void FileDownloaderTest::aDroppedDownloadIsSilent()
{
    QFETCH(QString, how);
    QFETCH(bool, destroyed);
    server->setAnswer(PATH, bytes(1000), how);
    const bool atTheEnd = how == QLatin1String("whole");
    bool arrived = false;
    connect(downloader.get(), &FileDownloader::downloadProgress, this, [&](qint64 count) {
        arrived = count == 1000;
        // The end itself is already on its way.
        if (arrived && !destroyed)
            downloader->reset();
    });
    downloader->startDownloading(server->url(PATH));
    if (atTheEnd)
        QTRY_VERIFY(arrived);
    else
        QTRY_COMPARE(server->sent(PATH), qint64(500));
    if (destroyed)
        downloader.reset();
    else
        downloader->reset();
    QTRY_VERIFY(server->state(PATH) != QLatin1String("open"));
    QCoreApplication::processEvents();
    QVERIFY(finished->isEmpty());
    QVERIFY(error->isEmpty());
}

void FileDownloaderTest::aFileMayBeFetchedFromWithinTheEnd()
{
    server->setAnswer(PATH, "the second");
    server->setAnswer(QStringLiteral("/first"), "the first");
    connect(downloader.get(), &FileDownloader::finished, this, [this](const QByteArray &data) {
        if (data == "the first")
            downloader->startDownloading(server->url(PATH));
    });
    downloader->startDownloading(server->url(QStringLiteral("/first")));
    QTRY_COMPARE(finished->size(), 2);
    QCOMPARE(finished->at(0).first().toByteArray(), QByteArray("the first"));
    QCOMPARE(finished->at(1).first().toByteArray(), QByteArray("the second"));
    QVERIFY(error->isEmpty());
}

void FileDownloaderTest::worksAgainAfterAnError()
{
    QVERIFY(!fetch(server->url(PATH)));
    server->setAnswer(PATH, "now it is there");
    QVERIFY(fetch(server->url(PATH)));
    QCOMPARE(data(), QByteArray("now it is there"));
}

void FileDownloaderTest::knownAuthorityIsTrusted()
{
    WebServer secure(QStringLiteral("127.0.0.1"));
    secure.setAnswer(PATH, bytes(300000));

    const QSslConfiguration before = QSslConfiguration::defaultConfiguration();
    QSslConfiguration trusting = before;
    trusting.setCaCertificates(QSslCertificate::fromPath(secure.authority()));
    QSslConfiguration::setDefaultConfiguration(trusting);
    const bool fetched = fetch(secure.url(PATH));
    QSslConfiguration::setDefaultConfiguration(before);
    QVERIFY(fetched);
    QCOMPARE(data(), bytes(300000));
}

void FileDownloaderTest::otherCertificatesAreErrors_data()
{
    QTest::addColumn<QString>("host");
    QTest::addColumn<bool>("knownAuthority");
    QTest::newRow("an unknown authority") << QStringLiteral("127.0.0.1") << false;
    QTest::newRow("another host") << QStringLiteral("elsewhere.example") << true;
}

void FileDownloaderTest::otherCertificatesAreErrors()
{
    QFETCH(QString, host);
    QFETCH(bool, knownAuthority);
    WebServer secure(host);
    secure.setAnswer(PATH, "not for us");
    const QSslConfiguration before = QSslConfiguration::defaultConfiguration();
    QSslConfiguration trusting = before;
    if (knownAuthority)
        trusting.setCaCertificates(QSslCertificate::fromPath(secure.authority()));
    QSslConfiguration::setDefaultConfiguration(trusting);
    const bool fetched = fetch(secure.url(PATH));
    QSslConfiguration::setDefaultConfiguration(before);
    QVERIFY(!fetched);
    QCOMPARE(secure.count(PATH), 0); // not even asked
}

QTEST_GUILESS_MAIN(FileDownloaderTest)
#include "tst_filedownloader.moc"
