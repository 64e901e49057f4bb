#include "device/connectdialog.h"

#include "support/fakeuploader.h"
#include "support/messageboxanswers.h"
#include "support/patience.h"
#include "support/pretendedports.h"

#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QPointer>
#include <QProcess>
#include <QProgressBar>
#include <QPushButton>
#include <QtTest>

#include <memory>

using UploadDownload::ConnectDialog;

namespace
{

const QString NO_PORT = QStringLiteral("No COM Port available!");
const QString READ = QStringLiteral("-s /dev/%1 -h -V -l 0x9C00 0xA000 fs_to_read.hex");

} // namespace

class ConnectDialogTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void looksAsAgreed();
    void showsAllTextsWhole();
    void listsPorts_data();
    void listsPorts();
    void saysThatThereIsNoPort_data();
    void saysThatThereIsNoPort();
    void readsFromTheChosenPort();
    void buttonIsPressedByEnter();
    void showsSuccessThenCloses();
    void failureOffersAnotherTry();
    void furtherFailureRepeatsTheBox();
    void cancelClosesTheDialog_data();
    void cancelClosesTheDialog();
    void missingUploaderFails();
    void crashRunsTheFailureTwice_data();
    void crashRunsTheFailureTwice();
    void successAfterAFailure();
    void mayDieInItsSignal();
    void mayDieInItsBox();
    void closingLeavesTheReadRunning();
    void followsTheCable();
    void aNewPortIsListedInOrder();
    void aListedPortIsNotListedTwice();
    void aBuiltInPortIsNoPort();
    void unpluggingRemovesPorts();
    void formatsPorts();
    void isOperatedByProgram();

private:
    ConnectDialog *newDialog();
    template <typename T> T *widget(const char *name) const
    {
        T *found = dialog->findChild<T *>(QLatin1String(name));
        if (!found)
            qFatal("no %s", name);
        return found;
    }
    QComboBox *dropdown() const { return widget<QComboBox>("comPortsDropdown"); }
    QPushButton *okButton() const { return widget<QPushButton>("okButton"); }
    QProgressBar *bar() const { return widget<QProgressBar>("progressBar"); }
    QString labelText(const char *name) const { return widget<QLabel>(name)->text(); }
    QStringList listed() const;

    std::unique_ptr<FakeUploader> uploader;
    std::unique_ptr<QWidget> window;
    QPointer<ConnectDialog> dialog;
};

void ConnectDialogTest::init()
{
    portsOfTheComputer = QStringList{QStringLiteral("ttyUSB0")};
    uploader = std::make_unique<FakeUploader>();
    window = std::make_unique<QWidget>();
}

void ConnectDialogTest::cleanup()
{
    window.reset();
    uploader.reset();
}

ConnectDialog *ConnectDialogTest::newDialog()
{
    dialog = new ConnectDialog(window.get());
    dialog->setFileLocation(QStringLiteral("fs_to_read.hex"));
    return dialog;
}

QStringList ConnectDialogTest::listed() const
{
    QStringList names;
    for (int index = 0; index < dropdown()->count(); ++index)
        names.append(dropdown()->itemText(index));
    return names;
}

void ConnectDialogTest::looksAsAgreed()
{
    newDialog();
    QVERIFY(!dialog->isVisible());
    dialog->show();
    QVERIFY(dialog->isVisible());
    QCOMPARE(dialog->size(), QSize(353, 236));
    QCOMPARE(dialog->minimumSize(), QSize(353, 236));
    QCOMPARE(dialog->maximumSize(), QSize(353, 236));
    QVERIFY(dialog->testAttribute(Qt::WA_DeleteOnClose));
    QCOMPARE(dialog->windowModality(), Qt::ApplicationModal);
    QCOMPARE(dialog->windowTitle(), QStringLiteral("Connect"));
    QCOMPARE(labelText("dialogTitleLabel"), QStringLiteral("Connect to Velantor"));
    QCOMPARE(labelText("dropdownLabel"), QStringLiteral("Choose a COM Port:"));
    QCOMPARE(labelText("errorMessage"), QString());
    QCOMPARE(widget<QLabel>("errorMessage")->styleSheet(),
             QStringLiteral("QLabel {\n\tcolor: rgb(255, 0, 0);\n}"));
    QCOMPARE(labelText("statusLabel"), QStringLiteral("Status"));
    QCOMPARE(labelText("status"), QStringLiteral("Stopped"));
    QCOMPARE(bar()->value(), 0);
    QCOMPARE(okButton()->text(), QStringLiteral("Connect"));
    QCOMPARE(okButton()->focusPolicy(), Qt::NoFocus);
    QVERIFY(okButton()->isEnabled());
    QVERIFY(dropdown()->parentWidget() == widget<QGroupBox>("groupBox"));
    QCOMPARE(widget<QLabel>("dropdownLabel")->buddy(), dropdown());
}

void ConnectDialogTest::showsAllTextsWhole()
{
    const QFont before = QApplication::font();
    QApplication::setFont(QFont(QStringLiteral("Arial"), 9));
    portsOfTheComputer.clear();
    newDialog()->show();
    for (const QLabel *label : dialog->findChildren<QLabel *>()) {
        const QSize needed = label->sizeHint();
        QVERIFY2(label->width() >= needed.width() && label->height() >= needed.height(),
                 qPrintable(label->objectName()));
    }
    okButton()->setText(QStringLiteral("Try Again"));
    QVERIFY(okButton()->width() >= okButton()->sizeHint().width());
    QVERIFY(okButton()->height() >= okButton()->sizeHint().height());
    QApplication::setFont(before);
}

void ConnectDialogTest::listsPorts_data()
{
    QTest::addColumn<QStringList>("ports");
    QTest::addColumn<QStringList>("expected");
    const QString usb0 = QStringLiteral("ttyUSB0");
    const QString usb1 = QStringLiteral("ttyUSB1");
    const QString acm0 = QStringLiteral("ttyACM0");
    const QString s0 = QStringLiteral("ttyS0");
    QTest::newRow("one") << QStringList{usb0} << QStringList{usb0};
    QTest::newRow("last first") << QStringList{usb0, usb1, acm0} << QStringList{acm0, usb1, usb0};
    QTest::newRow("built-in ports stay out")
        << QStringList{s0, usb0, QStringLiteral("ttyS31"), usb1, QStringLiteral("ttySAC0")}
        << QStringList{usb1, usb0};
    QTest::newRow("name with a folder")
        << QStringList{usb0, QStringLiteral("pts/3")} << QStringList{QStringLiteral("pts/3"), usb0};
}

void ConnectDialogTest::listsPorts()
{
    QFETCH(QStringList, ports);
    QFETCH(QStringList, expected);
    portsOfTheComputer = ports;
    newDialog();
    QCOMPARE(listed(), expected);
    QCOMPARE(dropdown()->currentIndex(), 0);
    QCOMPARE(labelText("errorMessage"), QString());
    QVERIFY(okButton()->isEnabled());
}

void ConnectDialogTest::saysThatThereIsNoPort_data()
{
    QTest::addColumn<QStringList>("ports");
    QTest::newRow("none") << QStringList{};
    QTest::newRow("built-in ones only")
        << QStringList{QStringLiteral("ttyS0"), QStringLiteral("ttyS1")};
}

void ConnectDialogTest::saysThatThereIsNoPort()
{
    QFETCH(QStringList, ports);
    portsOfTheComputer = ports;
    newDialog();
    QCOMPARE(listed(), QStringList());
    QCOMPARE(labelText("errorMessage"), NO_PORT);
    QVERIFY(!okButton()->isEnabled());
    QCOMPARE(labelText("status"), QStringLiteral("Stopped"));
}

void ConnectDialogTest::readsFromTheChosenPort()
{
    portsOfTheComputer = QStringList{QStringLiteral("ttyUSB0"), QStringLiteral("pts/7")};
    uploader->plan({FakeUploader::WAIT});
    newDialog()->show();
    QSignalSpy chosen(dialog, &ConnectDialog::COMPortChosen);
    dropdown()->setCurrentText(QStringLiteral("pts/7"));
    QTest::mouseClick(okButton(), Qt::LeftButton);
    QCOMPARE(chosen.size(), 1);
    QCOMPARE(chosen.first().first().toString(), QStringLiteral("pts/7"));
    QVERIFY(!okButton()->isEnabled());
    QCOMPARE(labelText("status"), QStringLiteral("Working..."));
    QCOMPARE(bar()->minimum(), 0);
    QCOMPARE(bar()->maximum(), 0);
    QTRY_COMPARE(uploader->runs(), QStringList(READ.arg(QStringLiteral("pts/7"))));
    uploader->release();
    QTRY_VERIFY(!dialog);
}

void ConnectDialogTest::buttonIsPressedByEnter()
{
    newDialog()->show();
    QSignalSpy chosen(dialog, &ConnectDialog::COMPortChosen);
    QTest::keyClick(dialog, Qt::Key_Return);
    QCOMPARE(chosen.size(), 1);
    QTRY_VERIFY(!dialog);
}

void ConnectDialogTest::showsSuccessThenCloses()
{
    newDialog()->show();
    QSignalSpy written(dialog, &ConnectDialog::settingsWrite);
    int reads = 0;
    connect(dialog, &ConnectDialog::settingsRead, this, [&] {
        ++reads;
        QVERIFY(dialog->isVisible());
        QCOMPARE(labelText("status"), QStringLiteral("Connected!"));
        QCOMPARE(bar()->maximum(), 100);
        QCOMPARE(bar()->value(), 100);
    });
    okButton()->click();
    QTRY_VERIFY(!dialog);
    QCOMPARE(reads, 1);
    QCOMPARE(written.size(), 0);
}

void ConnectDialogTest::failureOffersAnotherTry()
{
    uploader->plan({FakeUploader::FAIL});
    newDialog()->show();
    QSignalSpy read(dialog, &ConnectDialog::settingsRead);
    QSignalSpy written(dialog, &ConnectDialog::settingsWrite);
    MessageBoxAnswers user;
    user.push([&](QMessageBox *box) {
        QCOMPARE(written.size(), 1);
        QCOMPARE(labelText("status"), QStringLiteral("Failed!"));
        QCOMPARE(bar()->maximum(), 100);
        QCOMPARE(bar()->value(), 0);
        QCOMPARE(okButton()->text(), QStringLiteral("Try Again"));
        QVERIFY(okButton()->isEnabled());
        QCOMPARE(box->standardButtons(), QMessageBox::Cancel | QMessageBox::Ok);
        box->button(QMessageBox::Ok)->click();
    });
    okButton()->click();
    QTRY_COMPARE(user.seen().size(), 1);
    QTRY_VERIFY(dialog->findChildren<QMessageBox *>().isEmpty());
    QCOMPARE(written.first().first().toBool(), false);
    QCOMPARE(read.size(), 0);
    QVERIFY(dialog->isVisible());

    const MessageBoxAnswers::Box box = user.seen().first();
    QCOMPARE(box.title, QStringLiteral("Failed!"));
    QCOMPARE(box.icon, QMessageBox::Warning);
    QVERIFY(box.modal);
    QCOMPARE(box.text,
             QStringLiteral(
                 "<p>Please make sure to select the correct COM port, that the Velantor is in "
                 "bootloader mode, and that you are connected to the computer, and try again.</p>"
                 "<p>To enter bootloader when the Velantor is on, hold down both buttons to enter "
                 "the setup menu and select \"Connect to PC\".</p>"
                 "<p>If this is a reoccurring issue, turn off the Velantor fully and double check "
                 "every cable connection. Once all the cables are fully connected, turn on the "
                 "Velantor and then enter bootloader mode.</p>"));
}

void ConnectDialogTest::furtherFailureRepeatsTheBox()
{
    uploader->plan({FakeUploader::FAIL, FakeUploader::FAIL});
    newDialog()->show();
    QSignalSpy written(dialog, &ConnectDialog::settingsWrite);
    MessageBoxAnswers user;
    user.push(QMessageBox::Ok);
    user.push(QMessageBox::Ok);
    okButton()->click();
    QTRY_COMPARE(user.seen().size(), 1);
    QTRY_VERIFY(dialog->findChildren<QMessageBox *>().isEmpty());
    okButton()->click();
    QCOMPARE(labelText("status"), QStringLiteral("Working..."));
    QTRY_COMPARE(user.seen().size(), 2);
    QTRY_VERIFY(dialog->findChildren<QMessageBox *>().isEmpty());
    QCOMPARE(okButton()->text(), QStringLiteral("Try Again"));
    QCOMPARE(written.size(), 2);
    QCOMPARE(uploader->runs().size(), 2);
}

void ConnectDialogTest::cancelClosesTheDialog_data()
{
    QTest::addColumn<bool>("byCloseControl");
    QTest::newRow("Cancel") << false;
    QTest::newRow("the box is closed") << true;
}

void ConnectDialogTest::cancelClosesTheDialog()
{
    QFETCH(bool, byCloseControl);
    uploader->plan({FakeUploader::FAIL});
    newDialog()->show();
    MessageBoxAnswers user;
    if (byCloseControl)
        user.pushClose();
    else
        user.push(QMessageBox::Cancel);
    okButton()->click();
    QTRY_VERIFY(!dialog);
    QCOMPARE(user.seen().size(), 1);
}

void ConnectDialogTest::missingUploaderFails()
{
    uploader->remove();
    newDialog()->show();
    MessageBoxAnswers user;
    user.push(QMessageBox::Cancel);
    okButton()->click();
    QTRY_VERIFY(!dialog);
    QCOMPARE(user.titles(), QStringList(QStringLiteral("Failed!")));
}

void ConnectDialogTest::crashRunsTheFailureTwice_data()
{
    QTest::addColumn<int>("first");
    QTest::newRow("stay") << int(QMessageBox::Ok);
    QTest::newRow("leave at once") << int(QMessageBox::Cancel);
}

void ConnectDialogTest::crashRunsTheFailureTwice()
{
    QFETCH(int, first);
    uploader->plan({FakeUploader::CRASH});
    newDialog()->show();
    QSignalSpy written(dialog, &ConnectDialog::settingsWrite);
    MessageBoxAnswers user;
    user.push(QMessageBox::StandardButton(first));
    user.push(QMessageBox::Cancel);
    okButton()->click();
    QTRY_VERIFY(!dialog);
    QCOMPARE(user.seen().size(), 2);
    QCOMPARE(written.size(), 2);
}

void ConnectDialogTest::successAfterAFailure()
{
    uploader->plan({FakeUploader::FAIL, FakeUploader::SUCCEED});
    newDialog()->show();
    QSignalSpy read(dialog, &ConnectDialog::settingsRead);
    MessageBoxAnswers user;
    user.push(QMessageBox::Ok);
    okButton()->click();
    QTRY_COMPARE(user.seen().size(), 1);
    QTRY_VERIFY(dialog->findChildren<QMessageBox *>().isEmpty());
    okButton()->click();
    QTRY_VERIFY(!dialog);
    QCOMPARE(read.size(), 1);
}

void ConnectDialogTest::mayDieInItsSignal()
{
    newDialog()->show();
    connect(dialog, &ConnectDialog::settingsRead, this, [this] { delete dialog; });
    okButton()->click();
    QTRY_VERIFY(!dialog);
}

void ConnectDialogTest::mayDieInItsBox()
{
    uploader->plan({FakeUploader::FAIL});
    newDialog()->show();
    MessageBoxAnswers user;
    user.push([this](QMessageBox *) { delete dialog; });
    okButton()->click();
    QTRY_VERIFY(!dialog);
    QCOMPARE(user.seen().size(), 1);
}

void ConnectDialogTest::closingLeavesTheReadRunning()
{
    uploader->plan({FakeUploader::WAIT_AND_FAIL});
    newDialog()->show();
    MessageBoxAnswers user;
    okButton()->click();
    QTRY_COMPARE(uploader->runs().size(), 1);
    QTest::keyClick(dialog, Qt::Key_Escape);
    QTRY_VERIFY(!dialog);

    auto *process = window->findChild<QProcess *>();
    QVERIFY(process);
    QCOMPARE(process->state(), QProcess::Running);
    uploader->release();
    QTRY_COMPARE(process->state(), QProcess::NotRunning);
    QCOMPARE(user.seen().size(), 0);
}

void ConnectDialogTest::followsTheCable()
{
    portsOfTheComputer.clear();
    newDialog()->show();
    QCOMPARE(labelText("errorMessage"), NO_PORT);
    portsOfTheComputer = QStringList{QStringLiteral("ttyUSB0"), QStringLiteral("ttyUSB1")};
    QTRY_VERIFY(okButton()->isEnabled());
    QCOMPARE(labelText("errorMessage"), QString());
    QCOMPARE(listed(), QStringList({QStringLiteral("ttyUSB1"), QStringLiteral("ttyUSB0")}));
    QCOMPARE(dropdown()->currentIndex(), 0);
    portsOfTheComputer.clear();
    QTRY_VERIFY(!okButton()->isEnabled());
    QCOMPARE(labelText("errorMessage"), NO_PORT);
    QCOMPARE(listed(), QStringList());
}

void ConnectDialogTest::aNewPortIsListedInOrder()
{
    portsOfTheComputer = QStringList{QStringLiteral("ttyUSB0"), QStringLiteral("ttyUSB2")};
    newDialog();
    dropdown()->setCurrentIndex(1);
    portsOfTheComputer.insert(1, QStringLiteral("ttyUSB1"));
    dialog->onDevicesConnected(portInfos({QStringLiteral("ttyUSB1")}));
    QCOMPARE(listed(), QStringList({QStringLiteral("ttyUSB2"), QStringLiteral("ttyUSB1"),
                                    QStringLiteral("ttyUSB0")}));
    QCOMPARE(dropdown()->currentIndex(), 0);
}

void ConnectDialogTest::aListedPortIsNotListedTwice()
{
    newDialog();
    dialog->onDevicesConnected(portInfos({QStringLiteral("ttyUSB0")}));
    QCOMPARE(listed(), QStringList(QStringLiteral("ttyUSB0")));
    // Names are compared to the letter.
    portsOfTheComputer.append(QStringLiteral("TTYUSB0"));
    dialog->onDevicesConnected(portInfos({QStringLiteral("TTYUSB0")}));
    QCOMPARE(listed(), QStringList({QStringLiteral("TTYUSB0"), QStringLiteral("ttyUSB0")}));
}

void ConnectDialogTest::aBuiltInPortIsNoPort()
{
    portsOfTheComputer.clear();
    newDialog();
    portsOfTheComputer.append(QStringLiteral("ttyS0"));
    dialog->onDevicesConnected(portInfos({QStringLiteral("ttyS0")}));
    QCOMPARE(listed(), QStringList());
    QVERIFY(!okButton()->isEnabled());
    QCOMPARE(labelText("errorMessage"), NO_PORT);
}

void ConnectDialogTest::unpluggingRemovesPorts()
{
    portsOfTheComputer = QStringList{QStringLiteral("ttyUSB0"), QStringLiteral("ttyUSB1"),
                                     QStringLiteral("ttyUSB2")};
    newDialog();
    dialog->onDevicesDisconnected(
        portInfos({QStringLiteral("ttyS0"), QStringLiteral("ttyusb0"), QStringLiteral("ttyUSB1")}));
    QCOMPARE(listed(), QStringList({QStringLiteral("ttyUSB2"), QStringLiteral("ttyUSB0")}));
    QVERIFY(okButton()->isEnabled());
    QCOMPARE(labelText("errorMessage"), QString());
    dialog->onDevicesDisconnected(
        portInfos({QStringLiteral("ttyUSB0"), QStringLiteral("ttyUSB2")}));
    QCOMPARE(listed(), QStringList());
    QVERIFY(!okButton()->isEnabled());
    QCOMPARE(labelText("errorMessage"), NO_PORT);
}

void ConnectDialogTest::formatsPorts()
{
    QCOMPARE(ConnectDialog::formatCOMPort(QStringLiteral("ttyUSB0")),
             QStringLiteral("/dev/ttyUSB0"));
    QCOMPARE(ConnectDialog::formatCOMPort(QString()), QStringLiteral("/dev/"));
}

void ConnectDialogTest::isOperatedByProgram()
{
    portsOfTheComputer = QStringList{QStringLiteral("ttyUSB0"), QStringLiteral("ttyUSB1")};
    newDialog()->show();
    QSignalSpy chosen(dialog, &ConnectDialog::COMPortChosen);
    QVERIFY(!dialog->setCOMAndOK(QStringLiteral("ttyUSB9"), true));
    QVERIFY(!dialog->setCOMAndOK(QStringLiteral("TTYUSB0"), true));
    QCOMPARE(chosen.size(), 0);
    QVERIFY(dialog->setCOMAndOK(QStringLiteral("ttyUSB0"), true));
    QCOMPARE(chosen.size(), 1);
    QCOMPARE(chosen.first().first().toString(), QStringLiteral("ttyUSB0"));
    QTRY_VERIFY(!dialog);
    QCOMPARE(uploader->runs(), QStringList(READ.arg(QStringLiteral("ttyUSB0"))));
}

QTEST_MAIN(ConnectDialogTest)
#include "tst_connectdialog.moc"
