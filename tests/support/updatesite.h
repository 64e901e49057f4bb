#pragma once

#include <QByteArray>
#include <QString>

/// What the maker's site offers for updates.
namespace UpdateSite
{
/// Where the document lies that tells what there is.
inline const QString DOCUMENT = QStringLiteral("/downloads/latest_bundle_info_new.xml");
/// A place for the bundle, which the document names.
inline const QString BUNDLE = QStringLiteral("/bundles/latest");

/// A document that offers these versions, the bundle under a link.
QByteArray document(const QByteArray &bundleVersion, const QByteArray &softwareVersion,
                    const QString &link);
} // namespace UpdateSite
