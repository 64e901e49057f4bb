#include "profiles/profileshare.h"

#include "SSGenerator/structsettings.h"
#include "profiles/profilesettings.h"
#include "profiles/profilestats.h"

#include <QObject>

#include <utility>

void destroy(ProfileStats *stats)
{
    delete stats->structSettings;
    delete stats;
}

void destroy(ProfileSettings *profile)
{
    if (profile->getStats())
        destroy(profile->getStats());
    delete profile->structSettings;
    delete profile;
}

ProfileShare::ProfileShare(ProfileSettings *settings)
{
    if (!settings->belongsToShares)
        return;
    profile = settings->shared.lock();
    if (!profile) {
        profile.reset(settings, &ProfileShare::endLater);
        settings->shared = profile;
    }
}

void ProfileShare::handOver(ProfileSettings *profile)
{
    profile->belongsToShares = true;
}

void ProfileShare::endLater(ProfileSettings *profile)
{
    if (std::exchange(profile->ending, true))
        return;
    auto *end = new QObject;
    QObject::connect(end, &QObject::destroyed, [profile] {
        profile->ending = false;
        // Somebody may have taken a share again meanwhile.
        if (profile->shared.expired())
            destroy(profile);
    });
    end->deleteLater();
}
