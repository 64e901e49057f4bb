#pragma once

#include "app/versionstring.h"

#include <QCoreApplication>
#include <QString>
#include <QStringList>

class QMessageBox;
class QWidget;

/// The message boxes of the main application, so that their wording lives in one place.
///
/// Every function shows a modal box over parent (which may be null), blocks in a nested event loop
/// until the user has answered, and returns the QMessageBox::StandardButton of the answer.
class MessageDialogs
{
    Q_DECLARE_TR_FUNCTIONS(MessageDialogs)

public:
    /// voltage is the nominal voltage of the hardware, such as "48"; names are profiles.
    static int incompatibleProfilesNotImported(QWidget *parent, QString voltage, QStringList names);
    /// Yes or No.
    static int continueWithoutIncompatibleProfiles(QWidget *parent, QString voltage,
                                                   QStringList names);

    static int helpVelantorProfileEditor(QWidget *parent);
    static int aboutVelantorProfileEditor(QWidget *parent);

    static int firmwareDownloaded(QWidget *parent);
    static int softwareUpdateNeeded(QWidget *parent);
    static int currentBundleTooOld(QWidget *parent, VersionString required, VersionString software);
    /// bundleVersion comes without a leading "v".
    static int currentSoftwareTooOld(QWidget *parent, QString bundleVersion,
                                     VersionString required);

    /// Yes or No, with No for the Enter key.
    static int askDeleteAllProfiles(QWidget *parent);
    /// Yes to add the profiles to the list, No to replace the list. Closing the box means No.
    static int askAppendProfiles(QWidget *parent);

    static int mainFolderNotFound(QWidget *parent);
    static int ssFileMissing(QWidget *parent);
    static int vexaMissing(QWidget *parent);
    static int deviceTxtMissing(QWidget *parent);

    static int hexImportReadError(QWidget *parent);
    static int hexImportChecksumError(QWidget *parent);
    static int hexImportTypeError(QWidget *parent);
    static int xmlImportReadError(QWidget *parent);

    static int firmwareCheckerError(QWidget *parent);
    static int velantorNotSameAsConnected(QWidget *parent);

private:
    /// Gives box the title and the text that the two boxes about incompatible profiles share;
    /// returns box.
    static QMessageBox *incompatibleProfilesRoot(QMessageBox *box, QString voltage,
                                                 QString closingLine, QStringList names);
};
