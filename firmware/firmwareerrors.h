#pragma once

#include <QCoreApplication>
#include <QString>

class QFile;
class QWidget;

namespace Ui
{
class VelantorFirmwareToolWindow;
}

/// What the user is told when a flashing attempt fails, a function for each failure.
///
/// Each prints its name, such as "Error1", marks the rows of the firmware tool, and blocks in a
/// nested event loop until its modal box over parent is closed. The form belongs to parent, and
/// both may be gone by then: nothing is touched any more in that case.
class FirmwareErrors
{
    Q_DECLARE_TR_FUNCTIONS(FirmwareErrors)

public:
    /// The charger does not answer, or is not in its bootloader.
    static void error1(Ui::VelantorFirmwareToolWindow *ui, QWidget *parent);
    /// The firmware image is missing.
    static void error2(Ui::VelantorFirmwareToolWindow *ui, QWidget *parent);
    /// The device table is missing.
    static void error3(Ui::VelantorFirmwareToolWindow *ui, QWidget *parent);
    /// The port cannot be opened.
    static void error4(Ui::VelantorFirmwareToolWindow *ui, QWidget *parent);
    /// The charger holds other bytes than were written.
    static void error5(Ui::VelantorFirmwareToolWindow *ui, QWidget *parent);
    /// The reply of the charger began in its middle.
    static void error13(Ui::VelantorFirmwareToolWindow *ui, QWidget *parent);

    /// The uploader makes no progress. logFileName: without its folder; empty where there is no
    /// log.
    static void error9(QString logFileName, QWidget *parent);
    /// An attempt ended with an exception.
    static void error10(QWidget *parent);

    // Failures of earlier installations.
    static void error6(QWidget *parent);
    static void error7(QWidget *parent);
    static void error8(QWidget *parent);
    static void error11(QWidget *parent);
    static void error12(QWidget *parent);

    /// Lets the user try again.
    static void cleanup(Ui::VelantorFirmwareToolWindow *ui);
    /// The name of a file without its folders; empty for none.
    static QString getFileName(QFile *file);
};
