#pragma once

#include "ui_velantorfirmwaretoolwindow.h"

#include "support/capturedoutput.h"

#include <QMainWindow>

/// The form of the firmware tool in a window that does nothing by itself. Both buttons are
/// disabled, as during an attempt.
class FirmwareForm : public QMainWindow
{
public:
    FirmwareForm()
    {
        ui.setupUi(this);
        ui.submitButton->setEnabled(false);
        ui.closeButton->setEnabled(false);
    }

    /// The four rows from above, each as "value/maximum" and what its last label shows.
    QString rows() const
    {
        return row(ui.eraseFlashPB, ui.eraseFlashCM) + ' ' + row(ui.loadFilePB, ui.loadFileCM) +
               ' ' + row(ui.uploadPB, ui.uploadCM) + ' ' + row(ui.verifyPB, ui.verifyCM);
    }

    /// The buttons that can be pressed.
    QString buttons() const
    {
        QStringList enabled;
        for (const QPushButton *button : {ui.submitButton, ui.closeButton}) {
            if (button->isEnabled())
                enabled.append(button->text());
        }
        return enabled.join(", ");
    }

    Ui::VelantorFirmwareToolWindow ui;

private:
    static QString row(const QProgressBar *bar, const QLabel *mark)
    {
        return QString::number(bar->value()) + '/' + QString::number(bar->maximum()) +
               (mark->isHidden() ? QString() : mark->text());
    }
};

/// The lines that an action prints, without those in which the test's frame speaks of the display.
inline QByteArray linesOf(const std::function<void()> &action)
{
    QByteArray lines;
    for (const QByteArray &line : printedBy(action).split('\n')) {
        if (!line.isEmpty() && !line.startsWith("QWARN"))
            lines += line + '\n';
    }
    return lines;
}
