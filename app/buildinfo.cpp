#include "app/buildinfo.h"

QString compilationDate()
{
    return QStringLiteral(__DATE__);
}

QString siteUrl(const QString &path)
{
    const QString atRunTime = qEnvironmentVariable("VELANTOR_SITE");
    return (atRunTime.isEmpty() ? QStringLiteral(VELANTOR_SITE) : atRunTime) + path;
}

QString softwareDownloadUrl()
{
    return siteUrl(QStringLiteral("/downloads/?file=VelantorProfileEditor_Linux"));
}
