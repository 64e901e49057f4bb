#include "firmware/firmwaremessagedialogs.h"

#include "app/messageboxsize.h"

#include <QMessageBox>
#include <QPointer>

namespace FirmwareTool
{

namespace
{

/// Shows a box until it is closed. It is not on the stack: a parent that goes takes it along.
void show(QMessageBox *newBox)
{
    const QPointer<QMessageBox> box(newBox);
    box->exec();
    delete box;
}

} // namespace

void FirmwareMessageDialogs::firmwareToolHelp(QWidget *parent)
{
    const QString steps =
        QStringLiteral("<ol><li>") +
        tr("Connect the USB end of the USB->TTL programming cable to your computer, and TRS end "
           "(1/8\" audio plug) to the programming adapter cable of the Velantor.") +
        QStringLiteral("</li><br><li>") +
        tr("Put the Velantor in bootloader mode. This is accomplished by leaving the Velantor "
           "powered off for 30 seconds, and then pressing and holding the lower button when AC "
           "power is applied. If bootloader mode if reached before powering on the Velantor, the "
           "OLED display screen will be completely blank.") +
        QStringLiteral("</li><br><li>") +
        tr("Select the firmware file to upload via the \"Browse...\" button of the software "
           "tool.") +
        QStringLiteral("</li><br><li>") +
        tr("Select the correct COM port from the drop down list. It will default to the highest "
           "number COM port available, which is usually correct. If in doubt, you can check the "
           "windows device manager and expand the \"Ports (COM & LPT)\" field to see which COM "
           "port number is associated with the USB Serial Port.") +
        QStringLiteral("</li><br><li>") +
        tr("With the Velantor plugged in and in bootloader mode, a firmware file selected, and the "
           "correct COM port chosen, press the \"Update Firmware\" button. The progress bars will "
           "show the upload process as the Velantor is erased, repogrammed, and then verified. Do "
           "not unplug the Velantor until this process is complete.") +
        QStringLiteral("</li></ol>");

    auto *box = new QMessageBox(parent);
    box->setWindowTitle(tr("Basic Usage"));
    box->setText(
        QStringLiteral("<b><font size = \"5\">") + tr("Velantor Firmware Tool Basic Usage:") +
        QStringLiteral("</font></b><font size = \"4\">") + steps + QStringLiteral("</font>"));
    setLeastWidth(box, 550);
    keepOnScreen(box);
    show(box);
}

void FirmwareMessageDialogs::noFile(QWidget *parent)
{
    show(new QMessageBox(QMessageBox::Information, tr("No File"),
                         tr("Please specify a file to flash to the Velatnor."), QMessageBox::Ok,
                         parent));
}

void FirmwareMessageDialogs::wrongFile(QWidget *parent)
{
    show(new QMessageBox(QMessageBox::Information, tr("Wrong File"),
                         tr("Please choose a .velantor file to flash to the Velantor."),
                         QMessageBox::Ok, parent));
}

} // namespace FirmwareTool
