#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QProcess>
#include <QString>
#include <QStringList>

class ProfileSettings;
class QWidget;

namespace HEXGeneratorParser
{
class HEXManager;
}

namespace UploadDownload
{
class CommunicationDialog;

/// Coordinates what the main window does with a charger: connect, read, write, write the device
/// settings, disconnect.
///
/// It transfers nothing itself: a dialog runs the uploader, and its signals lead on to the HEX
/// manager, which turns fs_to_read.hex into profiles and profiles into fs_to_write.hex. No port
/// stays open between two operations; all that is kept of a connection is the port's name. The
/// charger has to be in bootloader mode, which only a time-out of the uploader can tell.
class UploadDownloadManager : public QObject
{
    Q_OBJECT

public:
    /// hexManager must outlive this object. parent is the main window, over which dialogs and
    /// boxes come up.
    UploadDownloadManager(HEXGeneratorParser::HEXManager *hexManager, QObject *parent);

    /// The path of the port with this bare name.
    static QString formatCOMPort(const QString &name);
    /// The bare name in a path: every "/dev/" is taken out.
    static QString unformatCOMPort(QString path);

signals:
    /// True when a read has arrived and its import begins; false on a failed import and at
    /// disconnecting.
    void settingsRead(bool success);
    /// How a write went; false for a failed read too.
    void settingsWrite(bool success);
    /// Whether the device settings are known; passed on from the HEX manager.
    void unitSettingsRead(bool available);
    /// How writing the device settings went.
    void unitSettingsWrite(bool success);
    /// For whoever wants the list emptied through this object; never emitted by itself.
    void deleteAllProfiles();
    /// Tells the dialog of a write that the charger is the right one.
    void continueWrite();

public slots:
    void on_connectButtonPressed();
    /// com: bare name of the port that all that follows goes to.
    void on_COMPortChosen(QString com);
    /// Reads the charger, compares it with the profiles' charger, writes and reads back.
    void on_writeButtonPressed();
    /// Goes on with a write after the comparison; success: the charger is the right one.
    void continueWithWrite(bool success);
    /// Writes the device settings with the profiles given, with no read before or after.
    void saveUnitSettingsToVel(QList<ProfileSettings *> profileSettings);
    void on_readButtonPressed();
    /// Imports fs_to_read.hex; shows a box when that fails.
    void importFSElements();
    /// Sends the charger out of its bootloader; blocks while the frame is being sent.
    void on_disconnectButtonPressed();
    /// The same at another port, given by name or path, which becomes the chosen one.
    void onResetFromFirmware(QString newCOMPort);
    void onResetFinished(int exitCode, QProcess::ExitStatus exitStatus);
    void onResetFailed(QProcess::ProcessError error);

private:
    bool refuse(const QStringList &unstorableProfiles);
    QWidget *window() const;

    QString comPort; ///< bare name such as "ttyUSB0"; empty until a port was chosen
    HEXGeneratorParser::HEXManager *hexManager;
    /// The dialog of a write until the writing itself has begun; the user may close it before.
    QPointer<CommunicationDialog> writeDialog;
};

} // namespace UploadDownload
