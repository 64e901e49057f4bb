#pragma once

#include "profiles/profileshare.h"

#include <QList>
#include <QObject>

class ProfileSettings;
class QWidget;

namespace HParser
{
class Generator;
class StructSettings;
} // namespace HParser

namespace ImportProfiles
{
class ParsedFSElement;

/// Turns records into the state of the application. Records come as a log: a later copy of the same
/// thing counts instead of an earlier one.
///
/// It takes two steps, since the schema to check values against is known only after the first:
/// sortElements() applies the device-wide records and keeps the latest copy of each profile,
/// createProfileSettings() builds profiles by the schema then in force.
///
/// Records are not owned and must live as long as they may be asked for again; profiles that were
/// handed out live on while somebody shows them (see ProfileShare).
class ImportProfilesMain : public QObject
{
    Q_OBJECT

public:
    /// parent, which may be null, is that of message boxes.
    ImportProfilesMain(QWidget *parent, HParser::Generator *generator, QObject *qparent = nullptr);

    /// First step, for all records of a log. Adds to what is there: empty it before. Throws 3 as
    /// int, with the device-wide records applied, when there is no page counter.
    void sortElements(const QList<ParsedFSElement *> &elements);
    void emptyProfilesAndStats();

    /// The latest copy of each profile, in the order in which their ids first appeared.
    QList<ParsedFSElement *> getProfileElements() const { return profileElements; }
    /// The same for the profiles' statistics.
    QList<ParsedFSElement *> getProfileStatElements() const { return profileStatElements; }

    /// Second step: hands over each profile that is not to be deleted by profileReadyForImport.
    void importProfilesAndStats(const QList<ParsedFSElement *> &profiles,
                                const QList<ParsedFSElement *> &stats, const QList<int> &usedIDs);

    /// Builds the profiles that the schema in force allows, with their statistics, and tells the
    /// user about the others. A profile without a place (id 255), or with one of usedIDs, gets a
    /// free id. The caller owns the profiles.
    QList<ProfileSettings *> createProfileSettings(const QList<ParsedFSElement *> &profiles,
                                                   const QList<ParsedFSElement *> &stats,
                                                   QList<int> usedIDs);

    /// Copies what a record says into target; members that it does not mention keep their values.
    /// Builds target's formulas where that has not been done. -1 for a null element, else 0.
    int importSSFileStruct(const ParsedFSElement *element, HParser::StructSettings *target);

    /// Whether all advanced settings that a user sees hold their defaults.
    bool areAdvancedSettingsDefault(const HParser::StructSettings *settings) const;

public slots:
    /// Hands over all profiles last read, unchanged, by profilesLastImported. They live until this
    /// is called again.
    void sendProfilesToUploader();

signals:
    void profileReadyForImport(ProfileSettings *profile, bool active, bool defaultProfile);
    void profilesLastImported(QList<ProfileSettings *> profiles);
    /// So many of count profiles have been built; the last one before a box says what was left out.
    void profilesBuilt(int done, int count);

private:
    QWidget *parent;
    HParser::Generator *generator;
    QList<ParsedFSElement *> profileElements;
    QList<ParsedFSElement *> profileStatElements;
    QList<ProfileShare> sent;
};

} // namespace ImportProfiles
