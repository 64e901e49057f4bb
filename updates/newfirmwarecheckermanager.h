#pragma once

#include <QObject>

class QWidget;

namespace NewFirmwareChecker
{

/// The main window's front for the two checks that the user asks for.
class NewFirmwareCheckerManager : public QObject
{
    Q_OBJECT

public:
    /// parent: the main window, over which the dialogs come up.
    explicit NewFirmwareCheckerManager(QObject *parent);

signals:
    /// A new bundle lies in the current directory.
    void newBundle();

public slots:
    void on_checkFirmwareButtonPressed();
    void onCheckForSoftwareUpdates();

private:
    QWidget *window() const;
};

} // namespace NewFirmwareChecker
