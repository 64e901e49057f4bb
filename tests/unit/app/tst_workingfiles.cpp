#include "app/workingfiles.h"
#include "support/workingdirectory.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTest>

#include <sys/stat.h>

/// The working directory and what every start unpacks into it.
class WorkingFilesTest : public QObject
{
    Q_OBJECT

private slots:
    void programsMayOnlyBeExecuted_data();
    void programsMayOnlyBeExecuted();
    void aSecondStartReplacesAnUnreadableProgram();
    void whatIsNotEmbeddedSurvives();
    void foldersAreNotUnpacked();
    void savedProfilesFolderIsMadeOnce();
    void theDataFolderBecomesTheCurrentDirectory();
    void aDataFolderThatCannotBeMadeIsRefused();
};

namespace
{
int modeOf(const QString &name)
{
    struct stat status = {};
    if (stat(qPrintable(name), &status) != 0)
        return -1;
    return static_cast<int>(status.st_mode & 07777);
}
} // namespace

void WorkingFilesTest::programsMayOnlyBeExecuted_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("program");
    QTest::newRow("tool of this system") << "vexa.bin" << true;
    QTest::newRow("tool of another system") << "vexa.exe" << true;
    QTest::newRow("mark inside the name") << "x.mac.txt" << true;
    QTest::newRow("capitals do not count") << "VEXA.BIN" << false;
    QTest::newRow("no dot before it") << "robin.txt" << false;
    QTest::newRow("device table") << "device.txt" << false;
    QTest::newRow("bundle") << "v1.039.velantor" << false;
}

void WorkingFilesTest::programsMayOnlyBeExecuted()
{
    QFETCH(QString, name);
    QFETCH(bool, program);
    WorkingDirectory embedded;
    embedded.write(name, "content");
    WorkingDirectory work;
    WorkingFiles::unpackToolsFrom(embedded.path());
    if (program) {
        QCOMPARE(modeOf(name), 0111);
    } else {
        QCOMPARE(work.read(name), QByteArray("content"));
        QCOMPARE(modeOf(name) & 0111, 0);
    }
}

void WorkingFilesTest::aSecondStartReplacesAnUnreadableProgram()
{
    WorkingDirectory embedded;
    embedded.write(QStringLiteral("vexa.bin"), "old");
    WorkingDirectory work;
    WorkingFiles::unpackToolsFrom(embedded.path());
    embedded.write(QStringLiteral("vexa.bin"), "a newer one");
    WorkingFiles::unpackToolsFrom(embedded.path());
    QCOMPARE(QFileInfo(QStringLiteral("vexa.bin")).size(), 11);
    QCOMPARE(modeOf(QStringLiteral("vexa.bin")), 0111);
}

void WorkingFilesTest::whatIsNotEmbeddedSurvives()
{
    WorkingDirectory embedded;
    embedded.write(QStringLiteral("device.txt"), "table");
    WorkingDirectory work;
    work.write(QStringLiteral("config.txt"), "automatic_updates false\n");
    work.write(QStringLiteral("device.txt"), "older table");
    WorkingFiles::unpackToolsFrom(embedded.path());
    QCOMPARE(work.read(QStringLiteral("config.txt")), QByteArray("automatic_updates false\n"));
    QCOMPARE(work.read(QStringLiteral("device.txt")), QByteArray("table"));
}

void WorkingFilesTest::foldersAreNotUnpacked()
{
    WorkingDirectory embedded;
    QDir(embedded.path()).mkdir(QStringLiteral("inner"));
    embedded.write(QStringLiteral("inner/deep.txt"), "deep");
    WorkingDirectory work;
    WorkingFiles::unpackToolsFrom(embedded.path());
    QVERIFY(QDir(work.path()).isEmpty());
}

void WorkingFilesTest::savedProfilesFolderIsMadeOnce()
{
    WorkingDirectory work;
    WorkingFiles::makeSavedProfilesDirectory();
    work.write(QStringLiteral("saved_profiles/mine.xml"), "mine");
    WorkingFiles::makeSavedProfilesDirectory();
    QCOMPARE(work.read(QStringLiteral("saved_profiles/mine.xml")), QByteArray("mine"));
}

void WorkingFilesTest::theDataFolderBecomesTheCurrentDirectory()
{
    WorkingDirectory work;
    qputenv("XDG_DATA_HOME", work.path().toUtf8() + "/not/yet/there");
    QVERIFY(WorkingFiles::enterWorkingDirectory());
    const QString expected = QFileInfo(work.path() + QStringLiteral("/not/yet/there/") +
                                       QCoreApplication::applicationName())
                                 .canonicalFilePath();
    QCOMPARE(QDir::current().canonicalPath(), expected);
}

void WorkingFilesTest::aDataFolderThatCannotBeMadeIsRefused()
{
    WorkingDirectory work;
    work.write(QStringLiteral("file"), "in the way");
    qputenv("XDG_DATA_HOME", work.path().toUtf8() + "/file");
    QVERIFY(!WorkingFiles::enterWorkingDirectory());
    QCOMPARE(QDir::current().canonicalPath(), QDir(work.path()).canonicalPath());
}

QTEST_GUILESS_MAIN(WorkingFilesTest)
#include "tst_workingfiles.moc"
