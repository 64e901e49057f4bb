#pragma once

#include <QString>

#include <memory>

namespace HParser
{
class Generator;
class StructSetting;
class StructSettings;
} // namespace HParser

class ProfileStats;

/// One charge profile: a private copy of its chemistry's schema record, filled with values.
///
/// Every profile record has members of the names "title", "description", "active",
/// "defaultprofile", "modifiable", "profile_id" and "scheduled_for_deletion"; all others come from
/// the schema in force and are known to nobody by name.
class ProfileSettings
{
public:
    /// An empty profile; nothing else may be called before initializeStructSettings() succeeded.
    ProfileSettings() = default;

    /// Takes a fresh copy of the record with this display name, with all defaults, and makes the
    /// profile modifiable. False where the schema has no such record: the profile stays unusable.
    bool initializeStructSettings(QString name, HParser::Generator *generator);
    /// Gives a profile that was not read from a charger its first id and state.
    void initializeNewProfile();

    /// Whether the charger's buttons may edit the profile. Tells no listener.
    void setModifiable(bool on);
    bool getModifiable() const;

    /// Not owned. Attaching does not bring the ids of profile and statistics together.
    void setProfileStats(ProfileStats *newStats) { stats = newStats; }
    /// Null for a profile without statistics.
    ProfileStats *getStats() const { return stats; }

    /// Gives this id (0 to 255) to the profile and to its statistics, if it has any. 255 is the id
    /// of a profile that has no place on the charger yet.
    void setProfileID(int id);
    void setScheduledForDeletion(bool on);

    /// Writes title and description on standard output, for debugging.
    void print() const;

    /// The record; the same object for the profile's life. Not freed by this class: rows and forms
    /// refer to it, and ProfileShare knows when the last of them is gone.
    HParser::StructSettings *structSettings = nullptr;
    /// Display name of the record, such as "Lithium".
    QString chemistry;

private:
    friend class ProfileShare;

    HParser::StructSetting *modifiable = nullptr;
    ProfileStats *stats = nullptr;
    /// What ProfileShare has to know of a profile.
    std::weak_ptr<ProfileSettings> shared;
    bool belongsToShares = false;
    bool ending = false;
};
