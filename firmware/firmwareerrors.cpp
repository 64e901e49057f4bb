#include "firmware/firmwareerrors.h"

#include "ui_velantorfirmwaretoolwindow.h"

#include <QFile>
#include <QFileInfo>
#include <QMessageBox>
#include <QPointer>

#include <cstdio>

namespace
{

/// Tells a program that started the suite which failure it was.
void printName(const char *name)
{
    std::puts(name);
    std::fflush(stdout);
}

/// Shows a box until it is closed. False when its parent went meanwhile, and the form with it.
bool show(QWidget *parent, const QString &title, const QString &text,
          QMessageBox::Icon icon = QMessageBox::NoIcon)
{
    const QPointer<QWidget> window(parent);
    // Not on the stack: a parent that goes takes its box along.
    const QPointer<QMessageBox> box(new QMessageBox(parent));
    box->setWindowTitle(title);
    box->setText(text);
    box->setIcon(icon);
    box->exec();
    delete box;
    return !parent || window;
}

void resetEraseBar(Ui::VelantorFirmwareToolWindow *ui)
{
    ui->eraseFlashPB->setValue(0);
    ui->eraseFlashPB->setMaximum(100);
}

} // namespace

void FirmwareErrors::error1(Ui::VelantorFirmwareToolWindow *ui, QWidget *parent)
{
    printName("Error1");
    resetEraseBar(ui);
    if (show(parent, tr("Flashing Error!"),
             tr("Incorrect COM port or Velantor is not in Bootloader")))
        cleanup(ui);
}

void FirmwareErrors::error2(Ui::VelantorFirmwareToolWindow *ui, QWidget *parent)
{
    printName("Error2");
    ui->eraseFlashPB->setMaximum(100);
    ui->eraseFlashPB->setValue(100);
    ui->eraseFlashCM->show();
    ui->loadFilePB->setValue(0);
    ui->loadFilePB->setMaximum(100);
    ui->loadFileCM->setText(QStringLiteral("!"));
    ui->loadFileCM->show();
    if (show(parent, tr("Flashing Error"), tr("Firmware file not found!"), QMessageBox::Critical))
        cleanup(ui);
}

void FirmwareErrors::error3(Ui::VelantorFirmwareToolWindow *ui, QWidget *parent)
{
    printName("Error3");
    resetEraseBar(ui);
    if (show(parent, tr("Flashing Error!"),
             tr("\"device.txt\" not found! Please reinstall the program.")))
        cleanup(ui);
}

void FirmwareErrors::error4(Ui::VelantorFirmwareToolWindow *ui, QWidget *parent)
{
    printName("Error4");
    resetEraseBar(ui);
    if (show(parent, tr("Flashing Error!"),
             tr("Cannot open COM port. Please try selecting a different one.")))
        cleanup(ui);
}

void FirmwareErrors::error5(Ui::VelantorFirmwareToolWindow *ui, QWidget *parent)
{
    printName("Error5");
    ui->verifyCM->setText(QStringLiteral("!"));
    ui->verifyCM->show();
    if (show(parent, tr("Flashing Error!"),
             tr("Verification Failed. The firmware file could be corrupted.")))
        cleanup(ui);
}

void FirmwareErrors::error6(QWidget *parent)
{
    printName("Error6");
    show(parent, tr("Instalation Error!"),
         tr("Could not find directory \"VelantorFlasherFiles\". Please try reinstalling the "
            "program."));
}

void FirmwareErrors::error7(QWidget *parent)
{
    printName("Error7");
    show(parent, tr("Installation Error!"),
         tr("\"vexa.exe\" not found. Please try reinstalling the program."));
}

void FirmwareErrors::error8(QWidget *parent)
{
    printName("Error8");
    show(parent, tr("Installation Error!"),
         tr("\"device.txt\" not found. Please try reinstalling the program."));
}

void FirmwareErrors::error9(QString logFileName, QWidget *parent)
{
    printName("Error9");
    show(parent, tr("Unknown Error!"),
         tr("Please make sure you selected a valid Velantor firmware file, the correct COM port, "
            "<br>and it is in bootloader mode.<br><br>                   The log file \"logs/%1\""
            "<br>will contain more information")
             .arg(logFileName));
}

void FirmwareErrors::error10(QWidget *parent)
{
    printName("Error10");
    show(parent, tr("Error!"), tr("An Exception occured while flashing!"));
}

void FirmwareErrors::error11(QWidget *parent)
{
    printName("Error11");
    show(parent, tr("Installation Error!"),
         tr("device_overwrite.txt and device_nooverwrite.txt do not exist. Please try reinstalling "
            "the program."));
}

void FirmwareErrors::error12(QWidget *parent)
{
    printName("Error12");
    show(parent, tr("Installation Error!"),
         tr("Both device_overwrite.txt and device_nooverwrite.txt exist. Please try reinstalling "
            "the program."));
}

void FirmwareErrors::error13(Ui::VelantorFirmwareToolWindow *ui, QWidget *parent)
{
    printName("Error13");
    resetEraseBar(ui);
    if (show(parent, tr("Flashing Error!"), tr("\"no stx char!\" - Known bug. Please try again.")))
        cleanup(ui);
}

void FirmwareErrors::cleanup(Ui::VelantorFirmwareToolWindow *ui)
{
    ui->submitButton->setEnabled(true);
}

QString FirmwareErrors::getFileName(QFile *file)
{
    return file ? QFileInfo(*file).fileName() : QString();
}
