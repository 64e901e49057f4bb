#pragma once

#include <QCoreApplication>

class QWidget;

namespace FirmwareTool
{

/// The message boxes of the firmware tool that report no failure of an attempt.
///
/// Each is modal over parent, and blocks in a nested event loop until it is closed.
class FirmwareMessageDialogs
{
    Q_DECLARE_TR_FUNCTIONS(FirmwareMessageDialogs)

public:
    static void firmwareToolHelp(QWidget *parent);
    /// There is nothing to flash yet.
    static void noFile(QWidget *parent);
    /// What was chosen is no bundle.
    static void wrongFile(QWidget *parent);
};

} // namespace FirmwareTool
