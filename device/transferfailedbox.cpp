#include "device/transferfailedbox.h"

#include <QCoreApplication>
#include <QMessageBox>

namespace UploadDownload
{

QMessageBox *newTransferFailedBox(QWidget *parent)
{
    auto *box = new QMessageBox(parent);
    box->setWindowTitle(QCoreApplication::translate("UploadDownload", "Failed!"));
    box->setIcon(QMessageBox::Warning);
    box->setText(QCoreApplication::translate(
        "UploadDownload",
        "<p>Please make sure to select the correct COM port, that the Velantor is in bootloader "
        "mode, and that you are connected to the computer, and try again.</p>"
        "<p>To enter bootloader when the Velantor is on, hold down both buttons to enter the setup "
        "menu and select \"Connect to PC\".</p>"
        "<p>If this is a reoccurring issue, turn off the Velantor fully and double check every "
        "cable connection. Once all the cables are fully connected, turn on the Velantor and then "
        "enter bootloader mode.</p>"));
    return box;
}

} // namespace UploadDownload
