#include "device/communicationdialog.h"

#include "support/fakeuploader.h"
#include "support/messageboxanswers.h"
#include "support/patience.h"

#include <QLabel>
#include <QPointer>
#include <QProcess>
#include <QProgressBar>
#include <QPushButton>
#include <QtTest>

#include <memory>

using UploadDownload::CommunicationDialog;

Q_DECLARE_METATYPE(UploadDownload::CommunicationDialog::Mode)

namespace
{

const QString ERASE = QStringLiteral("-s /dev/ttyUSB0 -h -V -E 0x9C00 0xA000");
const QString WRITE = QStringLiteral("-s /dev/ttyUSB0 -h -V -w fs_to_write.hex");
const QString READ = QStringLiteral("-s /dev/ttyUSB0 -h -V -l 0x9C00 0xA000 fs_to_read.hex");

} // namespace

class CommunicationDialogTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void looksAsAgreed_data();
    void looksAsAgreed();
    void modesAreNumbers();
    void unknownModeDoesNothing();
    void startDisablesTheButton_data();
    void startDisablesTheButton();
    void readOnlyClosesBeforeItTells();
    void writeSettingsStaysWithSuccess();
    void writeOnlyReadsBack();
    void firstReadOfThreeShowsNoSuccess();
    void readWriteReadShowsSuccessAtItsEnd();
    void failureTellsShowsAndCloses_data();
    void failureTellsShowsAndCloses();
    void crashRunsTheFailureTwice_data();
    void crashRunsTheFailureTwice();
    void failureIsNotClosedUnderItsBox();
    void mayDieInItsBox();
    void verificationFailedExplains_data();
    void verificationFailedExplains();
    void escapeEndsARead();
    void writeIsNotBrokenOff();
    void buttonCloses();
    void diesWithItsParentWhileWriting();

private:
    CommunicationDialog *newDialog(CommunicationDialog::Mode mode);
    template <typename T> T *widget(const char *name) const
    {
        T *found = dialog->findChild<T *>(QLatin1String(name));
        if (!found)
            qFatal("no %s", name);
        return found;
    }
    QPushButton *okButton() const { return widget<QPushButton>("okButton"); }
    QProgressBar *bar() const { return widget<QProgressBar>("bar"); }
    QString labelText(const char *name) const { return widget<QLabel>(name)->text(); }
    /// "busy", "0 of 100" and the like, with the status text.
    QString progress() const;

    std::unique_ptr<FakeUploader> uploader;
    std::unique_ptr<QWidget> window;
    QPointer<CommunicationDialog> dialog;
    QStringList told; ///< the dialog's signals in order: "read", "written true", "written false"
};

void CommunicationDialogTest::init()
{
    uploader = std::make_unique<FakeUploader>();
    window = std::make_unique<QWidget>();
    told.clear();
}

void CommunicationDialogTest::cleanup()
{
    window.reset();
    uploader.reset();
}

CommunicationDialog *CommunicationDialogTest::newDialog(CommunicationDialog::Mode mode)
{
    dialog = new CommunicationDialog(window.get(), mode);
    dialog->setCOMPort(QStringLiteral("/dev/ttyUSB0"));
    connect(dialog, &CommunicationDialog::settingsRead, this,
            [this] { told.append(QStringLiteral("read")); });
    connect(dialog, &CommunicationDialog::settingsWrite, this, [this](bool success) {
        told.append(success ? QStringLiteral("written true") : QStringLiteral("written false"));
    });
    return dialog;
}

QString CommunicationDialogTest::progress() const
{
    const QString shown =
        bar()->minimum() == 0 && bar()->maximum() == 0
            ? QStringLiteral("busy")
            : QStringLiteral("%1 of %2").arg(bar()->value()).arg(bar()->maximum());
    return shown + QStringLiteral(", ") + labelText("status");
}

void CommunicationDialogTest::looksAsAgreed_data()
{
    QTest::addColumn<CommunicationDialog::Mode>("mode");
    QTest::addColumn<QString>("title");
    QTest::addColumn<bool>("hasButton");
    QTest::newRow("ReadOnly") << CommunicationDialog::ReadOnly
                              << QStringLiteral("Reading from Velantor") << false;
    QTest::newRow("WriteSettings")
        << CommunicationDialog::WriteSettings << QStringLiteral("Writing Settings") << true;
    QTest::newRow("WriteOnly") << CommunicationDialog::WriteOnly << QStringLiteral("Writing")
                               << true;
    QTest::newRow("ReadWriteRead")
        << CommunicationDialog::ReadWriteRead << QStringLiteral("Writing to Velantor") << true;
}

void CommunicationDialogTest::looksAsAgreed()
{
    QFETCH(CommunicationDialog::Mode, mode);
    QFETCH(QString, title);
    QFETCH(bool, hasButton);
    newDialog(mode);
    QVERIFY(dialog->isVisible());
    QVERIFY(dialog->testAttribute(Qt::WA_DeleteOnClose));
    QCOMPARE(dialog->windowModality(), Qt::ApplicationModal);
    QCOMPARE(dialog->minimumSize(), QSize(460, 109));
    QCOMPARE(dialog->windowTitle(), QStringLiteral("Progress"));
    QCOMPARE(labelText("title"), title);
    QCOMPARE(progress(), QStringLiteral("busy, Working..."));
    QCOMPARE(labelText("errorIcon"), QString());
    QCOMPARE(labelText("errorMessage"), QString());
    QVERIFY(widget<QLabel>("errorMessage")->wordWrap());
    QCOMPARE(okButton()->isVisible(), hasButton);
    QCOMPARE(uploader->runs(), QStringList());
}

void CommunicationDialogTest::modesAreNumbers()
{
    QCOMPARE(int(CommunicationDialog::ReadOnly), 0);
    QCOMPARE(int(CommunicationDialog::WriteSettings), 1);
    QCOMPARE(int(CommunicationDialog::WriteOnly), 2);
    QCOMPARE(int(CommunicationDialog::ReadWriteRead), 3);
}

void CommunicationDialogTest::unknownModeDoesNothing()
{
    // A value that the enumeration can hold without naming it.
    dialog = new CommunicationDialog(window.get(), CommunicationDialog::Mode(7));
    QCOMPARE(int(dialog->startRequiredComm()), 0);
    QVERIFY(okButton()->isEnabled());
    QCOMPARE(dialog->findChildren<QProcess *>().size(), 0);
}

void CommunicationDialogTest::startDisablesTheButton_data()
{
    QTest::addColumn<CommunicationDialog::Mode>("mode");
    QTest::addColumn<QString>("firstRun");
    QTest::newRow("ReadOnly") << CommunicationDialog::ReadOnly << READ;
    QTest::newRow("WriteSettings") << CommunicationDialog::WriteSettings << ERASE;
    QTest::newRow("WriteOnly") << CommunicationDialog::WriteOnly << ERASE;
    QTest::newRow("ReadWriteRead") << CommunicationDialog::ReadWriteRead << READ;
}

void CommunicationDialogTest::startDisablesTheButton()
{
    QFETCH(CommunicationDialog::Mode, mode);
    QFETCH(QString, firstRun);
    uploader->plan({FakeUploader::WAIT});
    newDialog(mode)->startRequiredComm();
    QVERIFY(!okButton()->isEnabled());
    QTRY_COMPARE(uploader->runs(), QStringList(firstRun));
    QCOMPARE(progress(), QStringLiteral("busy, Working..."));
    QCOMPARE(told, QStringList());
}

void CommunicationDialogTest::readOnlyClosesBeforeItTells()
{
    newDialog(CommunicationDialog::ReadOnly);
    bool visible = true;
    connect(dialog, &CommunicationDialog::settingsRead, this,
            [&] { visible = dialog->isVisible(); });
    dialog->startRequiredComm();
    QTRY_VERIFY(!dialog);
    QVERIFY(!visible);
    QCOMPARE(told, QStringList(QStringLiteral("read")));
    QCOMPARE(uploader->runs(), QStringList(READ));
}

void CommunicationDialogTest::writeSettingsStaysWithSuccess()
{
    newDialog(CommunicationDialog::WriteSettings)->startRequiredComm();
    QTRY_COMPARE(told, QStringList(QStringLiteral("written true")));
    QCOMPARE(progress(), QStringLiteral("100 of 100, Success!"));
    QVERIFY(okButton()->isEnabled());
    QVERIFY(dialog->isVisible());
    QCOMPARE(uploader->runs(), QStringList({ERASE, WRITE}));
}

void CommunicationDialogTest::writeOnlyReadsBack()
{
    newDialog(CommunicationDialog::WriteOnly)->startRequiredComm();
    QTRY_COMPARE(told, QStringList({QStringLiteral("written true"), QStringLiteral("read")}));
    QCOMPARE(uploader->runs(), QStringList({ERASE, WRITE, READ}));
    QCOMPARE(progress(), QStringLiteral("busy, Working..."));
    QVERIFY(!okButton()->isEnabled());
}

void CommunicationDialogTest::firstReadOfThreeShowsNoSuccess()
{
    newDialog(CommunicationDialog::ReadWriteRead)->startRequiredComm();
    QTRY_COMPARE(told, QStringList(QStringLiteral("read")));
    QCOMPARE(progress(), QStringLiteral("busy, Working..."));
    QVERIFY(!okButton()->isEnabled());
    QVERIFY(dialog->isVisible());
    QCOMPARE(uploader->runs(), QStringList(READ));
}

void CommunicationDialogTest::readWriteReadShowsSuccessAtItsEnd()
{
    uploader->plan(
        {FakeUploader::SUCCEED, FakeUploader::SUCCEED, FakeUploader::SUCCEED, FakeUploader::WAIT});
    newDialog(CommunicationDialog::ReadWriteRead);
    connect(dialog, &CommunicationDialog::settingsRead, this, [this] {
        if (told.size() == 1)
            dialog->write();
    });
    dialog->startRequiredComm();
    QTRY_COMPARE(told, QStringList({QStringLiteral("read"), QStringLiteral("written true")}));
    QCOMPARE(progress(), QStringLiteral("busy, Working..."));
    QVERIFY(!okButton()->isEnabled());
    uploader->release();
    QTRY_COMPARE(told, QStringList({QStringLiteral("read"), QStringLiteral("written true"),
                                    QStringLiteral("read")}));
    QCOMPARE(progress(), QStringLiteral("100 of 100, Success!"));
    QVERIFY(okButton()->isEnabled());
    QVERIFY(dialog->isVisible());
    QCOMPARE(uploader->runs(), QStringList({READ, ERASE, WRITE, READ}));
}

void CommunicationDialogTest::failureTellsShowsAndCloses_data()
{
    QTest::addColumn<CommunicationDialog::Mode>("mode");
    QTest::addColumn<QStringList>("plan");
    QTest::newRow("read") << CommunicationDialog::ReadOnly << QStringList{FakeUploader::FAIL};
    QTest::newRow("erase") << CommunicationDialog::WriteSettings << QStringList{FakeUploader::FAIL};
    QTest::newRow("write") << CommunicationDialog::WriteSettings
                           << QStringList{FakeUploader::SUCCEED, FakeUploader::FAIL};
    QTest::newRow("first read of three")
        << CommunicationDialog::ReadWriteRead << QStringList{FakeUploader::FAIL};
    QTest::newRow("uploader missing") << CommunicationDialog::ReadOnly << QStringList{};
}

void CommunicationDialogTest::failureTellsShowsAndCloses()
{
    QFETCH(CommunicationDialog::Mode, mode);
    QFETCH(QStringList, plan);
    uploader->plan(plan);
    if (plan.isEmpty())
        uploader->remove();
    newDialog(mode);
    MessageBoxAnswers user;
    user.push([this](QMessageBox *box) {
        QCOMPARE(progress(), QStringLiteral("0 of 100, Failed!"));
        QCOMPARE(told, QStringList(QStringLiteral("written false")));
        QVERIFY(dialog->isVisible());
        box->button(QMessageBox::Ok)->click();
    });
    dialog->startRequiredComm();
    QTRY_VERIFY(!dialog);
    QCOMPARE(told, QStringList(QStringLiteral("written false")));

    QCOMPARE(user.seen().size(), 1);
    const MessageBoxAnswers::Box box = user.seen().first();
    QCOMPARE(box.title, QStringLiteral("Failed!"));
    QCOMPARE(box.icon, QMessageBox::Warning);
    QVERIFY(box.modal);
    QCOMPARE(box.buttons.size(), 1);
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

void CommunicationDialogTest::crashRunsTheFailureTwice_data()
{
    QTest::addColumn<CommunicationDialog::Mode>("mode");
    QTest::addColumn<QStringList>("plan");
    QTest::newRow("read") << CommunicationDialog::ReadOnly << QStringList{FakeUploader::CRASH};
    QTest::newRow("erase") << CommunicationDialog::WriteSettings
                           << QStringList{FakeUploader::CRASH};
    QTest::newRow("write") << CommunicationDialog::WriteSettings
                           << QStringList{FakeUploader::SUCCEED, FakeUploader::CRASH};
}

void CommunicationDialogTest::crashRunsTheFailureTwice()
{
    QFETCH(CommunicationDialog::Mode, mode);
    QFETCH(QStringList, plan);
    uploader->plan(plan);
    newDialog(mode);
    MessageBoxAnswers user;
    dialog->startRequiredComm();
    QTRY_VERIFY(!dialog);
    QCOMPARE(user.titles(), QStringList({QStringLiteral("Failed!"), QStringLiteral("Failed!")}));
    QCOMPARE(told, QStringList({QStringLiteral("written false"), QStringLiteral("written false")}));
}

void CommunicationDialogTest::failureIsNotClosedUnderItsBox()
{
    uploader->plan({FakeUploader::CRASH});
    newDialog(CommunicationDialog::ReadOnly);
    MessageBoxAnswers user;
    user.push([this](QMessageBox *box) {
        dialog->close();
        QVERIFY(dialog->isVisible());
        box->close();
    });
    dialog->startRequiredComm();
    QTRY_VERIFY(!dialog);
}

void CommunicationDialogTest::mayDieInItsBox()
{
    uploader->plan({FakeUploader::FAIL});
    newDialog(CommunicationDialog::ReadOnly);
    MessageBoxAnswers user;
    user.push([this](QMessageBox *) { delete dialog; });
    dialog->startRequiredComm();
    QTRY_VERIFY(!dialog);
    QCOMPARE(user.seen().size(), 1);
}

void CommunicationDialogTest::verificationFailedExplains_data()
{
    QTest::addColumn<QFont>("font");
    QTest::newRow("usual font") << QApplication::font();
    QTest::newRow("Arial 9") << QFont(QStringLiteral("Arial"), 9);
}

void CommunicationDialogTest::verificationFailedExplains()
{
    QFETCH(QFont, font);
    const QFont before = QApplication::font();
    QApplication::setFont(font);
    newDialog(CommunicationDialog::ReadWriteRead)->startRequiredComm();
    QTRY_COMPARE(told, QStringList(QStringLiteral("read")));
    dialog->verificationFailed();
    QCOMPARE(progress(), QStringLiteral("0 of 100, Failed!"));
    QCOMPARE(labelText("errorIcon"), QStringLiteral("Communication Error!"));
    QCOMPARE(labelText("errorMessage"),
             QStringLiteral("This Velantor doesn't match either the hardware version or the "
                            "barcode of the Velantor previously connected!"));
    QVERIFY(okButton()->isEnabled());
    QVERIFY(dialog->isVisible());
    QCOMPARE(told, QStringList(QStringLiteral("read"))); // the writing is refused by the manager

    QCoreApplication::processEvents(); // lay out the new texts
    const auto *message = widget<QLabel>("errorMessage");
    QVERIFY(message->height() >= message->heightForWidth(message->width()));
    for (const char *name : {"title", "errorIcon", "status"}) {
        const auto *label = widget<QLabel>(name);
        QVERIFY2(label->width() >= label->sizeHint().width() &&
                     label->height() >= label->sizeHint().height(),
                 name);
    }
    QVERIFY(bar()->height() >= bar()->sizeHint().height());
    QVERIFY(okButton()->height() >= okButton()->sizeHint().height());
    QApplication::setFont(before);
}

void CommunicationDialogTest::escapeEndsARead()
{
    uploader->plan({FakeUploader::WAIT});
    newDialog(CommunicationDialog::ReadOnly)->startRequiredComm();
    QTRY_COMPARE(uploader->runs().size(), 1);
    MessageBoxAnswers user;
    QTest::keyClick(dialog, Qt::Key_Escape);
    QTRY_VERIFY(!dialog);
    QCOMPARE(told, QStringList());
    QCOMPARE(user.seen().size(), 0);
}

void CommunicationDialogTest::writeIsNotBrokenOff()
{
    uploader->plan({FakeUploader::SUCCEED, FakeUploader::WAIT});
    newDialog(CommunicationDialog::WriteSettings)->startRequiredComm();
    QTRY_COMPARE(uploader->runs().size(), 2);
    QTest::keyClick(dialog, Qt::Key_Escape);
    QVERIFY(dialog->isVisible());
    QVERIFY(!dialog->close());
    QVERIFY(dialog->isVisible());
    uploader->release();
    QTRY_COMPARE(told, QStringList(QStringLiteral("written true")));
    QTest::keyClick(dialog, Qt::Key_Escape);
    QTRY_VERIFY(!dialog);
}

void CommunicationDialogTest::buttonCloses()
{
    newDialog(CommunicationDialog::WriteSettings)->startRequiredComm();
    QTRY_VERIFY(okButton()->isEnabled());
    QTest::mouseClick(okButton(), Qt::LeftButton);
    QTRY_VERIFY(!dialog);
}

void CommunicationDialogTest::diesWithItsParentWhileWriting()
{
    uploader->plan({FakeUploader::WAIT});
    newDialog(CommunicationDialog::WriteSettings)->startRequiredComm();
    QTRY_COMPARE(uploader->runs().size(), 1);
    MessageBoxAnswers user;
    window.reset();
    QVERIFY(!dialog);
    QCOMPARE(user.seen().size(), 0);
    QCOMPARE(told, QStringList());
}

QTEST_MAIN(CommunicationDialogTest)
#include "tst_communicationdialog.moc"
