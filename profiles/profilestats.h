#pragma once

#include <QString>

namespace HParser
{
class Generator;
class StructSettings;
} // namespace HParser

/// What the charger counted while it used one profile: a private copy of the schema's record of
/// profile statistics. Its member "profile_id" says whose they are.
class ProfileStats
{
public:
    ProfileStats() = default;

    /// Takes a fresh copy of the record with this display name. False where the schema has none.
    bool initializeStructSettings(QString name, HParser::Generator *generator);

    /// Null until initializeStructSettings() succeeded; not freed by this class.
    HParser::StructSettings *structSettings = nullptr;
};
