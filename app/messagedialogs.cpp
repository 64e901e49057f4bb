#include "app/messagedialogs.h"

#include "app/applicationglobalmap.h"
#include "app/buildinfo.h"
#include "app/filenames.h"
#include "app/messageboxsize.h"

#include <QMessageBox>
#include <QPushButton>

#include <memory>

namespace
{

int show(QWidget *parent, QMessageBox::Icon icon, const QString &title, const QString &text)
{
    QMessageBox box(parent);
    box.setWindowTitle(title);
    box.setText(text);
    box.setIcon(icon);
    return box.exec();
}

QString link(const QString &address, const QString &text)
{
    return QStringLiteral("<a href = \"") + address + QStringLiteral("\">") + text +
           QStringLiteral("</a>");
}

} // namespace

QMessageBox *MessageDialogs::incompatibleProfilesRoot(QMessageBox *box, QString voltage,
                                                      QString closingLine, QStringList names)
{
    box->setWindowTitle(tr("Incompatible Profiles"));
    QString text = tr("The following profiles aren't compatible with the ") + voltage +
                   tr("V Velantor's hardware limits. ") + QStringLiteral("\n\n");
    // A file may hold so many that laying out the text would freeze the box.
    constexpr int mostNames = 5000;
    for (const QString &name : names.mid(0, mostNames))
        text += name + QLatin1Char('\n');
    if (names.size() > mostNames)
        text += tr("... and %1 more").arg(names.size() - mostNames) + QLatin1Char('\n');
    text += QLatin1Char('\n') + closingLine;
    box->setText(text);
    return box;
}

int MessageDialogs::incompatibleProfilesNotImported(QWidget *parent, QString voltage,
                                                    QStringList names)
{
    const std::unique_ptr<QMessageBox> box(incompatibleProfilesRoot(
        new QMessageBox(parent), voltage, tr("They can not be imported."), names));
    box->setIcon(QMessageBox::Information);
    keepOnScreen(box.get());
    return box->exec();
}

int MessageDialogs::continueWithoutIncompatibleProfiles(QWidget *parent, QString voltage,
                                                        QStringList names)
{
    const std::unique_ptr<QMessageBox> box(incompatibleProfilesRoot(
        new QMessageBox(parent), voltage,
        tr("They must be removed. Are you sure you would like to continue?"), names));
    box->setIcon(QMessageBox::Question);
    box->addButton(QMessageBox::No);
    box->addButton(QMessageBox::Yes);
    // Enter must not throw profiles away.
    box->setDefaultButton(QMessageBox::No);
    keepOnScreen(box.get());
    return box->exec();
}

int MessageDialogs::helpVelantorProfileEditor(QWidget *parent)
{
    const QString body =
        QStringLiteral("\"><ol><li>") +
        tr("Connect the USB end of the USB to TTL programming cable to the computer and the TRS "
           "end (1/8 inch audio plug) to the programming adapter cable of the charger.") +
        QStringLiteral("</li><br><li>") +
        tr("Put the charger in bootloader mode. With V0.9 or later firmware this is done by "
           "holding both buttons to enter the setup menu, and then selecting \"Connect to PC\". "
           "Alternately, leave it powered off for 15 seconds, then press and hold the lower button "
           "while AC power is applied. In the latter case the OLED display is completely blank.") +
        QStringLiteral("</li><br><li>") +
        tr("With the charger on and in bootloader mode, connect with the \"Connect to Velantor\" "
           "button; this reads all profiles and settings and shows them.") +
        QStringLiteral("</li><br><li>") +
        tr("You will be asked for the COM port in a pop-up window. Usually the default is right; "
           "if in doubt, unplug and replug the USB cable and see which port goes away and comes "
           "back.") +
        QStringLiteral("</li><br></ol>") + tr("Notes:") + QStringLiteral("<ul><li>") +
        tr("Hover over the name of a setting to see its tooltip. The advanced Device Settings have "
           "tooltips, too.") +
        QStringLiteral("</li><li>") + tr("For help with choosing a profile, see ") +
        link(siteUrl(QStringLiteral("/velantor/profile-chooser")), tr("the profile chooser")) +
        QStringLiteral(".</li></ul>");

    QMessageBox box(parent);
    box.setWindowTitle(tr("Basic Usage"));
    box.setText(QStringLiteral("<b><font size = \"5\">") +
                tr("Velantor Software Suite Basic Usage:") +
                QStringLiteral("</font></b><font size = \"") + QString::number(4) + body +
                QStringLiteral("</font>"));
    setLeastWidth(&box, 550);
    return box.exec();
}

int MessageDialogs::aboutVelantorProfileEditor(QWidget *parent)
{
    const QString page = siteUrl(QStringLiteral("/velantor"));
    const QString text =
        QStringLiteral("<center><b>Velantor Software Suite<br>                      Build: ") +
        SOFTWARE_VERSION + QStringLiteral(" - ") + BUILD_TYPE + QStringLiteral(" - ") +
        compilationDate() +
        QStringLiteral("<br><br></b>                      Velantor Bundle Version: v") +
        ApplicationGlobalMap::getString(QStringLiteral("bundle_version")) +
        QStringLiteral("<br><br>") +
        tr("This software is provided by Tolk under the terms of its licence, without warranty of "
           "any kind.") +
        QStringLiteral("<br>") + tr("For more information and support, visit ") + link(page, page) +
        QStringLiteral("</center>");

    QMessageBox box(parent);
    box.setWindowTitle(tr("About Velantor Software Suite"));
    box.setText(text);
    return box.exec();
}

int MessageDialogs::firmwareDownloaded(QWidget *parent)
{
    return show(parent, QMessageBox::Information, tr("New Firmware!"),
                tr("The latest firmware has been downloaded. Please go to File -->Update Velantor "
                   "Firmware... to flash it."));
}

int MessageDialogs::softwareUpdateNeeded(QWidget *parent)
{
    return show(parent, QMessageBox::Information, tr("New Software Available!"),
                tr("There is a new software upgrade available! Please click ") +
                    link(softwareDownloadUrl(), tr("here")) +
                    tr(" to download the latest version."));
}

int MessageDialogs::currentBundleTooOld(QWidget *parent, VersionString required,
                                        VersionString software)
{
    return show(parent, QMessageBox::Information, tr("Velantor Bundle Update Required"),
                tr("Velantor Software Suite version ") + software.toString() +
                    tr(" requires Velantor Bundle version ") + required.toString() +
                    tr(" or higher. Please reinstall the Software Suite."));
}

int MessageDialogs::currentSoftwareTooOld(QWidget *parent, QString bundleVersion,
                                          VersionString required)
{
    const QString address = softwareDownloadUrl();
    return show(parent, QMessageBox::Information, tr("Software Update Required"),
                tr("Velantor Bundle v") + bundleVersion +
                    tr(" requires Velantor Software Suite v") + required.toString() +
                    tr(" or higher. You currently have ") + SOFTWARE_VERSION +
                    tr(". Download it from:") + QStringLiteral("<br/><center>") +
                    link(address, address) + QStringLiteral("</center>"));
}

int MessageDialogs::askDeleteAllProfiles(QWidget *parent)
{
    QMessageBox box(parent);
    box.setWindowTitle(tr("Delete All Profiles?"));
    box.setText(tr("This will remove all profiles from the profile list. This operation cannot be "
                   "undone. Continue?"));
    box.setIcon(QMessageBox::Question);
    box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
    box.setDefaultButton(QMessageBox::No);
    return box.exec();
}

int MessageDialogs::askAppendProfiles(QWidget *parent)
{
    QMessageBox box(parent);
    box.setWindowTitle(tr("Add Profiles to List?"));
    box.setText(tr("Do you want to add the imported profiles to the current list of profiles, or "
                   "replace them?<br>"));
    box.setIcon(QMessageBox::Question);
    const QPushButton *add = box.addButton(tr("&Add Profiles"), QMessageBox::YesRole);
    // The only button of the No role is also what closing the box stands for.
    box.addButton(tr("&Replace Profiles"), QMessageBox::NoRole);
    box.exec();
    return box.clickedButton() == add ? QMessageBox::Yes : QMessageBox::No;
}

int MessageDialogs::mainFolderNotFound(QWidget *parent)
{
    return show(parent, QMessageBox::Critical, tr("Installation Error"),
                tr("The folder Velantor Software Suite Files could not be found. Please try "
                   "reinstalling the program."));
}

int MessageDialogs::ssFileMissing(QWidget *parent)
{
    return show(parent, QMessageBox::Critical, tr("Installation Error"),
                tr("The file \"") + MASTER_SS_FILE_NAME +
                    tr("\" could not be found.\n\nPlease try reinstalling the program. If that "
                       "doesn't work the \".velantor\" bundle might be corrupted, try looking for "
                       "a more recent version of software."));
}

int MessageDialogs::vexaMissing(QWidget *parent)
{
    return show(parent, QMessageBox::Critical, tr("Installation Error"),
                tr("The executable ") + VEXA_FILE_NAME +
                    tr(" could not be found. Please try reinstalling the program."));
}

int MessageDialogs::deviceTxtMissing(QWidget *parent)
{
    return show(parent, QMessageBox::Critical, tr("Installation Error"),
                tr("The file device.txt could not be found. Please try reinstalling the program."
                   "If that doesn't work the .velantor bundle might be corrupted, please find a "
                   "new one."));
}

int MessageDialogs::hexImportReadError(QWidget *parent)
{
    return show(parent, QMessageBox::Warning, tr("Import from HEX status"),
                tr("An error occured while importing profiles from HEX. Please try again."));
}

int MessageDialogs::hexImportChecksumError(QWidget *parent)
{
    return show(
        parent, QMessageBox::Warning, tr("Import from HEX status"),
        tr("An error occured while importing profiles from HEX. Please try again. (Checksum)"));
}

int MessageDialogs::hexImportTypeError(QWidget *parent)
{
    return show(parent, QMessageBox::Warning, tr("Import from HEX status"),
                tr("An error occured while importing profiles from HEX. Please try again. (Invalid "
                   "Type Field)"));
}

int MessageDialogs::xmlImportReadError(QWidget *parent)
{
    return show(parent, QMessageBox::Warning, tr("Import from XML status"),
                tr("Failed to read the XML file specified. Please try again."));
}

int MessageDialogs::firmwareCheckerError(QWidget *parent)
{
    return show(parent, QMessageBox::Warning, tr("Error!"),
                tr("An error occured while checking for firmware updates. Please make sure you are "
                   "connected to the internet, and try again."));
}

int MessageDialogs::velantorNotSameAsConnected(QWidget *parent)
{
    return show(parent, QMessageBox::Warning, tr("Velantor Not Recognized"),
                tr("The Velantor you are attempting to save to doesn't match either the hardware "
                   "version or the barcode of the Velantor previously connected!<br><br>Aborting "
                   "write!"));
}
