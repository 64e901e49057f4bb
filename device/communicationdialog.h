#pragma once

#include <QDialog>
#include <QString>

#include <memory>

namespace Ui
{
class CommunicationDialog;
}

namespace UploadDownload
{

/// Runs and shows the transfers of one reading or writing of the charger.
///
/// Application-modal; deletes itself on close, with its runs. A user may close it by Esc or by the
/// window's close control while it reads, which does the charger no harm; while the profile page is
/// erased and written it stays, since a stop half way would lose the profiles on the charger.
class CommunicationDialog : public QDialog
{
    Q_OBJECT

public:
    enum Mode : int {
        ReadOnly = 0,      ///< read
        WriteSettings = 1, ///< write
        WriteOnly = 2,     ///< write, then read
        ReadWriteRead = 3  ///< read, then write() on request, then read
    };

    /// Shows itself.
    CommunicationDialog(QWidget *parent, Mode mode);
    ~CommunicationDialog() override;

    /// path: of the port, such as "/dev/ttyUSB0"; to be set before startRequiredComm().
    void setCOMPort(const QString &path);
    /// Starts the first transfer of the mode and returns at once: 1, or 0 for an unknown mode, for
    /// which nothing happens.
    int startRequiredComm();
    /// Shows that the charger is not the one whose profiles are at hand.
    void verificationFailed();

signals:
    /// A read has arrived.
    void settingsRead();
    /// Whether a write worked; false for a failed read too.
    void settingsWrite(bool success);

public slots:
    /// Starts the erasure and the writing.
    void write();
    void readSuccess();
    void readFail();
    void writeSuccess();
    void writeFail();
    /// Closes the dialog, unless that would break something off half way.
    void reject() override;

private:
    void displayRequiredUi();
    void read();
    void showWorking();
    void showEnd(const QString &status, int percent);

    std::unique_ptr<Ui::CommunicationDialog> ui;
    Mode mode;
    int finishedReads = 0;
    QString comPort;
    bool mayBeClosed = true;
};

} // namespace UploadDownload
