#pragma once

#include <QCoreApplication>
#include <QString>

#include <functional>

class QWidget;
class VelantorBundle;

/// Picks the newest bundle in the current directory that fits this software, asking the user where
/// none fits, and has it unpacked. The version of the bundle last considered stands in
/// ApplicationGlobalMap under "bundle_version".
class VelantorBundleManager
{
    Q_DECLARE_TR_FUNCTIONS(VelantorBundleManager)

public:
    /// Fetches a newer bundle into the current directory, or not: modal over the given parent.
    using Downloader = std::function<void(QWidget *)>;

    /// The parent of all dialogs may be null. The downloader runs when the user accepts the offer
    /// to replace an outdated bundle; without one the directory is just looked at again.
    explicit VelantorBundleManager(QWidget *parent, Downloader downloader = {});

    /// Finds the bundle to use and unpacks it. False where there is none or it cannot be unpacked;
    /// files unpacked earlier then stay in use.
    bool extractLatestValidBundle();
    /// The bundle to use, which the caller owns from here on, or null.
    VelantorBundle *findLatestValidBundle();
    /// The name of the newest bundle below the version limit, whose version becomes
    /// "bundle_version". Tells the user where there is none, and returns an empty name.
    QString getBundleUnderVersion(const QString &limit);
    /// Unpacks the bundle. On success the bundle is deleted; otherwise it stays the caller's, and
    /// standard output has a line about it.
    bool parseAndSaveBundleFiles(VelantorBundle *bundle);

private:
    void tellNoBundles() const;
    bool wantsNewerBundle() const;

    QWidget *parent;
    Downloader downloader;
};
