#include "fakefirmwareflasher.h"

#include "firmware/velantorfirmwaretoolwindow.h"
#include "support/capturedoutput.h"
#include "support/messageboxanswers.h"
#include "support/workingdirectory.h"

#include <QFile>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

using FirmwareTool::VelantorFirmwareToolWindow;
using ThrowsIn = FakeFirmwareFlasher::ThrowsIn;

/// The window of the firmware tool in front of a start that throws.
class FirmwareExceptionTest : public QObject
{
    Q_OBJECT

private slots:
    void isToldThenTheToolCloses_data();
    void isToldThenTheToolCloses();
    void theToolMayGoWhileItIsTold();
};

void FirmwareExceptionTest::isToldThenTheToolCloses_data()
{
    QTest::addColumn<int>("place");
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("printed");
    QTest::newRow("starting") << int(ThrowsIn::StartFlashing) << 7
                              << QByteArray("Error 7.\nError10\n");
    QTest::newRow("setting the port")
        << int(ThrowsIn::SetComPort) << -12 << QByteArray("Error -12.\nError10\n");
}

void FirmwareExceptionTest::isToldThenTheToolCloses()
{
    QFETCH(int, place);
    FakeFirmwareFlasher::place = static_cast<ThrowsIn>(place);
    QFETCH(int, code);
    FakeFirmwareFlasher::code = code;
    const WorkingDirectory folder;
    folder.write(QStringLiteral("device_overwrite.txt"), "left over\n");
    const QPointer<VelantorFirmwareToolWindow> tool(new VelantorFirmwareToolWindow(nullptr));
    tool->on_fileInputBox_textEdited(QStringLiteral("fw.velantor"));
    QSignalSpy closing(tool, &VelantorFirmwareToolWindow::closing);
    MessageBoxAnswers user;
    user.push([&](QMessageBox *box) {
        QCOMPARE(closing.size(), 0);
        for (const char *name : {"submitButton", "closeButton"})
            QVERIFY(!tool->findChild<QPushButton *>(QLatin1String(name))->isEnabled());
        box->close();
    });
    const QByteArray printed = printedBy([&] { tool->on_submitButton_clicked(); });
    // What the platform says about windows comes behind.
    QTEST(printed.left(printed.indexOf("QWARN")), "printed");
    QCOMPARE(user.seen().size(), 1);
    QCOMPARE(user.seen().first().title, QStringLiteral("Error!"));
    QCOMPARE(user.seen().first().text, QStringLiteral("An Exception occured while flashing!"));
    QCOMPARE(closing.size(), 1);
    QCOMPARE(folder.read(QStringLiteral("device.txt")), QByteArray("left over\n"));
    QTRY_VERIFY(!tool);
}

void FirmwareExceptionTest::theToolMayGoWhileItIsTold()
{
    FakeFirmwareFlasher::place = ThrowsIn::StartFlashing;
    const QPointer<VelantorFirmwareToolWindow> tool(new VelantorFirmwareToolWindow(nullptr));
    tool->on_fileInputBox_textEdited(QStringLiteral("fw.velantor"));
    MessageBoxAnswers user;
    user.push([&](QMessageBox *) { delete tool; });
    tool->on_submitButton_clicked();
    QVERIFY(!tool);
}

QTEST_MAIN(FirmwareExceptionTest)
#include "tst_firmwareexception.moc"
