#include "firmware/firmwareerrors.h"

#include "firmwareform.h"
#include "support/messageboxanswers.h"

#include <QPointer>
#include <QTemporaryFile>
#include <QtTest>

#include <cstdio>
#include <functional>
#include <memory>

using Failure = std::function<void(FirmwareForm *)>;
Q_DECLARE_METATYPE(Failure)

namespace
{

using ForForm = void (*)(Ui::VelantorFirmwareToolWindow *, QWidget *);
using ForParent = void (*)(QWidget *);

Failure failure(ForForm function)
{
    return [function](FirmwareForm *form) { function(&form->ui, form); };
}

Failure failure(ForParent function)
{
    return [function](FirmwareForm *form) { function(form); };
}

Failure noProgress(const QString &logFile)
{
    return [logFile](FirmwareForm *form) { FirmwareErrors::error9(logFile, form); };
}

/// As rows() shows a form in the midst of things, see markedForm().
const QString MARKED = QStringLiteral("100/0 100/0 50/100 50/100");

std::unique_ptr<FirmwareForm> markedForm()
{
    auto form = std::make_unique<FirmwareForm>();
    for (QProgressBar *bar : {form->ui.eraseFlashPB, form->ui.loadFilePB}) {
        bar->setRange(0, 0);
        bar->setValue(100);
    }
    form->ui.uploadPB->setValue(50);
    form->ui.verifyPB->setValue(50);
    for (QLabel *mark :
         {form->ui.eraseFlashCM, form->ui.loadFileCM, form->ui.uploadCM, form->ui.verifyCM}) {
        mark->setText("x");
        mark->hide();
    }
    return form;
}

} // namespace

class FirmwareErrorsTest : public QObject
{
    Q_OBJECT

private slots:
    void tell_data();
    void tell();
    void surviveTheirWindow_data();
    void surviveTheirWindow();
    void needNoWindow();
    void namesFiles();
    void enablesTheUpdate();
};

void FirmwareErrorsTest::tell_data()
{
    QTest::addColumn<Failure>("raise");
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("rows");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("allowsNewAttempt");

    const QString eraseReset = "0/100 100/0 50/100 50/100";
    QTest::newRow("no answer") << failure(FirmwareErrors::error1) << QByteArray("Error1")
                               << eraseReset << "Flashing Error!"
                               << "Incorrect COM port or Velantor is not in Bootloader" << true;
    QTest::newRow("no image") << failure(FirmwareErrors::error2) << QByteArray("Error2")
                              << "100/100x 0/100! 50/100 50/100"
                              << "Flashing Error"
                              << "Firmware file not found!" << true;
    QTest::newRow("no device table")
        << failure(FirmwareErrors::error3) << QByteArray("Error3") << eraseReset
        << "Flashing Error!"
        << "\"device.txt\" not found! Please reinstall the program." << true;
    QTest::newRow("no port") << failure(FirmwareErrors::error4) << QByteArray("Error4")
                             << eraseReset << "Flashing Error!"
                             << "Cannot open COM port. Please try selecting a different one."
                             << true;
    QTest::newRow("different") << failure(FirmwareErrors::error5) << QByteArray("Error5")
                               << "100/0 100/0 50/100 50/100!"
                               << "Flashing Error!"
                               << "Verification Failed. The firmware file could be corrupted."
                               << true;
    QTest::newRow("no folder") << failure(FirmwareErrors::error6) << QByteArray("Error6") << MARKED
                               << "Instalation Error!"
                               << "Could not find directory \"VelantorFlasherFiles\". Please try "
                                  "reinstalling the program."
                               << false;
    QTest::newRow("no uploader") << failure(FirmwareErrors::error7) << QByteArray("Error7")
                                 << MARKED << "Installation Error!"
                                 << "\"vexa.exe\" not found. Please try reinstalling the program."
                                 << false;
    QTest::newRow("no device table in an earlier installation")
        << failure(FirmwareErrors::error8) << QByteArray("Error8") << MARKED
        << "Installation Error!"
        << "\"device.txt\" not found. Please try reinstalling the program." << false;
    QTest::newRow("no progress")
        << noProgress("outputlog-Sun-November-15-2026--8-5-9-am.txt") << QByteArray("Error9")
        << MARKED << "Unknown Error!"
        << "Please make sure you selected a valid Velantor firmware file, the correct COM port, "
           "<br>and it is in bootloader mode.<br><br>                   The log file "
           "\"logs/outputlog-Sun-November-15-2026--8-5-9-am.txt\"<br>will contain more information"
        << false;
    QTest::newRow("no progress and no log")
        << noProgress("") << QByteArray("Error9") << MARKED << "Unknown Error!"
        << "Please make sure you selected a valid Velantor firmware file, the correct COM port, "
           "<br>and it is in bootloader mode.<br><br>                   The log file "
           "\"logs/\"<br>will contain more information"
        << false;
    QTest::newRow("exception") << failure(FirmwareErrors::error10) << QByteArray("Error10")
                               << MARKED << "Error!"
                               << "An Exception occured while flashing!" << false;
    QTest::newRow("no device tables")
        << failure(FirmwareErrors::error11) << QByteArray("Error11") << MARKED
        << "Installation Error!"
        << "device_overwrite.txt and device_nooverwrite.txt do not exist. Please try reinstalling "
           "the program."
        << false;
    QTest::newRow("two device tables")
        << failure(FirmwareErrors::error12) << QByteArray("Error12") << MARKED
        << "Installation Error!"
        << "Both device_overwrite.txt and device_nooverwrite.txt exist. Please try reinstalling "
           "the program."
        << false;
    QTest::newRow("reply without begin")
        << failure(FirmwareErrors::error13) << QByteArray("Error13") << eraseReset
        << "Flashing Error!"
        << "\"no stx char!\" - Known bug. Please try again." << true;
}

void FirmwareErrorsTest::tell()
{
    QFETCH(Failure, raise);
    QFETCH(QByteArray, name);
    QFETCH(bool, allowsNewAttempt);

    const auto form = markedForm();
    form->show();
    QString rows;
    QString buttons;
    QWidget *parent = nullptr;
    MessageBoxAnswers answers;
    answers.push([&](QMessageBox *box) {
        std::puts("box");
        rows = form->rows();
        buttons = form->buttons();
        parent = box->parentWidget();
        box->close();
    });
    QCOMPARE(linesOf([&] { raise(form.get()); }), name + "\nbox\n");

    // The window lives on for many attempts: it keeps no boxes.
    QVERIFY(!form->findChild<QMessageBox *>());
    QTEST(rows, "rows");
    QCOMPARE(buttons, "");
    QCOMPARE(parent, form.get());
    QCOMPARE(answers.seen().size(), 1);
    const MessageBoxAnswers::Box box = answers.seen().first();
    QTEST(box.title, "title");
    QTEST(box.text, "text");
    QCOMPARE(box.icon, name == "Error2" ? QMessageBox::Critical : QMessageBox::NoIcon);
    QVERIFY(box.modal);
    QTEST(form->rows(), "rows");
    QCOMPARE(form->buttons(), allowsNewAttempt ? "Update Firmware" : "");
}

void FirmwareErrorsTest::surviveTheirWindow_data()
{
    tell_data();
}

void FirmwareErrorsTest::surviveTheirWindow()
{
    QFETCH(Failure, raise);
    QFETCH(QByteArray, name);

    FirmwareForm *form = markedForm().release();
    form->setAttribute(Qt::WA_DeleteOnClose);
    form->show();
    QPointer<FirmwareForm> alive(form);
    QPointer<QMessageBox> shown;
    MessageBoxAnswers answers;
    answers.push([&](QMessageBox *box) {
        shown = box;
        form->close();
    });
    QCOMPARE(linesOf([&] { raise(form); }), name + '\n');
    QTRY_VERIFY(!alive);
    QVERIFY(!shown);
    QCOMPARE(answers.seen().size(), 1);
}

void FirmwareErrorsTest::needNoWindow()
{
    FirmwareForm form;
    MessageBoxAnswers answers;
    linesOf([&] { FirmwareErrors::error4(&form.ui, nullptr); });
    QCOMPARE(answers.titles(), QStringList{"Flashing Error!"});
    QCOMPARE(form.buttons(), "Update Firmware");
}

void FirmwareErrorsTest::namesFiles()
{
    QTemporaryFile file(QDir::tempPath() + "/log of XXXXXX.txt");
    QVERIFY(file.open());
    const QString name = FirmwareErrors::getFileName(&file);
    QVERIFY2(QRegularExpression("^log of [A-Za-z]{6}\\.txt$").match(name).hasMatch(),
             qPrintable(name));
    QCOMPARE(FirmwareErrors::getFileName(nullptr), QString());
}

void FirmwareErrorsTest::enablesTheUpdate()
{
    FirmwareForm form;
    FirmwareErrors::cleanup(&form.ui);
    QCOMPARE(form.buttons(), "Update Firmware");
}

QTEST_MAIN(FirmwareErrorsTest)
#include "tst_firmwareerrors.moc"
