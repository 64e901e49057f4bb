#include "bundles/velantorbundlemanager.h"

#include "app/applicationglobalmap.h"
#include "app/buildinfo.h"
#include "app/filenames.h"
#include "app/messagedialogs.h"
#include "app/versionstring.h"
#include "bundles/velantorbundle.h"

#include <QDir>
#include <QMessageBox>
#include <QRegExp>

#include <cstdio>
#include <memory>

namespace
{
/// Above the version of any bundle.
const QString searchLimit = QStringLiteral("999.999");
const QString bundleVersionKey = QStringLiteral("bundle_version");
const QString minSoftwareKey = QStringLiteral("MIN_SOFTWARE_VERSION_REQUIRED");
/// In place of a bundle's name: bundles have changed, look again.
const QString newBundle = QStringLiteral("NEW_BUNDLE");

VersionString currentSoftware()
{
    QString version = SOFTWARE_VERSION;
    if (version.startsWith(QLatin1Char('v')))
        version.remove(0, 1);
    return VersionString(version);
}
} // namespace

VelantorBundleManager::VelantorBundleManager(QWidget *parent, Downloader downloader)
    : parent(parent), downloader(std::move(downloader))
{
}

bool VelantorBundleManager::extractLatestValidBundle()
{
    VelantorBundle *bundle = findLatestValidBundle();
    if (!bundle)
        return false;
    if (parseAndSaveBundleFiles(bundle))
        return true;
    delete bundle;
    return false;
}

VelantorBundle *VelantorBundleManager::findLatestValidBundle()
{
    QString limit = searchLimit;
    while (true) {
        const QString path = getBundleUnderVersion(limit);
        if (path.isEmpty())
            return nullptr;
        if (path == newBundle)
            continue;

        auto bundle = std::make_unique<VelantorBundle>(path);
        bundle->parseKeyValuePairs();
        const QString version = ApplicationGlobalMap::getString(bundleVersionKey);
        const QString minSoftwareText = bundle->valueFromKey(minSoftwareKey);
        const VersionString minSoftware(minSoftwareText);

        // Bundles that do not say which software they need come from before this software.
        const bool outdated =
            VersionString(version).lessThan(VersionString(MIN_BUNDLE_VERSION_FOR_SOFTWARE)) ||
            minSoftwareText.isEmpty();
        if (outdated) {
            // Once a newer bundle was passed over, a download would only bring that one again.
            if (limit != searchLimit || !wantsNewerBundle())
                return nullptr;
            if (downloader)
                downloader(parent);
            continue;
        }

        if (currentSoftware().lessThan(minSoftware) && BUILD_TYPE == QLatin1String("RELEASE")) {
            if (limit == searchLimit)
                MessageDialogs::currentSoftwareTooOld(parent, version, minSoftware);
            limit = version;
            continue;
        }
        return bundle.release();
    }
}

QString VelantorBundleManager::getBundleUnderVersion(const QString &limit)
{
    const VersionString none(QStringLiteral("0"));
    const VersionString limitVersion(limit);
    VersionString best = none;
    QString bestName;
    for (const QFileInfo &entry : QDir().entryInfoList()) {
        const QString name = entry.fileName();
        // What is no file of a bundle's size would have a version by its name, and be found
        // outdated.
        if (!name.endsWith(BUNDLE_EXTENSION) || !VelantorBundle::canBeBundle(name))
            continue;
        const VersionString version(VelantorBundle::getBundleVersion(name));
        if (version.isValid() && version.greaterThan(best) && version.lessThan(limitVersion)) {
            best = version;
            bestName = name;
        }
    }
    if (best.equalTo(none)) {
        tellNoBundles();
        return QString();
    }
    ApplicationGlobalMap::putString(bundleVersionKey, best.toString());
    return bestName;
}

bool VelantorBundleManager::parseAndSaveBundleFiles(VelantorBundle *bundle)
{
    if (bundle->parseBundle()) {
        delete bundle;
        return true;
    }
    std::puts("Could not parse Velantor Bundle");
    std::fflush(stdout);
    return false;
}

void VelantorBundleManager::tellNoBundles() const
{
    QMessageBox box(QMessageBox::Warning, tr("No Bundles"),
                    tr("No valid bundles were found! Please reinstall, or contact Tolk for "
                       "support."),
                    QMessageBox::Ok, parent);
    box.exec();
}

bool VelantorBundleManager::wantsNewerBundle() const
{
    QMessageBox box(QMessageBox::Question, tr("Outdated Bundle"),
                    tr("Your bundle is out-of-date and not compatible with this software. Would "
                       "you like to download the latest version?"),
                    QMessageBox::Yes | QMessageBox::No, parent);
    return box.exec() == QMessageBox::Yes;
}
