#include "device/importfailure.h"

#include "app/buildinfo.h"

namespace UploadDownload
{

ImportFailure ImportFailure::of(int code)
{
    const QString title = tr("Import from HEX status");
    switch (code) {
    case 0:
        return {title, QMessageBox::Warning,
                tr("An error occurred while reading profiles from HEX. Please try again.")};
    case 1:
        return {title, QMessageBox::Warning,
                tr("An error occurred while importing profiles from HEX: Invalid "
                   "Checksum. Please check firmware version and try again.")};
    case 2:
        return {title, QMessageBox::Warning,
                tr("An error occurred while importing profiles from HEX: Invalid Type "
                   "Field. Please try again.")};
    case 3:
        return {title, QMessageBox::Critical,
                tr("No page count when reading from Velantor! Please reset your "
                   "Velantor so it can recover.")};
    case 4:
        return {tr("Outdated Profiles"), QMessageBox::Warning,
                tr("An error occurred while importing profiles.<br/><br/>This can happen when "
                   "trying to connect to a Velantor with outdated firmware or outdated profiles. "
                   "Please click <a href = \"%1\">here</a> for more information on how to upgrade "
                   "to the latest firmware correctly.")
                    .arg(siteUrl(QStringLiteral("/velantor-suite-help#outdated_profiles")))};
    default:
        return {title, QMessageBox::Critical,
                tr("An error occurred while importing profiles from HEX. Please try again.")};
    }
}

} // namespace UploadDownload
