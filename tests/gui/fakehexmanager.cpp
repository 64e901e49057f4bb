#include "fakehexmanager.h"

using HEXGeneratorParser::HEXManager;

namespace
{

FakeHexManager *fake = nullptr;

} // namespace

FakeHexManager::FakeHexManager()
    : object(std::make_unique<HEXManager>(nullptr, nullptr, nullptr, nullptr, nullptr))
{
    fake = this;
}

namespace HEXGeneratorParser
{

HEXManager::HEXManager(QWidget *parent, QListWidget *profileList, HParser::Generator *generator,
                       ImportProfiles::ImportProfilesMain *importProfiles, QObject *qparent)
    : QObject(qparent),
      parent(parent),
      profileList(profileList),
      generator(generator),
      importProfiles(importProfiles),
      numProfilesAllowed(0)
{
}

HEXManager::~HEXManager() = default;

int HEXManager::getCurrentNumProfiles() const
{
    return fake->profiles;
}

int HEXManager::getNumProfilesAllowed() const
{
    return fake->allowed;
}

QStringList HEXManager::getUnstorableProfiles() const
{
    return fake->unstorable;
}

QStringList HEXManager::getUnstorableProfiles(const QList<ProfileSettings *> &)
{
    return fake->unstorable;
}

bool HEXManager::exportProfiles(QString fileName)
{
    fake->called(QStringLiteral("export to \"%1\"").arg(fileName));
    return fake->exportWorks;
}

bool HEXManager::exportProfiles(const QList<ProfileSettings *> &profiles)
{
    fake->called(QStringLiteral("export %1 profiles").arg(profiles.size()));
    return fake->exportWorks;
}

void HEXManager::importFSElements()
{
    fake->called(QStringLiteral("import"));
    if (fake->importThrows)
        throw *fake->importThrows;
}

void HEXManager::compareVelantorAndSS()
{
    fake->called(QStringLiteral("compare"));
    emit velantorAndSSMatch(fake->chargerMatches);
}

// Not the business of this test, but named by the class's list of slots.
void HEXManager::on_exportAsHEXButtonClicked() {}
void HEXManager::on_importFromHEXButtonClicked() {}

} // namespace HEXGeneratorParser
