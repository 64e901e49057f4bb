#include "HEXGeneratorParser/hexmanager.h"

#include "HEXGeneratorParser/hexutility.h"
#include "HEXGeneratorParser/readfromhex.h"
#include "HEXGeneratorParser/writetohex.h"
#include "ImportProfiles/importprofilesmain.h"
#include "ImportProfiles/parsedfselement.h"
#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "app/filenames.h"
#include "app/messagedialogs.h"
#include "profiles/profilename.h"
#include "profiles/profilenamelistwidget.h"
#include "profiles/profilesettings.h"
#include "profiles/profilestats.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QListWidget>
#include <QMessageBox>
#include <QScopedValueRollback>

#include <algorithm>
#include <cstdio>

using HParser::StructSettings;
using ImportProfiles::ParsedFSElement;

namespace HEXGeneratorParser
{
namespace
{
QString valueOf(const ProfileSettings *profile, const QString &member)
{
    return profile->structSettings->getStructSettingByName(member)->getValue();
}
} // namespace

HEXManager::HEXManager(QWidget *parent, QListWidget *profileList, HParser::Generator *generator,
                       ImportProfiles::ImportProfilesMain *importProfiles, QObject *qparent)
    : QObject(qparent),
      parent(parent),
      profileList(profileList),
      generator(generator),
      importProfiles(importProfiles),
      lastUsedDirectory(SAVED_PROFILES_DIRECTORY),
      numProfilesAllowed(HexUtility::numProfilesAllowed(generator))
{
}

HEXManager::~HEXManager() = default;

int HEXManager::getCurrentNumProfiles() const
{
    return profileList->count();
}

int HEXManager::getNumProfilesAllowed() const
{
    return HexUtility::numProfilesAllowed(generator);
}

QStringList HEXManager::getUnstorableProfiles() const
{
    QList<ProfileSettings *> profiles;
    for (int i = 0; i < profileList->count(); ++i)
        profiles.append(rowAt(i)->getProfileSettings());
    return getUnstorableProfiles(profiles);
}

QStringList HEXManager::getUnstorableProfiles(const QList<ProfileSettings *> &profiles)
{
    QStringList names;
    for (const ProfileSettings *profile : profiles) {
        if (!WriteToHEX::canStoreTexts(profile->structSettings))
            names.append(valueOf(profile, QStringLiteral("title")) + QStringLiteral(" - ") +
                         valueOf(profile, QStringLiteral("description")));
    }
    return names;
}

ProfileName *HEXManager::rowAt(int row) const
{
    return static_cast<ProfileNameListWidget *>(profileList->item(row))->profileName;
}

bool HEXManager::exportProfiles(QString fileName)
{
    if (fileName.isEmpty())
        fileName = UPLOADED_PROFILES_FILE_NAME;

    QList<ProfileSettings *> profiles;
    for (int i = 0; i < profileList->count(); ++i) {
        ProfileName *row = rowAt(i);
        ProfileSettings *profile = row->getProfileSettings();
        row->setTitle(valueOf(profile, QStringLiteral("title")));
        row->setSubtitle(valueOf(profile, QStringLiteral("description")));
        row->setEditing(false);
        profile->setProfileID(i);
        profiles.append(profile);
    }
    Q_ASSERT(profiles.size() <= numProfilesAllowed);
    return exportStructs(fileName, profiles);
}

bool HEXManager::exportProfiles(const QList<ProfileSettings *> &profiles)
{
    return exportStructs(UPLOADED_PROFILES_FILE_NAME, profiles);
}

bool HEXManager::exportStructs(const QString &fileName, const QList<ProfileSettings *> &profiles)
{
    QList<StructSettings *> profileStructs;
    QList<StructSettings *> statStructs;
    for (const ProfileSettings *profile : profiles) {
        profileStructs.append(profile->structSettings);
        if (profile->getStats())
            statStructs.append(profile->getStats()->structSettings);
    }
    return WriteToHEX::write(fileName, profileStructs, statStructs, generator);
}

QList<ParsedFSElement *> HEXManager::readCharger() const
{
    ReadFromHEX reader;
    if (!reader.read(DOWNLOADED_PROFILES_FILE_NAME, generator->getProfileStartWordAddress()))
        throw int(FileNotRead);
    return reader.parseFSElements(generator);
}

void HEXManager::importFSElements()
{
    if (!codeOfInnerImport) {
        importCharger();
        return;
    }
    // Called by a receiver of sortedFSElements(): an exception must not leave through the emission
    // of a signal. The outer import throws the code when all receivers have run.
    try {
        importCharger();
    } catch (int code) {
        *codeOfInnerImport = code;
    }
}

void HEXManager::importCharger()
{
    emit deleteAllProfiles();
    const QList<ParsedFSElement *> elements = readCharger();
    auto records = std::make_unique<QObject>();
    for (ParsedFSElement *element : elements)
        element->setParent(records.get());

    importProfiles->emptyProfilesAndStats();
    importedRecords = std::move(records);
    importProfiles->sortElements(elements);
    if (generator->isMaster()) {
        std::optional<int> innerCode;
        {
            const QScopedValueRollback<std::optional<int> *> inner(codeOfInnerImport, &innerCode);
            emit sortedFSElements();
        }
        if (innerCode)
            throw int(*innerCode);
        return;
    }
    emit unitSettingsRead_hex(true);
    importProfiles->importProfilesAndStats(importProfiles->getProfileElements(),
                                           importProfiles->getProfileStatElements(), {});
}

void HEXManager::updateLastUsedDirectory(const QString &fileName)
{
    lastUsedDirectory = QFileInfo(fileName).absolutePath();
}

void HEXManager::showStatus(const QString &text)
{
    QMessageBox box(parent);
    box.setWindowTitle(tr("Export to HEX status"));
    box.setText(text);
    box.exec();
}

void HEXManager::on_exportAsHEXButtonClicked()
{
    exportFileName =
        QFileDialog::getSaveFileName(parent, tr("Select HEX File to Export Profiles"),
                                     lastUsedDirectory, tr("HEX files (*.hex);;Any files (*.*)"));
    if (exportFileName.isEmpty())
        return;
    updateLastUsedDirectory(exportFileName);

    if (getCurrentNumProfiles() > numProfilesAllowed) {
        showStatus(tr("You currently have %1 profiles, but only %2 profiles can be exported to a "
                      "single HEX file. Please delete some profiles and try again")
                       .arg(getCurrentNumProfiles())
                       .arg(numProfilesAllowed));
        return;
    }
    if (exportProfiles(exportFileName))
        showStatus(tr("The profiles have been successfully exported!"));
    else
        showStatus(tr("An error occured while exporting profiles to HEX. Please try again."));
}

void HEXManager::on_importFromHEXButtonClicked()
{
    importFileName =
        QFileDialog::getOpenFileName(parent, tr("Select HEX File to Import Profiles"),
                                     lastUsedDirectory, tr("HEX files (*.hex);;Any files (*.*)"));
    if (importFileName.isEmpty())
        return;
    updateLastUsedDirectory(importFileName);

    if (profileList->count() > 0) {
        if (MessageDialogs::askAppendProfiles(parent) == QMessageBox::Yes) {
            for (int i = 0; i < profileList->count(); ++i)
                usedProfileIDs.append(
                    valueOf(rowAt(i)->getProfileSettings(), QStringLiteral("profile_id")).toInt());
        } else {
            emit deleteAllProfiles();
        }
    }
    try {
        importFSElements();
    } catch (int code) {
        switch (code) {
        case FileNotRead:
            MessageDialogs::hexImportReadError(parent);
            break;
        case ChecksumMismatch:
            MessageDialogs::hexImportChecksumError(parent);
            break;
        case UnknownType:
            MessageDialogs::hexImportTypeError(parent);
            break;
        default:
            break;
        }
    }
}

bool HEXManager::isOfThisCharger(const ParsedFSElement *element) const
{
    const std::unique_ptr<StructSettings> read(element->toStructSettings(generator));
    if (!read)
        return true;
    const StructSettings *reference =
        generator->getVeficationFSElementByName(read->getDescriptiveName());
    return !reference || reference->compare(read.get());
}

void HEXManager::compareVelantorAndSS()
{
    std::printf("compare velantor and ss\n");
    std::fflush(stdout);
    QList<ParsedFSElement *> elements;
    try {
        elements = readCharger();
    } catch (int code) {
        if (code != FileNotRead) {
            std::printf("Error parsing flashstack elements #%d\n", code);
            std::fflush(stdout);
        }
        emit velantorAndSSMatch(false);
        return;
    }
    const bool match = std::all_of(elements.begin(), elements.end(), [this](const auto *element) {
        return isOfThisCharger(element);
    });
    qDeleteAll(elements);
    emit velantorAndSSMatch(match);
}

} // namespace HEXGeneratorParser
