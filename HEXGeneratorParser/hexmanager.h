#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

class ProfileName;
class ProfileSettings;
class QListWidget;
class QWidget;

namespace HParser
{
class Generator;
class StructSettings;
} // namespace HParser
namespace ImportProfiles
{
class ImportProfilesMain;
class ParsedFSElement;
} // namespace ImportProfiles

namespace HEXGeneratorParser
{
/// Joins pages of flash to the list of profiles: writes the page that goes to a charger, imports
/// the page that came from one, and tells whether charger and schema belong together. The two pages
/// are working files of fixed names.
///
/// Exceptions: an import throws its code (see ImportCode) as int.
class HEXManager : public QObject
{
    Q_OBJECT

public:
    /// parent, which may be null, is that of dialogs. Nothing is owned; all must outlive this.
    HEXManager(QWidget *parent, QListWidget *profileList, HParser::Generator *generator,
               ImportProfiles::ImportProfilesMain *importProfiles, QObject *qparent = nullptr);
    ~HEXManager() override;

    int getCurrentNumProfiles() const;
    /// How many profiles fit on a charger of the schema now in force.
    int getNumProfilesAllowed() const;

    /// Title and description of each row that a charger cannot store, for the characters that they
    /// have.
    QStringList getUnstorableProfiles() const;
    /// The same of these profiles.
    static QStringList getUnstorableProfiles(const QList<ProfileSettings *> &profiles);

    /// Writes all rows to a page, the one for the charger where fileName is empty. Gives each
    /// profile its row as id and closes an open edit. No more rows than were allowed at
    /// construction. False when the file cannot be written.
    bool exportProfiles(QString fileName);
    /// Writes these profiles, as they are, to the page for the charger.
    bool exportProfiles(const QList<ProfileSettings *> &profiles);

    /// Replaces the list by what the charger's page holds. Under a master schema it ends when the
    /// charger is known, with sortedFSElements(), and has to be called again under the charger's
    /// own schema. Throws its code as int; the list is empty then. Called from a receiver of that
    /// signal it throws nothing: the outer call does, when all receivers have run.
    void importFSElements();

    /// File dialogs begin in the folder of this file from now on.
    void updateLastUsedDirectory(const QString &fileName);

public slots:
    void on_exportAsHEXButtonClicked();
    /// Imports the charger's page. The file that the user chooses is remembered, not read.
    void on_importFromHEXButtonClicked();
    /// Answers with velantorAndSSMatch() whether the charger's page was written by a charger of the
    /// version, hardware and barcode that the generator holds.
    void compareVelantorAndSS();

signals:
    void deleteAllProfiles();
    void sortedFSElements();
    void unitSettingsRead_hex(bool read);
    void velantorAndSSMatch(bool match);

private:
    ProfileName *rowAt(int row) const;
    bool exportStructs(const QString &fileName, const QList<ProfileSettings *> &profiles);
    void importCharger();
    QList<ImportProfiles::ParsedFSElement *> readCharger() const;
    bool isOfThisCharger(const ImportProfiles::ParsedFSElement *element) const;
    void showStatus(const QString &text);

    QWidget *parent;
    QListWidget *profileList;
    QList<int> usedProfileIDs;
    HParser::Generator *generator;
    ImportProfiles::ImportProfilesMain *importProfiles;
    QString exportFileName;
    QString importFileName;
    QString lastUsedDirectory;
    int numProfilesAllowed;
    /// Owns the records that importProfiles refers to.
    std::unique_ptr<QObject> importedRecords;
    /// Where an import that runs within another one leaves its code; null without another one.
    std::optional<int> *codeOfInnerImport = nullptr;
};

} // namespace HEXGeneratorParser
