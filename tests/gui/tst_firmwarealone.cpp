#include "app/look.h"
#include "app/mainwindow.h"
#include "firmware/velantorfirmwaretoolwindow.h"
#include "support/messageboxanswers.h"
#include "support/patience.h"
#include "support/workingdirectory.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QProcess>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <functional>

using FirmwareTool::VelantorFirmwareToolWindow;

/// The application with the option "-f": the firmware tool and nothing else. It ends its process,
/// so each one runs in a child: this program itself with the arguments of the suite, in which a
/// timer stands in for the user. The user's name comes by the environment.
class FirmwareAloneTest : public QObject
{
    Q_OBJECT

private slots:
    void endsWellWhenTheToolCloses_data();
    void endsWellWhenTheToolCloses();
    void isAskedForByItsExactName_data();
    void isAskedForByItsExactName();
    void aBoxDoesNotEndIt_data();
    void aBoxDoesNotEndIt();
    void theChargerIsResetAfterAFlash();
    void noUploaderIsLeft_data();
    void noUploaderIsLeft();
    void withoutAPortTheUploaderSaysSo();
};

namespace
{
const char USER[] = "VELANTOR_TEST_USER";
const QString WORKING_DIRECTORY = QStringLiteral("data/tst_firmwarealone/");

struct Outcome {
    int exitCode = -1;
    QString output;
};

Outcome run(const WorkingDirectory &home, const QString &user, const QStringList &arguments)
{
    QProcess child;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_DATA_HOME"), home.path() + QStringLiteral("/data"));
    environment.insert(QLatin1String(USER), user);
    child.setProcessEnvironment(environment);
    child.start(QCoreApplication::applicationFilePath(), arguments);
    Outcome outcome;
    const bool ended = child.waitForFinished(2 * PATIENCE);
    outcome.output =
        QString::fromUtf8(child.readAllStandardOutput() + child.readAllStandardError());
    if (ended && child.exitStatus() == QProcess::NormalExit)
        outcome.exitCode = child.exitCode();
    return outcome;
}

void say(const QString &line)
{
    std::printf("%s\n", qPrintable(line));
    std::fflush(stdout);
}

/// Says which main windows come up.
class Shown : public QObject
{
public:
    Shown() { qApp->installEventFilter(this); }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Show && watched->inherits("QMainWindow"))
            say(QStringLiteral("SHOWN ") + QLatin1String(watched->metaObject()->className()));
        return QObject::eventFilter(watched, event);
    }
};

/// Does something as soon as something else is so, for as long as the process lives.
void when(const std::function<bool()> &isSo, const std::function<void()> &action)
{
    auto *timer = new QTimer(qApp);
    QObject::connect(timer, &QTimer::timeout, timer, [timer, isSo, action] {
        if (!isSo())
            return;
        timer->stop();
        action();
    });
    timer->start(5);
}

VelantorFirmwareToolWindow *tool()
{
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (auto *found = qobject_cast<VelantorFirmwareToolWindow *>(window))
            return found;
    }
    return nullptr;
}

void exitByMenu()
{
    tool()->findChild<QAction *>(QStringLiteral("actionExit"))->trigger();
}

QPushButton *submit()
{
    return tool()->findChild<QPushButton *>(QStringLiteral("submitButton"));
}

QComboBox *ports()
{
    return tool()->findChild<QComboBox *>(QStringLiteral("comPortsDropdown"));
}

/// Flashes the embedded bundle at no port of this computer.
void flash(const QString &port = QStringLiteral("none-there"))
{
    ports()->clear();
    if (!port.isEmpty())
        ports()->addItem(port);
    tool()->on_fileInputBox_textEdited(QStringLiteral("v1.039.velantor"));
    submit()->click();
}

void replaceUploader(const QByteArray &shell)
{
    QFile::remove(QStringLiteral("vexa.bin"));
    QFile uploader(QStringLiteral("vexa.bin"));
    if (!uploader.open(QIODevice::WriteOnly) || uploader.write("#!/bin/sh\n" + shell) < 0)
        qFatal("cannot write vexa.bin");
    uploader.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
}

void startHangingUploader()
{
    replaceUploader("echo $$ > pid.new; mv pid.new pid; exec sleep 1000\n");
    flash();
}

bool uploaderHangs()
{
    return QFile::exists(QStringLiteral("pid"));
}

/// The things that a user does once the tool is there.
void act(const QString &user)
{
    if (user == QStringLiteral("exits")) {
        exitByMenu();
    } else if (user == QStringLiteral("presses Close")) {
        tool()->findChild<QPushButton *>(QStringLiteral("closeButton"))->click();
    } else if (user == QStringLiteral("closes the window")) {
        tool()->close();
    } else if (user == QStringLiteral("ends the session")) {
        QApplication::closeAllWindows();
    } else if (user == QStringLiteral("reads the help, exits")) {
        tool()->helpProgram();
        QTimer::singleShot(100, [] {
            say(QStringLiteral("STILL THERE"));
            exitByMenu();
        });
    } else if (user == QStringLiteral("cannot reset, exits")) {
        emit tool()->resetVelantorSignalFT(QStringLiteral("/dev/none-there"));
        QTimer::singleShot(100, [] {
            say(QStringLiteral("STILL THERE"));
            exitByMenu();
        });
    } else if (user == QStringLiteral("flashes, exits")) {
        // Each text waits for the one before it to be read, which the log tells.
        replaceUploader("for text in 'All flash above bldr erased' 'hex file loaded' 'Flash Write "
                        "success' 'Verified Flash OK'; do echo $text;\n"
                        "while [ -d logs ] && ! grep -q \"$text\" logs/*; do sleep 0.01; done; "
                        "done\n");
        flash();
        when([] { return submit()->isEnabled(); }, exitByMenu);
    } else if (user == QStringLiteral("exits in a flash")) {
        startHangingUploader();
        when(uploaderHangs, exitByMenu);
    } else if (user == QStringLiteral("closes the window in a flash")) {
        startHangingUploader();
        when(uploaderHangs, [] { tool()->close(); });
    } else if (user == QStringLiteral("has no port, exits")) {
        flash({});
        when([] { return submit()->isEnabled(); }, exitByMenu);
    } else {
        qFatal("no user %s", qPrintable(user));
    }
}

/// The child, which does what the program does.
int runSuite(int argc, char *argv[])
{
    QApplication application(argc, argv);
    const Shown shown;
    MessageBoxAnswers answers;
    QObject::connect(&answers, &MessageBoxAnswers::answered, &answers, [&answers] {
        say(QStringLiteral("BOX ") + answers.seen().last().title + QStringLiteral(" | ") +
            answers.seen().last().text);
    });
    when([] { return tool() && tool()->isVisible(); },
         [] { act(QString::fromLocal8Bit(qgetenv(USER))); });
    MainWindow window;
    say(QStringLiteral("BUILT"));
    window.show();
    setSuiteLook();
    return 3;
}
} // namespace

void FirmwareAloneTest::endsWellWhenTheToolCloses_data()
{
    QTest::addColumn<QString>("user");
    for (const char *user : {"exits", "presses Close", "closes the window", "ends the session"})
        QTest::newRow(user) << user;
}

void FirmwareAloneTest::endsWellWhenTheToolCloses()
{
    QFETCH(QString, user);
    const WorkingDirectory home;
    QDir().mkpath(WORKING_DIRECTORY);
    home.write(WORKING_DIRECTORY + QStringLiteral("device_overwrite.txt"), "left over\n");
    const Outcome outcome = run(home, user, {QStringLiteral("-f")});
    QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.output));
    QCOMPARE(outcome.output.count(QStringLiteral("SHOWN ")), 1);
    QVERIFY(outcome.output.contains(
        QStringLiteral("SHOWN FirmwareTool::VelantorFirmwareToolWindow\n")));
    QVERIFY(!outcome.output.contains(QStringLiteral("BUILT")));
    // No configuration is read, so nobody is asked about it, and none is written.
    QVERIFY(!outcome.output.contains(QStringLiteral("BOX")));
    QVERIFY(!QFile::exists(WORKING_DIRECTORY + QStringLiteral("config.txt")));
    QCOMPARE(home.read(WORKING_DIRECTORY + QStringLiteral("device.txt")),
             QByteArray("left over\n"));
}

void FirmwareAloneTest::isAskedForByItsExactName_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    const QString anything = QStringLiteral("--anything");
    QTest::newRow("last") << QStringList{anything, "-f"} << 0;
    QTest::newRow("first") << QStringList{"-f", anything} << 0;
    QTest::newRow("other case") << QStringList{anything, "-F"} << 3;
    QTest::newRow("longer") << QStringList{anything, "-ff"} << 3;
    QTest::newRow("two hyphens") << QStringList{anything, "--f"} << 3;
}

void FirmwareAloneTest::isAskedForByItsExactName()
{
    QFETCH(QStringList, arguments);
    const WorkingDirectory home;
    const Outcome outcome = run(home, QStringLiteral("exits"), arguments);
    QTEST(outcome.exitCode, "exitCode");
    QCOMPARE(outcome.output.contains(QStringLiteral("SHOWN MainWindow\n")), outcome.exitCode == 3);
    QCOMPARE(outcome.output.contains(QStringLiteral("SHOWN FirmwareTool")), outcome.exitCode == 0);
}

void FirmwareAloneTest::aBoxDoesNotEndIt_data()
{
    QTest::addColumn<QString>("user");
    QTest::addColumn<QString>("title");
    QTest::newRow("box of the tool") << "reads the help, exits"
                                     << "Basic Usage";
    // Its parent is the main window, which is not visible.
    QTest::newRow("box of the suite") << "cannot reset, exits"
                                      << "Failed Opening Serial Port";
}

void FirmwareAloneTest::aBoxDoesNotEndIt()
{
    QFETCH(QString, user);
    QFETCH(QString, title);
    const WorkingDirectory home;
    const Outcome outcome = run(home, user, {QStringLiteral("-f")});
    QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.output));
    QVERIFY(outcome.output.contains(QStringLiteral("BOX ") + title));
    QVERIFY2(outcome.output.contains(QStringLiteral("STILL THERE")), qPrintable(outcome.output));
}

void FirmwareAloneTest::theChargerIsResetAfterAFlash()
{
    const WorkingDirectory home;
    const Outcome outcome = run(home, QStringLiteral("flashes, exits"), {QStringLiteral("-f")});
    QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.output));
    // There is no charger: the reset cannot open its port.
    QVERIFY2(outcome.output.count(QStringLiteral("BOX ")) == 1, qPrintable(outcome.output));
    QVERIFY(outcome.output.contains(QStringLiteral("BOX Failed Opening Serial Port")));
    // The bundle is in use again, with the table that it puts there.
    QCOMPARE(home.read(WORKING_DIRECTORY + QStringLiteral("device.txt")),
             home.read(WORKING_DIRECTORY + QStringLiteral("device_overwrite_profiles.txt")));
}

void FirmwareAloneTest::noUploaderIsLeft_data()
{
    QTest::addColumn<QString>("user");
    for (const char *user : {"exits in a flash", "closes the window in a flash"})
        QTest::newRow(user) << user;
}

void FirmwareAloneTest::noUploaderIsLeft()
{
    QFETCH(QString, user);
    const WorkingDirectory home;
    const Outcome outcome = run(home, user, {QStringLiteral("-f")});
    QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.output));
    const pid_t uploader = home.read(WORKING_DIRECTORY + QStringLiteral("pid")).trimmed().toInt();
    QVERIFY(uploader > 0);
    QTRY_VERIFY(kill(uploader, 0) != 0 && errno == ESRCH);
}

void FirmwareAloneTest::withoutAPortTheUploaderSaysSo()
{
    const WorkingDirectory home;
    const Outcome outcome = run(home, QStringLiteral("has no port, exits"), {QStringLiteral("-f")});
    QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.output));
    QVERIFY(outcome.output.contains(QStringLiteral(
        "BOX Flashing Error! | Cannot open COM port. Please try selecting a different one.\n")));
}

int main(int argc, char *argv[])
{
    if (qEnvironmentVariableIsSet(USER))
        return runSuite(argc, argv);
    QCoreApplication application(argc, argv);
    FirmwareAloneTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_firmwarealone.moc"
