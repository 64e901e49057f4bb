#include "ImportProfiles/importprofilesmain.h"
#include "app/filenames.h"
#include "profiles/profilename.h"
#include "suitestory.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QTest>
#include <QTimer>

#include <cerrno>
#include <csignal>
#include <functional>

enum class Operation { Connect, Read, Write, DeviceSettings };
using Lead = std::function<void(SuiteStory &)>;
Q_DECLARE_METATYPE(Operation)
Q_DECLARE_METATYPE(Lead)

/// Stories that end early: the window goes, or the application quits, while something is under way.
/// What is left behind must touch nothing that is gone, and must not leave a program running.
class SuiteClosingTest : public QObject
{
    Q_OBJECT

private slots:
    void theWindowGoesDuringATransfer_data();
    void theWindowGoesDuringATransfer();
    void theWindowGoesWithADialogAtItsEnd_data();
    void theWindowGoesWithADialogAtItsEnd();
    void aWriteHoldsTheEndOfTheSession_data();
    void aWriteHoldsTheEndOfTheSession();
    void aReadDoesNotHoldTheEndOfTheSession();
    void quitWithABoxOpen_data();
    void quitWithABoxOpen();
    void exitQuits();
};

namespace
{
void start(SuiteStory &story, Operation operation)
{
    switch (operation) {
    case Operation::Connect:
        story.action("connectAction")->trigger();
        SuiteStory::dialog()->findChild<QPushButton *>(QStringLiteral("okButton"))->click();
        break;
    case Operation::Read:
        story.action("readDataAction")->trigger();
        break;
    case Operation::Write:
        story.action("saveDataAction")->trigger();
        break;
    case Operation::DeviceSettings:
        story.mainWindow()
            ->findChild<ImportProfiles::ImportProfilesMain *>()
            ->sendProfilesToUploader();
        break;
    }
}

/// The first runs of the uploader do their job, the one of this number never ends.
void hangInRun(SuiteStory &story, int number)
{
    story.replaceUploader("echo run >> runs\n"
                          "if [ $(wc -l < runs) -eq " +
                          QByteArray::number(number) +
                          " ]; then\n"
                          "    echo $$ > hanging.new && mv hanging.new hanging\n"
                          "    exec sleep 1000\n"
                          "fi\n"
                          "exec ./uploader.bin \"$@\"\n");
}

/// The process that hangs; 0 as long as none does.
pid_t hangingRun()
{
    return SuiteStory::workingFile(QStringLiteral("hanging")).trimmed().toInt();
}

bool isGone(pid_t process)
{
    return kill(process, 0) != 0 && errno == ESRCH;
}

/// Runs the application's own loop as the program does, until something quits it.
int loopUntilQuit(const std::function<void()> &begin)
{
    QTimer::singleShot(0, qApp, begin);
    QTimer guard;
    QObject::connect(&guard, &QTimer::timeout, [] { QCoreApplication::exit(-1); });
    guard.start(PATIENCE);
    return QApplication::exec();
}
} // namespace

void SuiteClosingTest::theWindowGoesDuringATransfer_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<int>("run");
    QTest::addColumn<bool>("dialogCloses");
    QTest::newRow("connecting") << Operation::Connect << 1 << true;
    QTest::newRow("reading") << Operation::Read << 1 << true;
    QTest::newRow("first read of a write") << Operation::Write << 1 << true;
    QTest::newRow("erasing") << Operation::Write << 2 << false;
    QTest::newRow("writing") << Operation::Write << 3 << false;
    QTest::newRow("read back") << Operation::Write << 4 << true;
    QTest::newRow("device settings, erasing") << Operation::DeviceSettings << 1 << false;
    QTest::newRow("device settings, writing") << Operation::DeviceSettings << 2 << false;
}

void SuiteClosingTest::theWindowGoesDuringATransfer()
{
    QFETCH(Operation, operation);
    QFETCH(int, run);
    QFETCH(bool, dialogCloses);
    for (const bool closeTheDialogFirst : {false, true}) {
        pid_t process = 0;
        {
            SuiteStory story;
            story.plugIn({"--hardware", "48v"});
            story.open();
            if (operation != Operation::Connect)
                QVERIFY(story.connectCharger());
            hangInRun(story, run);
            start(story, operation);
            QTRY_VERIFY(hangingRun() != 0);
            process = hangingRun();
            if (closeTheDialogFirst)
                QCOMPARE(SuiteStory::dialog()->close(), dialogCloses);
            story.mainWindow()->close();
        }
        QVERIFY(isGone(process));
    }
}

void SuiteClosingTest::theWindowGoesWithADialogAtItsEnd_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QString>("hardware");
    QTest::addColumn<QString>("status");
    QTest::newRow("written") << Operation::Write << "48v"
                             << "Success!";
    QTest::newRow("refused") << Operation::Write << "24v"
                             << "Failed!";
    QTest::newRow("device settings written") << Operation::DeviceSettings << "48v"
                                             << "Success!";
}

void SuiteClosingTest::theWindowGoesWithADialogAtItsEnd()
{
    QFETCH(Operation, operation);
    QFETCH(QString, hardware);
    QFETCH(QString, status);
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    QVERIFY(story.connectCharger());
    story.charger().control("hardware " + hardware);
    start(story, operation);
    QTRY_COMPARE(SuiteStory::dialog()->findChild<QLabel *>("status")->text(), status);
    story.mainWindow()->close();
}

void SuiteClosingTest::aWriteHoldsTheEndOfTheSession_data()
{
    QTest::addColumn<int>("run");
    QTest::newRow("erasing") << 2;
    QTest::newRow("writing") << 3;
}

void SuiteClosingTest::aWriteHoldsTheEndOfTheSession()
{
    QFETCH(int, run);
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    QVERIFY(story.connectCharger());
    hangInRun(story, run);
    start(story, Operation::Write);
    QTRY_VERIFY(hangingRun() != 0);
    QApplication::closeAllWindows(); // what a session does that ends
    QVERIFY(story.mainWindow()->isVisible());
    QVERIFY(SuiteStory::dialog());
    QVERIFY(!isGone(hangingRun()));
}

void SuiteClosingTest::aReadDoesNotHoldTheEndOfTheSession()
{
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    QVERIFY(story.connectCharger());
    hangInRun(story, 1);
    start(story, Operation::Read);
    QTRY_VERIFY(hangingRun() != 0);
    QApplication::closeAllWindows();
    QVERIFY(!story.mainWindow()->isVisible());
    QTRY_VERIFY(isGone(hangingRun()));
}

void SuiteClosingTest::quitWithABoxOpen_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<bool>("connected");
    QTest::addColumn<Lead>("lead");
    const auto crash = [](Operation operation) {
        return Lead([operation](SuiteStory &story) {
            story.replaceUploader("kill -9 $$\n");
            start(story, operation);
        });
    };
    const auto fail = [](Operation operation) {
        return Lead([operation](SuiteStory &story) {
            story.charger().fault("lost-echo@version");
            start(story, operation);
        });
    };
    const auto failedImport = [](Operation operation) {
        return Lead([operation](SuiteStory &story) {
            QFile::remove(DOWNLOADED_PROFILES_FILE_NAME);
            story.replaceUploader("exit 0\n");
            start(story, operation);
        });
    };
    const QString failed = QStringLiteral("Failed!");
    QTest::newRow("failed to connect") << failed << false << fail(Operation::Connect);
    QTest::newRow("failed to read") << failed << true << fail(Operation::Read);
    QTest::newRow("failed to write") << failed << true << fail(Operation::Write);
    QTest::newRow("failed settings") << failed << true << fail(Operation::DeviceSettings);
    // The uploader's crash is told twice, so that a second box wants to come behind the first.
    QTest::newRow("crash while connecting") << failed << false << crash(Operation::Connect);
    QTest::newRow("crash while reading") << failed << true << crash(Operation::Read);
    QTest::newRow("crash while erasing") << failed << true << crash(Operation::DeviceSettings);
    QTest::newRow("failed import at a connect")
        << "Import from HEX status" << false << failedImport(Operation::Connect);
    QTest::newRow("failed import at a read")
        << "Import from HEX status" << true << failedImport(Operation::Read);
    QTest::newRow("failed import of the read back")
        << "Import from HEX status" << true << Lead([](SuiteStory &story) {
               story.charger().fault("flip-bit=45@write:1");
               start(story, Operation::Write);
           });
    QTest::newRow("failed export")
        << "Error while uploading!" << true << Lead([](SuiteStory &story) {
               QDir().mkdir(UPLOADED_PROFILES_FILE_NAME);
               start(story, Operation::Write);
           });
    QTest::newRow("port that cannot be opened")
        << "Failed Opening Serial Port" << true << Lead([](SuiteStory &story) {
               story.charger().control("unplug");
               story.action("disconnectAction")->trigger();
           });
    QTest::newRow("row to be deleted") << "Deleting Profile" << true << Lead([](SuiteStory &story) {
        story.row(0)->findChild<QAbstractButton *>("deleteProfileButton")->click();
    });
    QTest::newRow("all rows to be deleted")
        << "Delete All Profiles?" << true
        << Lead([](SuiteStory &story) { story.action("actionDeleteAllProfiles")->trigger(); });
    QTest::newRow("help") << "Basic Usage" << false << Lead([](SuiteStory &story) {
        story.action("actionHelp_2")->trigger();
    });
}

void SuiteClosingTest::quitWithABoxOpen()
{
    QFETCH(QString, title);
    QFETCH(bool, connected);
    QFETCH(Lead, lead);
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    if (connected)
        QVERIFY(story.connectCharger());
    story.boxes.push([](QMessageBox *) { QCoreApplication::quit(); });
    QCOMPARE(loopUntilQuit([&] { lead(story); }), 0);
    QCOMPARE(story.boxes.titles().value(0), title);
    // As at the end of the program.
    story.closeWindow();
}

void SuiteClosingTest::exitQuits()
{
    SuiteStory story;
    story.open();
    QCOMPARE(loopUntilQuit([&] { story.action("actionExit")->trigger(); }), 0);
}

QTEST_MAIN(SuiteClosingTest)
#include "tst_suite_closing.moc"
