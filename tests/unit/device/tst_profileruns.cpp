#include "device/downloadprofiles.h"
#include "device/uploadprofiles.h"

#include "support/fakeuploader.h"
#include "support/patience.h"

#include <QtTest>

#include <memory>
#include <sys/stat.h>

using UploadDownload::DownloadProfiles;
using UploadDownload::UploadProfiles;

namespace
{

const QString PORT = QStringLiteral("/dev/ttyUSB0");
const QString ERASE = QStringLiteral("-s /dev/ttyUSB0 -h -V -E 0x9C00 0xA000");
const QString WRITE = QStringLiteral("-s /dev/ttyUSB0 -h -V -w fs_to_write.hex");
const QString READ = QStringLiteral("-s /dev/ttyUSB0 -h -V -l 0x9C00 0xA000 fs_to_read.hex");

} // namespace

class ProfileRunsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void readsTheProfilePage();
    void readFails_data();
    void readFails();
    void crashOfAReadIsToldTwice();
    void uploadErasesThenWrites();
    void uploadFails_data();
    void uploadFails();
    void failedEraseLeavesTheFile();
    void crashOfAnUploadIsToldTwice_data();
    void crashOfAnUploadIsToldTwice();
    void missingUploaderIsTold();
    void unreadableUploaderRuns();
    void logGrowsOverAllRuns();
    void logTakesNoErrors();
    void processesBelongToTheParent();
    void aRunDiesWithItsParent();

private:
    std::unique_ptr<FakeUploader> uploader;
    std::unique_ptr<QObject> owner;
};

void ProfileRunsTest::init()
{
    uploader = std::make_unique<FakeUploader>();
    owner = std::make_unique<QObject>();
}

void ProfileRunsTest::cleanup()
{
    owner.reset();
    uploader.reset();
}

void ProfileRunsTest::readsTheProfilePage()
{
    auto *run = new DownloadProfiles(PORT, owner.get());
    QSignalSpy finished(run, &DownloadProfiles::finished);
    QSignalSpy failed(run, &DownloadProfiles::errorDownloading);
    run->start();
    QVERIFY(finished.wait(PATIENCE));
    QCOMPARE(uploader->runs(), QStringList(READ));
    QCOMPARE(finished.size(), 1);
    QCOMPARE(failed.size(), 0);
}

void ProfileRunsTest::readFails_data()
{
    QTest::addColumn<QString>("run");
    QTest::newRow("status 1") << QStringLiteral("exit 1");
    QTest::newRow("status 255") << QStringLiteral("exit 255");
}

void ProfileRunsTest::readFails()
{
    QFETCH(QString, run);
    uploader->plan({run});
    auto *download = new DownloadProfiles(PORT, owner.get());
    QSignalSpy finished(download, &DownloadProfiles::finished);
    QSignalSpy failed(download, &DownloadProfiles::errorDownloading);
    download->start();
    QVERIFY(failed.wait(PATIENCE));
    QCOMPARE(failed.size(), 1);
    QCOMPARE(finished.size(), 0);
}

void ProfileRunsTest::crashOfAReadIsToldTwice()
{
    uploader->plan({FakeUploader::CRASH});
    auto *run = new DownloadProfiles(PORT, owner.get());
    QSignalSpy finished(run, &DownloadProfiles::finished);
    QSignalSpy failed(run, &DownloadProfiles::errorDownloading);
    run->start();
    QTRY_COMPARE(failed.size(), 2);
    QCOMPARE(finished.size(), 0);
}

void ProfileRunsTest::uploadErasesThenWrites()
{
    auto *run = new UploadProfiles(PORT, owner.get());
    QSignalSpy finished(run, &UploadProfiles::finished);
    QSignalSpy failed(run, &UploadProfiles::errorUploading);
    run->start();
    QVERIFY(finished.wait(PATIENCE));
    QCOMPARE(uploader->runs(), QStringList({ERASE, WRITE}));
    QCOMPARE(finished.size(), 1);
    QCOMPARE(failed.size(), 0);
}

void ProfileRunsTest::uploadFails_data()
{
    QTest::addColumn<QStringList>("plan");
    QTest::addColumn<QStringList>("runs");
    QTest::newRow("erase") << QStringList{FakeUploader::FAIL} << QStringList{ERASE};
    QTest::newRow("write") << QStringList{FakeUploader::SUCCEED, FakeUploader::FAIL}
                           << QStringList{ERASE, WRITE};
}

void ProfileRunsTest::uploadFails()
{
    QFETCH(QStringList, plan);
    QFETCH(QStringList, runs);
    uploader->plan(plan);
    auto *run = new UploadProfiles(PORT, owner.get());
    QSignalSpy finished(run, &UploadProfiles::finished);
    QSignalSpy failed(run, &UploadProfiles::errorUploading);
    run->start();
    QVERIFY(failed.wait(PATIENCE));
    QCOMPARE(failed.size(), 1);
    QCOMPARE(finished.size(), 0);
    QCOMPARE(uploader->runs(), runs);
}

void ProfileRunsTest::failedEraseLeavesTheFile()
{
    uploader->folder.write(QStringLiteral("fs_to_write.hex"), ":00000001FF\n");
    uploader->plan({FakeUploader::FAIL});
    auto *run = new UploadProfiles(PORT, owner.get());
    QSignalSpy failed(run, &UploadProfiles::errorUploading);
    run->start();
    QVERIFY(failed.wait(PATIENCE));
    QCOMPARE(uploader->folder.read(QStringLiteral("fs_to_write.hex")), QByteArray(":00000001FF\n"));
}

void ProfileRunsTest::crashOfAnUploadIsToldTwice_data()
{
    QTest::addColumn<QStringList>("plan");
    QTest::newRow("erase") << QStringList{FakeUploader::CRASH};
    QTest::newRow("write") << QStringList{FakeUploader::SUCCEED, FakeUploader::CRASH};
}

void ProfileRunsTest::crashOfAnUploadIsToldTwice()
{
    QFETCH(QStringList, plan);
    uploader->plan(plan);
    auto *run = new UploadProfiles(PORT, owner.get());
    QSignalSpy finished(run, &UploadProfiles::finished);
    QSignalSpy failed(run, &UploadProfiles::errorUploading);
    run->start();
    QTRY_COMPARE(failed.size(), 2);
    QCOMPARE(finished.size(), 0);
    QCOMPARE(uploader->runs().size(), plan.size());
}

void ProfileRunsTest::missingUploaderIsTold()
{
    uploader->remove();
    auto *download = new DownloadProfiles(PORT, owner.get());
    QSignalSpy notRead(download, &DownloadProfiles::errorDownloading);
    download->start();
    QTRY_COMPARE(notRead.size(), 1);

    auto *upload = new UploadProfiles(PORT, owner.get());
    QSignalSpy notWritten(upload, &UploadProfiles::errorUploading);
    upload->start();
    QTRY_COMPARE(notWritten.size(), 1);
}

void ProfileRunsTest::unreadableUploaderRuns()
{
    // The mode with which the uploader is unpacked. A script could not be read by its shell, so a
    // program stands in for it; "false" would fail whatever its arguments.
    uploader->remove();
    QVERIFY(QFile::copy(QStringLiteral("/bin/true"), QStringLiteral("vexa.bin")));
    QCOMPARE(chmod("vexa.bin", S_IXUSR | S_IXGRP | S_IXOTH), 0);
    auto *run = new DownloadProfiles(PORT, owner.get());
    QSignalSpy finished(run, &DownloadProfiles::finished);
    run->start();
    QVERIFY(finished.wait(PATIENCE));
}

void ProfileRunsTest::logGrowsOverAllRuns()
{
    uploader->plan({QStringLiteral("echo first read"), QStringLiteral("echo erase"),
                    QStringLiteral("printf write")});
    {
        auto *run = new DownloadProfiles(PORT, owner.get());
        QSignalSpy finished(run, &DownloadProfiles::finished);
        run->start();
        QVERIFY(finished.wait(PATIENCE));
    }
    QCOMPARE(uploader->folder.read(QStringLiteral("vexaLog.txt")), QByteArray("first read\n"));
    auto *run = new UploadProfiles(PORT, owner.get());
    QSignalSpy finished(run, &UploadProfiles::finished);
    run->start();
    QVERIFY(finished.wait(PATIENCE));
    QCOMPARE(uploader->folder.read(QStringLiteral("vexaLog.txt")),
             QByteArray("first read\nerase\nwrite"));
}

void ProfileRunsTest::logTakesNoErrors()
{
    uploader->folder.write(QStringLiteral("vexaLog.txt"), "of the last start\n");
    uploader->plan({QStringLiteral("echo printed; echo complaint >&2; exit 1")});
    auto *run = new DownloadProfiles(PORT, owner.get());
    QSignalSpy failed(run, &DownloadProfiles::errorDownloading);
    run->start();
    QVERIFY(failed.wait(PATIENCE));
    QCOMPARE(uploader->folder.read(QStringLiteral("vexaLog.txt")),
             QByteArray("of the last start\nprinted\n"));
}

void ProfileRunsTest::processesBelongToTheParent()
{
    auto *run = new UploadProfiles(PORT, owner.get());
    QSignalSpy finished(run, &UploadProfiles::finished);
    run->start();
    QVERIFY(finished.wait(PATIENCE));
    QCOMPARE(run->parent(), owner.get());
    QCOMPARE(owner->findChildren<QProcess *>(QString(), Qt::FindDirectChildrenOnly).size(), 2);
    QCOMPARE(run->findChildren<QProcess *>().size(), 0);
}

void ProfileRunsTest::aRunDiesWithItsParent()
{
    uploader->plan({FakeUploader::WAIT});
    auto *run = new DownloadProfiles(PORT, owner.get());
    QSignalSpy finished(run, &DownloadProfiles::finished);
    QSignalSpy failed(run, &DownloadProfiles::errorDownloading);
    run->start();
    QTRY_COMPARE(uploader->runs().size(), 1);
    owner.reset();
    QCOMPARE(finished.size(), 0);
    QCOMPARE(failed.size(), 0);
}

QTEST_GUILESS_MAIN(ProfileRunsTest)
#include "tst_profileruns.moc"
