#pragma once

#include <QString>

/// Version of this software, leading "v" included.
inline const QString SOFTWARE_VERSION = QStringLiteral("v1.105");
/// Kind of this build; only a "RELEASE" looks at version limits.
inline const QString BUILD_TYPE = QStringLiteral("RELEASE");

/// The day of compilation in the form "Mar 23 2023".
QString compilationDate();

/// An address on the maker's web site: the site of this build, or the one that the environment
/// variable VELANTOR_SITE names, with path (which begins with "/") behind it.
QString siteUrl(const QString &path);

/// Where on that site new software is to be had.
QString softwareDownloadUrl();
