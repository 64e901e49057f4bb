#include "firmware/velantorfirmwaretoolwindow.h"

#include "device/comdevicewatcher.h"
#include "firmware/firmwareflasher.h"
#include "support/bundlemember.h"
#include "support/fakeuploader.h"
#include "support/filedialoganswer.h"
#include "support/messageboxanswers.h"
#include "support/patience.h"
#include "support/pretendedports.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

#include <cerrno>
#include <csignal>
#include <functional>
#include <memory>

using FirmwareTool::FirmwareFlasher;
using FirmwareTool::VelantorFirmwareToolWindow;
using Way = std::function<void(VelantorFirmwareToolWindow *)>;
Q_DECLARE_METATYPE(Way)

namespace
{

const QByteArray bundle = bundleMember("fw7.hex", ":00000001FF\n") +
                          bundleMember("device_overwrite_profiles.txt", "overwrite\n") +
                          bundleMember("device_keep_profiles.txt", "keep\n");

const QString RUN = QStringLiteral("-s /dev/%1 -h -V -e -w fw7.hex -v fw7.hex");

/// A run that prints chunks with time between them for the reader, which looks at each once.
QString printing(const QStringList &chunks)
{
    QString shell;
    for (int index = 0; index < chunks.size(); ++index)
        shell += QStringLiteral("echo '%1'; while [ -e plan ] && [ ! -e seen%2 ]; do sleep 0.01; "
                                "done; ")
                     .arg(chunks.at(index))
                     .arg(index);
    return shell;
}

bool isGone(pid_t process)
{
    return kill(process, 0) != 0 && errno == ESRCH;
}

} // namespace

class VelantorFirmwareToolWindowTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void enterPressesTheButtonInFocus();
    void aNameIsNoMarkup();

    void listsPorts_data();
    void listsPorts();
    void followsTheCable();
    void aNewPortIsChosen_data();
    void aNewPortIsChosen();
    void aListedPortChangesNothing();
    void unpluggingRemovesPorts();
    void withoutPortsTheButtonsStayEnabled();

    void choosesAFile_data();
    void choosesAFile();
    void theNextFileIsLookedForBesideTheLast();
    void cancelKeepsTheFile();
    void typedTextCountsLikeAChosenFile();
    void theLabelFollowsEachKey();
    void withoutAFileNothingStarts_data();
    void withoutAFileNothingStarts();
    void onlyBundlesAreFlashed_data();
    void onlyBundlesAreFlashed();

    void startsTheUploader();
    void theChosenPortIsFlashed();
    void profilesAreKeptUnlessTicked_data();
    void profilesAreKeptUnlessTicked();
    void aFlashThatSucceeds();
    void anErrorLeavesCloseDisabled();
    void keysPressedAgainDoNothing_data();
    void keysPressedAgainDoNothing();
    void theFocusStaysWhereTheUserPutIt();
    void withoutAPortThePortCannotBeOpened();
    void theAskForAConnectIsPassedOn();

    void closes_data();
    void closes();
    void exitTwiceTellsOnce();
    void theTableOfAnOlderInstallationComesBack_data();
    void theTableOfAnOlderInstallationComesBack();
    void closingEndsTheUploader_data();
    void closingEndsTheUploader();
    void mayDieInItsBox_data();
    void mayDieInItsBox();

private:
    template <typename T> T *widget(const char *name) const
    {
        T *found = tool->findChild<T *>(QLatin1String(name));
        if (!found)
            qFatal("no %s", name);
        return found;
    }
    void open();
    QComboBox *dropdown() const { return widget<QComboBox>("comPortsDropdown"); }
    QLineEdit *fileBox() const { return widget<QLineEdit>("fileInputBox"); }
    QPushButton *submit() const { return widget<QPushButton>("submitButton"); }
    QPushButton *closeButton() const { return widget<QPushButton>("closeButton"); }
    QString fileLabel() const { return widget<QLabel>("fileSelectedLabel")->text(); }
    QStringList listed() const;
    void type(const QString &text) const;
    /// Types the name of a bundle that is there.
    void typeBundle() const;
    /// Lets the uploader go on behind its chunk of this number.
    void chunkWasSeen(int number) const
    {
        uploader->folder.write(QStringLiteral("seen%1").arg(number), {});
    }

    std::unique_ptr<FakeUploader> uploader;
    std::unique_ptr<QWidget> owner;
    QPointer<VelantorFirmwareToolWindow> tool;
};

void VelantorFirmwareToolWindowTest::init()
{
    portsOfTheComputer = QStringList{QStringLiteral("ttyUSB0")};
    uploader = std::make_unique<FakeUploader>();
    uploader->folder.write(QStringLiteral("fw.velantor"), bundle);
    owner = std::make_unique<QWidget>();
}

void VelantorFirmwareToolWindowTest::cleanup()
{
    owner.reset();
    QVERIFY(!tool);
    uploader.reset();
}

void VelantorFirmwareToolWindowTest::open()
{
    tool = new VelantorFirmwareToolWindow(owner.get());
}

QStringList VelantorFirmwareToolWindowTest::listed() const
{
    QStringList names;
    for (int index = 0; index < dropdown()->count(); ++index)
        names.append(dropdown()->itemText(index));
    return names;
}

void VelantorFirmwareToolWindowTest::type(const QString &text) const
{
    fileBox()->setFocus();
    fileBox()->selectAll();
    if (text.isEmpty())
        QTest::keyClick(fileBox(), Qt::Key_Delete);
    else
        QTest::keyClicks(fileBox(), text);
}

void VelantorFirmwareToolWindowTest::typeBundle() const
{
    type(QStringLiteral("fw.velantor"));
}

void VelantorFirmwareToolWindowTest::enterPressesTheButtonInFocus()
{
    open();
    MessageBoxAnswers user;
    submit()->setFocus();
    QTest::keyClick(submit(), Qt::Key_Return);
    QCOMPARE(user.titles(), QStringList(QStringLiteral("No File")));
    // A key in the field starts nothing that cannot be taken back.
    typeBundle();
    QTest::keyClick(fileBox(), Qt::Key_Return);
    QVERIFY(submit()->isEnabled());
    QVERIFY(uploader->runs().isEmpty());
}

void VelantorFirmwareToolWindowTest::aNameIsNoMarkup()
{
    open();
    auto *label = widget<QLabel>("fileSelectedLabel");
    type(QStringLiteral("<b>a</b>.velantor"));
    QCOMPARE(label->textFormat(), Qt::PlainText);
}

void VelantorFirmwareToolWindowTest::listsPorts_data()
{
    QTest::addColumn<QStringList>("ports");
    QTest::addColumn<QStringList>("expected");
    const QString usb0 = QStringLiteral("ttyUSB0");
    const QString usb1 = QStringLiteral("ttyUSB1");
    const QString s0 = QStringLiteral("ttyS0");
    QTest::newRow("none") << QStringList{} << QStringList{};
    QTest::newRow("one") << QStringList{usb0} << QStringList{usb0};
    QTest::newRow("last first") << QStringList{usb0, usb1} << QStringList{usb1, usb0};
    QTest::newRow("built-in ports too") << QStringList{s0, usb0} << QStringList{usb0, s0};
    QTest::newRow("built-in port last") << QStringList{usb0, s0} << QStringList{s0, usb0};
}

void VelantorFirmwareToolWindowTest::listsPorts()
{
    QFETCH(QStringList, ports);
    QFETCH(QStringList, expected);
    portsOfTheComputer = ports;
    open();
    QCOMPARE(listed(), expected);
    QCOMPARE(dropdown()->currentText(), expected.value(0));
}

void VelantorFirmwareToolWindowTest::followsTheCable()
{
    portsOfTheComputer.clear();
    open();
    portsOfTheComputer = QStringList{QStringLiteral("ttyUSB3")};
    QTRY_COMPARE(listed(), portsOfTheComputer); // the watcher looks by itself
    portsOfTheComputer.clear();
    tool->findChild<COMDeviceWatcher *>()->onTimerFired();
    QCOMPARE(listed(), QStringList());
}

void VelantorFirmwareToolWindowTest::aNewPortIsChosen_data()
{
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<QStringList>("after");
    QTest::addColumn<QString>("added");
    QTest::addColumn<QStringList>("expected");
    const QString a = QStringLiteral("ttyUSB0");
    const QString b = QStringLiteral("ttyUSB1");
    const QString c = QStringLiteral("ttyUSB2");
    QTest::newRow("the first") << QStringList{} << QStringList{a} << a << QStringList{a};
    QTest::newRow("listed last") << QStringList{a, b} << QStringList{a, b, c} << c
                                 << QStringList{c, b, a};
    QTest::newRow("listed between")
        << QStringList{a, c} << QStringList{a, b, c} << b << QStringList{c, b, a};
    QTest::newRow("listed first") << QStringList{b, c} << QStringList{a, b, c} << a
                                  << QStringList{c, b, a};
    QTest::newRow("built in") << QStringList{a} << QStringList{QStringLiteral("ttyS0"), a}
                              << QStringLiteral("ttyS0") << QStringList{a, QStringLiteral("ttyS0")};
}

void VelantorFirmwareToolWindowTest::aNewPortIsChosen()
{
    QFETCH(QStringList, before);
    QFETCH(QStringList, after);
    QFETCH(QString, added);
    portsOfTheComputer = before;
    open();
    portsOfTheComputer = after;
    tool->onDevicesConnected(portInfos({added}));
    QTEST(listed(), "expected");
    QCOMPARE(dropdown()->currentText(), added);
}

void VelantorFirmwareToolWindowTest::aListedPortChangesNothing()
{
    portsOfTheComputer = QStringList{QStringLiteral("ttyUSB0"), QStringLiteral("ttyUSB1")};
    open();
    dropdown()->setCurrentText(QStringLiteral("ttyUSB0"));
    tool->onDevicesConnected(portInfos({QStringLiteral("ttyUSB1")}));
    QCOMPARE(listed(), QStringList({QStringLiteral("ttyUSB1"), QStringLiteral("ttyUSB0")}));
    QCOMPARE(dropdown()->currentText(), QStringLiteral("ttyUSB0"));
}

void VelantorFirmwareToolWindowTest::unpluggingRemovesPorts()
{
    const QString a = QStringLiteral("ttyUSB0");
    const QString b = QStringLiteral("ttyUSB1");
    const QString c = QStringLiteral("ttyUSB2");
    portsOfTheComputer = QStringList{a, b, c};
    open();
    dropdown()->setCurrentText(b);
    tool->onDevicesDisconnected(portInfos({c, QStringLiteral("never-listed")}));
    QCOMPARE(listed(), QStringList({b, a}));
    QCOMPARE(dropdown()->currentText(), b);
    tool->onDevicesDisconnected(portInfos({b, a}));
    QCOMPARE(listed(), QStringList());
}

void VelantorFirmwareToolWindowTest::withoutPortsTheButtonsStayEnabled()
{
    open();
    tool->onDevicesDisconnected(portInfos({QStringLiteral("ttyUSB0")}));
    QVERIFY(submit()->isEnabled());
    QVERIFY(closeButton()->isEnabled());
    portsOfTheComputer.clear();
    typeBundle();
    uploader->plan({FakeUploader::WAIT});
    submit()->click();
    tool->onDevicesConnected(portInfos({QStringLiteral("ttyUSB0")}));
    QVERIFY(!submit()->isEnabled());
}

void VelantorFirmwareToolWindowTest::choosesAFile_data()
{
    QTest::addColumn<bool>("byMenu");
    QTest::newRow("button") << false;
    QTest::newRow("menu") << true;
}

void VelantorFirmwareToolWindowTest::choosesAFile()
{
    QFETCH(bool, byMenu);
    open();
    const QString path = uploader->folder.path() + QStringLiteral("/fw.velantor");
    FileDialogAnswer user(path);
    if (byMenu)
        tool->findChild<QAction *>(QStringLiteral("actionLoad_File"))->trigger();
    else
        widget<QPushButton>("selectFileButton")->click();
    QVERIFY(user.asked);
    QVERIFY(!user.saving);
    QCOMPARE(user.title, QStringLiteral("Select Velantor Firmware File"));
    QCOMPARE(user.filters, QStringList({QStringLiteral("Velantor Firmware Files (*.velantor)"),
                                        QStringLiteral("All Files (*.*)")}));
    QCOMPARE(QDir(user.folder).canonicalPath(), QDir::current().canonicalPath());
    QCOMPARE(fileBox()->text(), path);
    QCOMPARE(fileLabel(), QStringLiteral("File Selected : fw.velantor"));
    QCOMPARE(tool->findChild<FirmwareFlasher *>()->getHexPath(), path);
}

void VelantorFirmwareToolWindowTest::theNextFileIsLookedForBesideTheLast()
{
    open();
    QVERIFY(QDir().mkdir(QStringLiteral("downloads")));
    uploader->folder.write(QStringLiteral("downloads/new.velantor"), bundle);
    FileDialogAnswer first(uploader->folder.path() + QStringLiteral("/downloads/new.velantor"));
    tool->on_selectFileButton_clicked();
    FileDialogAnswer second({});
    tool->on_selectFileButton_clicked();
    QCOMPARE(QDir(second.folder).canonicalPath(),
             QDir(QStringLiteral("downloads")).canonicalPath());
}

void VelantorFirmwareToolWindowTest::cancelKeepsTheFile()
{
    open();
    typeBundle();
    FileDialogAnswer user({});
    tool->on_selectFileButton_clicked();
    QVERIFY(user.asked);
    QCOMPARE(fileBox()->text(), QStringLiteral("fw.velantor"));
    QCOMPARE(fileLabel(), QStringLiteral("File Selected : fw.velantor"));
    QCOMPARE(tool->findChild<FirmwareFlasher *>()->getHexPath(), QStringLiteral("fw.velantor"));
}

void VelantorFirmwareToolWindowTest::typedTextCountsLikeAChosenFile()
{
    open();
    typeBundle();
    QCOMPARE(tool->findChild<FirmwareFlasher *>()->getHexPath(), QStringLiteral("fw.velantor"));
    uploader->plan({FakeUploader::WAIT});
    submit()->click();
    QTRY_COMPARE(uploader->runs(), QStringList(RUN.arg(QStringLiteral("ttyUSB0"))));
}

void VelantorFirmwareToolWindowTest::theLabelFollowsEachKey()
{
    open();
    fileBox()->setFocus();
    QTest::keyClick(fileBox(), 'f');
    QCOMPARE(fileLabel(), QStringLiteral("File Selected : f"));
    QTest::keyClick(fileBox(), 'w');
    QCOMPARE(fileLabel(), QStringLiteral("File Selected : fw"));
    QTest::keyClick(fileBox(), '/');
    QCOMPARE(fileLabel(), QStringLiteral("File Selected : "));
    QTest::keyClick(fileBox(), 'a');
    QCOMPARE(fileLabel(), QStringLiteral("File Selected : a"));
    type({});
    QCOMPARE(fileLabel(), QStringLiteral("File Selected : "));
}

void VelantorFirmwareToolWindowTest::withoutAFileNothingStarts_data()
{
    QTest::addColumn<bool>("typedBefore");
    QTest::newRow("nothing chosen") << false;
    QTest::newRow("text deleted") << true;
}

void VelantorFirmwareToolWindowTest::withoutAFileNothingStarts()
{
    QFETCH(bool, typedBefore);
    open();
    if (typedBefore) {
        typeBundle();
        type({});
    }
    MessageBoxAnswers user;
    submit()->click();
    QCOMPARE(user.seen().size(), 1);
    const MessageBoxAnswers::Box box = user.seen().first();
    QCOMPARE(box.title, QStringLiteral("No File"));
    QCOMPARE(box.icon, QMessageBox::Information);
    QCOMPARE(box.text, QStringLiteral("Please specify a file to flash to the Velatnor."));
    QVERIFY(box.modal);
    QVERIFY(submit()->isEnabled());
    QVERIFY(closeButton()->isEnabled());
    QVERIFY(tool->findChildren<QMessageBox *>().isEmpty());
    QVERIFY(uploader->runs().isEmpty());
}

void VelantorFirmwareToolWindowTest::onlyBundlesAreFlashed_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("good");
    QTest::newRow("bundle") << "fw.velantor" << true;
    QTest::newRow("ending alone") << ".velantor" << true;
    QTest::newRow("with folders") << "/tmp/a b/v1.039.velantor" << true;
    // A word ends at the dot: that it is no bundle shows later.
    QTest::newRow("backup") << "fw.velantor.bak" << true;
    QTest::newRow("folder") << "my.velantor/fw" << true;
    QTest::newRow("longer word") << "fw.velantors" << false;
    QTest::newRow("digit behind") << "fw.velantor2" << false;
    QTest::newRow("underscore behind") << "fw.velantor_" << false;
    QTest::newRow("other case") << "fw.Velantor" << false;
    QTest::newRow("no dot") << "velantor" << false;
    QTest::newRow("other dot") << "fw-velantor" << false;
    QTest::newRow("image") << "fw.hex" << false;
    QTest::newRow("name of nothing") << "NOPATHS" << false;
}

void VelantorFirmwareToolWindowTest::onlyBundlesAreFlashed()
{
    QFETCH(QString, path);
    QFETCH(bool, good);
    open();
    tool->on_fileInputBox_textEdited(path);
    MessageBoxAnswers user;
    uploader->plan({FakeUploader::WAIT});
    submit()->click();
    QCOMPARE(submit()->isEnabled(), !good);
    QCOMPARE(closeButton()->isEnabled(), !good);
    if (good) {
        QTRY_COMPARE(uploader->runs().size(), 1);
        QVERIFY(user.seen().isEmpty());
        return;
    }
    QVERIFY(uploader->runs().isEmpty());
    QCOMPARE(user.seen().size(), 1);
    const MessageBoxAnswers::Box box = user.seen().first();
    QCOMPARE(box.title, QStringLiteral("Wrong File"));
    QCOMPARE(box.icon, QMessageBox::Information);
    QCOMPARE(box.text, QStringLiteral("Please choose a .velantor file to flash to the Velantor."));
    QCOMPARE(box.buttons.size(), 1);
    QVERIFY(box.modal);
}

void VelantorFirmwareToolWindowTest::startsTheUploader()
{
    open();
    typeBundle();
    uploader->plan({FakeUploader::WAIT});
    submit()->click();
    QVERIFY(!submit()->isEnabled());
    QVERIFY(!closeButton()->isEnabled());
    QVERIFY(tool->findChild<QAction *>(QStringLiteral("actionExit"))->isEnabled());
    QCOMPARE(tool->windowModality(), Qt::ApplicationModal);
    QTRY_COMPARE(uploader->runs(), QStringList(RUN.arg(QStringLiteral("ttyUSB0"))));
    QCOMPARE(uploader->folder.read(QStringLiteral("fw7.hex")), QByteArray(":00000001FF\n"));
}

void VelantorFirmwareToolWindowTest::theChosenPortIsFlashed()
{
    portsOfTheComputer = QStringList{QStringLiteral("pts/4"), QStringLiteral("ttyUSB0")};
    open();
    typeBundle();
    dropdown()->setCurrentText(QStringLiteral("pts/4"));
    uploader->plan({FakeUploader::WAIT});
    submit()->click();
    QCOMPARE(tool->findChild<FirmwareFlasher *>()->getCOMPort(), QStringLiteral("/dev/pts/4"));
    QTRY_COMPARE(uploader->runs(), QStringList(RUN.arg(QStringLiteral("pts/4"))));
}

void VelantorFirmwareToolWindowTest::profilesAreKeptUnlessTicked_data()
{
    QTest::addColumn<int>("clicks");
    QTest::addColumn<QByteArray>("table");
    QTest::newRow("untouched") << 0 << QByteArray("keep\n");
    QTest::newRow("ticked") << 1 << QByteArray("overwrite\n");
    QTest::newRow("ticked and unticked") << 2 << QByteArray("keep\n");
}

void VelantorFirmwareToolWindowTest::profilesAreKeptUnlessTicked()
{
    QFETCH(int, clicks);
    open();
    typeBundle();
    for (int click = 0; click < clicks; ++click)
        widget<QCheckBox>("deleteProfilesCB")->click();
    uploader->plan({FakeUploader::WAIT});
    submit()->click();
    QTEST(uploader->folder.read(QStringLiteral("device.txt")), "table");
}

void VelantorFirmwareToolWindowTest::aFlashThatSucceeds()
{
    open();
    typeBundle();
    uploader->plan(
        {printing({QStringLiteral("All flash above bldr erased"), QStringLiteral("hex file loaded"),
                   QStringLiteral("  42%"), QStringLiteral("Flash Write success"),
                   QStringLiteral("Verified Flash OK")})});
    QStringList order;
    connect(tool, &VelantorFirmwareToolWindow::flashed, this,
            [&] { order.append(QStringLiteral("flashed")); });
    connect(tool, &VelantorFirmwareToolWindow::resetVelantorSignalFT, this,
            [&](const QString &port) { order.append(QStringLiteral("reset ") + port); });
    connect(tool, &VelantorFirmwareToolWindow::closing, this,
            [&] { order.append(QStringLiteral("closing")); });
    submit()->click();

    const QString mark(QChar(0x221A));
    QTRY_COMPARE(widget<QLabel>("eraseFlashCM")->text(), mark);
    chunkWasSeen(0);
    QTRY_COMPARE(widget<QProgressBar>("loadFilePB")->maximum(), 100);
    chunkWasSeen(1);
    QTRY_COMPARE(widget<QProgressBar>("uploadPB")->value(), 42);
    chunkWasSeen(2);
    QTRY_COMPARE(widget<QLabel>("uploadCM")->text(), mark);
    QVERIFY(!submit()->isEnabled());
    chunkWasSeen(3);
    QTRY_COMPARE(widget<QLabel>("verifyCM")->text(), mark);
    QCOMPARE(order, QStringList({QStringLiteral("flashed"), QStringLiteral("reset /dev/ttyUSB0")}));
    QVERIFY(submit()->isEnabled());
    QVERIFY(closeButton()->isEnabled());
    QVERIFY(tool->isVisible());
}

void VelantorFirmwareToolWindowTest::anErrorLeavesCloseDisabled()
{
    open();
    typeBundle();
    uploader->plan({printing({QStringLiteral("Can not open comport")})});
    MessageBoxAnswers user;
    submit()->click();
    QTRY_COMPARE(user.titles(), QStringList(QStringLiteral("Flashing Error!")));
    QTRY_VERIFY(submit()->isEnabled());
    QVERIFY(!closeButton()->isEnabled());
    tool->findChild<QAction *>(QStringLiteral("actionExit"))->trigger();
    QTRY_VERIFY(!tool);
}

void VelantorFirmwareToolWindowTest::keysPressedAgainDoNothing_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("space") << int(Qt::Key_Space);
    QTest::newRow("enter") << int(Qt::Key_Return);
}

void VelantorFirmwareToolWindowTest::keysPressedAgainDoNothing()
{
    QFETCH(int, key);
    open();
    QVERIFY(QTest::qWaitForWindowActive(tool));
    typeBundle();
    uploader->plan({FakeUploader::WAIT, printing({QStringLiteral("Can not open comport")})});
    submit()->setFocus();
    const auto press = [&] {
        QTest::keyClick(tool->focusWidget(), Qt::Key(key));
        QCoreApplication::processEvents();
    };
    press();
    QVERIFY(!submit()->isEnabled());
    press();
    press();
    QCOMPARE(QApplication::activeModalWidget(), tool.data());
    QTRY_COMPARE(uploader->runs(), QStringList(RUN.arg(QStringLiteral("ttyUSB0"))));

    // After an error the same key tries again.
    MessageBoxAnswers user;
    tool->findChild<FirmwareFlasher *>()->startFlashing();
    QTRY_COMPARE(user.titles(), QStringList(QStringLiteral("Flashing Error!")));
    QTRY_VERIFY(submit()->isEnabled());
    QCOMPARE(tool->focusWidget(), submit());
}

void VelantorFirmwareToolWindowTest::theFocusStaysWhereTheUserPutIt()
{
    open();
    QVERIFY(QTest::qWaitForWindowActive(tool));
    typeBundle();
    uploader->plan({printing({QStringLiteral("Can not open comport")})});
    MessageBoxAnswers user;
    submit()->setFocus();
    submit()->click();
    fileBox()->setFocus();
    QTRY_COMPARE(user.titles(), QStringList(QStringLiteral("Flashing Error!")));
    QTRY_VERIFY(submit()->isEnabled());
    QCOMPARE(tool->focusWidget(), fileBox());
}

void VelantorFirmwareToolWindowTest::withoutAPortThePortCannotBeOpened()
{
    portsOfTheComputer.clear();
    open();
    typeBundle();
    uploader->plan({FakeUploader::WAIT});
    submit()->click();
    QTRY_COMPARE(uploader->runs(), QStringList(RUN.arg(QString())));
}

void VelantorFirmwareToolWindowTest::theAskForAConnectIsPassedOn()
{
    open();
    QSignalSpy asked(tool, &VelantorFirmwareToolWindow::connectVelantorSignalFT);
    emit tool->findChild<FirmwareFlasher *>()->connectVelantorSignalFF();
    QCOMPARE(asked.size(), 1);
}

void VelantorFirmwareToolWindowTest::closes_data()
{
    QTest::addColumn<Way>("way");
    QTest::newRow("menu") << Way([](VelantorFirmwareToolWindow *window) {
        window->findChild<QAction *>(QStringLiteral("actionExit"))->trigger();
    });
    QTest::newRow("button") << Way([](VelantorFirmwareToolWindow *window) {
        window->findChild<QPushButton *>(QStringLiteral("closeButton"))->click();
    });
    QTest::newRow("frame of the window")
        << Way([](VelantorFirmwareToolWindow *window) { window->close(); });
    QTest::newRow("end of the session")
        << Way([](VelantorFirmwareToolWindow *) { QApplication::closeAllWindows(); });
}

void VelantorFirmwareToolWindowTest::closes()
{
    QFETCH(Way, way);
    uploader->folder.write(QStringLiteral("device.txt"), "old\n");
    uploader->folder.write(QStringLiteral("device_overwrite.txt"), "left over\n");
    open();
    int told = 0;
    connect(tool, &VelantorFirmwareToolWindow::closing, this, [&] {
        ++told;
        QVERIFY(tool->isVisible());
        QVERIFY(!QFile::exists(QStringLiteral("device_overwrite.txt")));
    });
    way(tool);
    QCOMPARE(told, 1);
    QVERIFY(!tool || !tool->isVisible());
    QTRY_VERIFY(!tool);
    QCOMPARE(told, 1);
    QCOMPARE(uploader->folder.read(QStringLiteral("device.txt")), QByteArray("left over\n"));
}

void VelantorFirmwareToolWindowTest::exitTwiceTellsOnce()
{
    open();
    QSignalSpy closing(tool, &VelantorFirmwareToolWindow::closing);
    tool->exitProgram();
    tool->exitProgram();
    QCOMPARE(closing.size(), 1);
    QTRY_VERIFY(!tool);
}

void VelantorFirmwareToolWindowTest::theTableOfAnOlderInstallationComesBack_data()
{
    QTest::addColumn<bool>("table");
    QTest::addColumn<bool>("leftOver");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("nothing left over") << true << false << QByteArray("now\n");
    QTest::newRow("left over") << true << true << QByteArray("then\n");
    QTest::newRow("left over alone") << false << true << QByteArray("then\n");
    QTest::newRow("neither") << false << false << QByteArray();
}

void VelantorFirmwareToolWindowTest::theTableOfAnOlderInstallationComesBack()
{
    QFETCH(bool, table);
    QFETCH(bool, leftOver);
    QFETCH(QByteArray, expected);
    if (table)
        uploader->folder.write(QStringLiteral("device.txt"), "now\n");
    if (leftOver)
        uploader->folder.write(QStringLiteral("device_overwrite.txt"), "then\n");
    open();
    QVERIFY(QFile::exists(QStringLiteral("device_overwrite.txt")) == leftOver);
    tool->exitProgram();
    QCOMPARE(uploader->folder.read(QStringLiteral("device.txt")), expected);
    QCOMPARE(QFile::exists(QStringLiteral("device.txt")), !expected.isEmpty());
    QVERIFY(!QFile::exists(QStringLiteral("device_overwrite.txt")));
    QTRY_VERIFY(!tool);
}

void VelantorFirmwareToolWindowTest::closingEndsTheUploader_data()
{
    closes_data();
    QTest::newRow("its owner goes")
        << Way([](VelantorFirmwareToolWindow *window) { delete window; });
}

void VelantorFirmwareToolWindowTest::closingEndsTheUploader()
{
    QFETCH(Way, way);
    open();
    typeBundle();
    uploader->plan({QStringLiteral("echo $$ > pid.new; mv pid.new pid; exec sleep 1000")});
    submit()->click();
    QTRY_VERIFY(QFile::exists(QStringLiteral("pid")));
    const pid_t process = uploader->folder.read(QStringLiteral("pid")).trimmed().toInt();
    QVERIFY(process > 0);
    QVERIFY(!isGone(process));
    closeButton()->setEnabled(true); // as the watchdog does
    way(tool);
    QTRY_VERIFY(!tool);
    QTRY_VERIFY(isGone(process));
}

void VelantorFirmwareToolWindowTest::mayDieInItsBox_data()
{
    QTest::addColumn<Way>("way");
    QTest::newRow("no file") << Way(
        [](VelantorFirmwareToolWindow *window) { window->on_submitButton_clicked(); });
    QTest::newRow("wrong file") << Way([](VelantorFirmwareToolWindow *window) {
        window->on_fileInputBox_textEdited(QStringLiteral("fw.hex"));
        window->on_submitButton_clicked();
    });
    QTest::newRow("help") << Way([](VelantorFirmwareToolWindow *window) { window->helpProgram(); });
}

void VelantorFirmwareToolWindowTest::mayDieInItsBox()
{
    QFETCH(Way, way);
    open();
    MessageBoxAnswers user;
    user.push([this](QMessageBox *) { delete tool; });
    way(tool);
    QVERIFY(!tool);
    QCOMPARE(user.seen().size(), 1);
}

QTEST_MAIN(VelantorFirmwareToolWindowTest)
#include "tst_velantorfirmwaretoolwindow.moc"
