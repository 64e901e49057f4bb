#include "xml/xmlmanager.h"

#include "ImportProfiles/importprofilesmain.h"
#include "SSGenerator/generator.h"
#include "app/filenames.h"
#include "app/messagedialogs.h"
#include "profiles/bulkinsertion.h"
#include "profiles/profilename.h"
#include "profiles/profilenamelistwidget.h"
#include "profiles/profilesettings.h"
#include "xml/busydialog.h"
#include "xml/readfromxml.h"
#include "xml/writetoxml.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QListWidget>
#include <QMessageBox>

#include <optional>

using ImportProfiles::ImportProfilesMain;

namespace XMLGeneratorParser
{
namespace
{
/// What takes its time when a file is loaded.
enum LoadingPart { Reading, Building, Listing, LoadingParts };
} // namespace

XMLManager::XMLManager(QWidget *parent, QListWidget *profileList,
                       ImportProfilesMain *importProfiles, HParser::Generator *generator,
                       QObject *qparent)
    : QObject(qparent),
      parent(parent),
      profileList(profileList),
      importProfiles(importProfiles),
      generator(generator),
      lastUsedDirectory(SAVED_PROFILES_DIRECTORY)
{
}

void XMLManager::setLastUsedDirectory(const QString &fileName)
{
    lastUsedDirectory = QFileInfo(fileName).absolutePath();
}

bool XMLManager::importFromXML(const QString &fileName)
{
    ReadFromXML reader;
    if (!reader.readProfiles(fileName))
        return false;
    importProfiles->importSSFileStruct(reader.getUnitSettings(),
                                       generator->getUnitSettingsStruct());
    const BulkInsertion bulk(profileList);
    importProfiles->importProfilesAndStats(reader.getProfiles(), {}, {});
    return true;
}

bool XMLManager::exportToXML(const QString &fileName, bool withGlobalSettings)
{
    WriteToXML writer;
    return save(&writer, fileName, withGlobalSettings);
}

bool XMLManager::save(WriteToXML *writer, const QString &fileName, bool withGlobalSettings) const
{
    QList<ProfileName *> rows;
    for (int i = 0; i < profileList->count(); ++i)
        rows.append(static_cast<ProfileNameListWidget *>(profileList->item(i))->profileName);
    return writer->write(fileName, rows,
                         withGlobalSettings ? generator->getUnitSettingsStruct() : nullptr);
}

void XMLManager::on_importFromXMLButtonClicked()
{
    importFileName =
        QFileDialog::getOpenFileName(parent, tr("Select XML File to Import"), lastUsedDirectory,
                                     tr("XML files (*.xml);;Any files (*.*)"));
    if (importFileName.isEmpty())
        return;
    setLastUsedDirectory(importFileName);

    BusyDialog busy(tr("Loading profiles..."), parent);
    ReadFromXML reader;
    connect(&reader, &ReadFromXML::progressed, &busy,
            [&busy](qint64 done, qint64 size) { busy.tell(Reading, LoadingParts, done, size); });
    const bool read = reader.readProfiles(importFileName);
    busy.rest();
    if (!read) {
        MessageDialogs::xmlImportReadError(parent);
        return;
    }
    if (mayLoad(reader, &busy))
        load(reader, &busy);
}

/// Asks what shall become of the profiles that are there, where there are any.
bool XMLManager::mayLoad(const ReadFromXML &reader, BusyDialog *busy)
{
    if (profileList->count() == 0)
        return true;
    const bool replace = MessageDialogs::askAppendProfiles(parent) != QMessageBox::Yes;
    if (!replace)
        return true;
    // Profiles must not go for the sake of a file of which nothing could be made out.
    if (!reader.isProfileFile()) {
        MessageDialogs::xmlImportReadError(parent);
        return false;
    }
    busy->tell(Building, LoadingParts, 0, 1); // many rows take their time to go
    emit deleteAllProfiles();
    return true;
}

void XMLManager::load(const ReadFromXML &reader, BusyDialog *busy)
{
    if (reader.getUnitSettings()) {
        importProfiles->importSSFileStruct(reader.getUnitSettings(),
                                           generator->getUnitSettingsStruct());
        emit unitSettingsRead_xml(true);
    }

    connect(importProfiles, &ImportProfilesMain::profilesBuilt, busy, [busy](int done, int count) {
        busy->tell(Building, LoadingParts, done, count);
        if (done == count)
            busy->rest(); // a box may come up about those that do not fit
    });
    const int count = reader.getProfiles().size();
    int listed = 0;
    // Hides the list, which is to be seen while that box stands there.
    std::optional<BulkInsertion> bulk;
    connect(importProfiles, &ImportProfilesMain::profileReadyForImport, busy, [&, busy, count] {
        if (!bulk)
            bulk.emplace(profileList);
        busy->tell(Listing, LoadingParts, ++listed, count);
    });
    // No number on the charger counts as taken: writing gives every profile its row's number.
    importProfiles->importProfilesAndStats(reader.getProfiles(), {}, {});
}

void XMLManager::on_exportAsXMLButtonClicked(bool withGlobalSettings)
{
    QFileDialog dialog(parent, tr("Select XML File to Export Profiles"), lastUsedDirectory,
                       tr("XML files (*.xml);;Any files (*.*)"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    // So that the dialog asks before it replaces the file that will be written.
    dialog.setDefaultSuffix(QStringLiteral("xml"));
    exportFileName =
        dialog.exec() == QDialog::Accepted ? dialog.selectedFiles().value(0) : QString();
    if (exportFileName.isEmpty())
        return;
    setLastUsedDirectory(exportFileName);
    if (QFileInfo(exportFileName).completeSuffix().isEmpty())
        exportFileName += QStringLiteral(".xml");
    bool saved = false;
    {
        BusyDialog busy(tr("Saving profiles..."), parent);
        WriteToXML writer;
        connect(&writer, &WriteToXML::progressed, &busy,
                [&busy](int done, int count) { busy.tell(0, 1, done, count); });
        saved = save(&writer, exportFileName, withGlobalSettings);
    }
    if (saved)
        return;

    QMessageBox box(parent);
    box.setIcon(QMessageBox::Critical);
    box.setWindowTitle(tr("Export to XML Status"));
    box.setText(tr("The profiles failed to be exported!"));
    box.exec();
}

} // namespace XMLGeneratorParser
