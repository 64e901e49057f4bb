#include "support/updatesite.h"

QByteArray UpdateSite::document(const QByteArray &bundleVersion, const QByteArray &softwareVersion,
                                const QString &link)
{
    return "<updates>\n<current_version>" + bundleVersion + "</current_version>\n<download_link>" +
           link.toUtf8() + "</download_link>\n<os name=\"Linux\">\n<sw_version>" + softwareVersion +
           "</sw_version>\n</os>\n</updates>\n";
}
