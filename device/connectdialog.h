#pragma once

#include <QDialog>
#include <QList>
#include <QString>

#include <memory>

#include <qextserialenumerator.h>

class COMDeviceWatcher;
class PortDropdown;

namespace Ui
{
class ConnectDialog;
}

namespace UploadDownload
{

/// Lets the user pick the charger's serial port and makes the first read from it.
///
/// Application-modal; deletes itself on close. A read that is running then goes on: it belongs to
/// the parent.
class ConnectDialog : public QDialog
{
    Q_OBJECT

public:
    /// Stays hidden until show().
    explicit ConnectDialog(QWidget *parent);
    ~ConnectDialog() override;

    /// Where the read lands; for information only.
    void setFileLocation(const QString &location);
    /// Picks the port named com and acts as if the button was pressed; automatic is kept for
    /// information. Returns false, and does nothing, when the port is not listed.
    bool setCOMAndOK(const QString &com, bool automatic);
    /// The path of the port with this name.
    static QString formatCOMPort(const QString &com);

signals:
    /// The page has been read from the charger.
    void settingsRead();
    /// The bare name of the port that is about to be read from.
    void COMPortChosen(QString com);
    /// Emitted with false when the read failed.
    void settingsWrite(bool success);

public slots:
    void on_okButtonPressed();
    void connectSuccess();
    void connectFail();
    void onDevicesConnected(QList<QextPortInfo> added);
    void onDevicesDisconnected(QList<QextPortInfo> removed);

private:
    void showNoPort();
    void showStopped(const QString &status, int percent);

    std::unique_ptr<Ui::ConnectDialog> ui;
    std::unique_ptr<PortDropdown> ports;
    bool okByProgram = false;
    QString fileLocation;
    COMDeviceWatcher *watcher; ///< a child of this dialog
};

} // namespace UploadDownload
