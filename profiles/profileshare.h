#pragma once

#include <memory>

class ProfileSettings;
class ProfileStats;

/// A share in a profile: what shows a profile holds one for as long as it does. With the last share
/// goes the profile, with its record and its statistics.
///
/// It goes when control is back in the event loop, so that a function may go on with a profile
/// whose last row it has removed. One that itself runs an event loop meanwhile, for a box, may not.
class ProfileShare
{
public:
    ProfileShare() = default;
    /// Has no effect on a profile that was not handed over, which then need not outlive the share.
    explicit ProfileShare(ProfileSettings *profile);

    /// From now on profile belongs to its shares. It lives on while nobody has taken one.
    static void handOver(ProfileSettings *profile);

private:
    static void endLater(ProfileSettings *profile);

    std::shared_ptr<ProfileSettings> profile;
};

/// Ends a profile, its record and its statistics. For those in which nobody has a share.
void destroy(ProfileSettings *profile);
/// The same for statistics that no profile has.
void destroy(ProfileStats *stats);
