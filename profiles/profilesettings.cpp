#include "profiles/profilesettings.h"

#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "profiles/profilestats.h"

#include <QTextStream>

namespace
{
constexpr int noPlaceOnCharger = 255;
}

bool ProfileSettings::initializeStructSettings(QString name, HParser::Generator *generator)
{
    chemistry = name;
    structSettings = generator->copyFlashstackElementSettings(name);
    if (!structSettings)
        return false;
    structSettings->buildFormulaTrees();
    modifiable = structSettings->getStructSettingByName(QStringLiteral("modifiable"));
    modifiable->setBoolSilently(true);
    return true;
}

void ProfileSettings::initializeNewProfile()
{
    setProfileID(noPlaceOnCharger);
    setScheduledForDeletion(false);
}

void ProfileSettings::setModifiable(bool on)
{
    modifiable->setBoolSilently(on);
}

bool ProfileSettings::getModifiable() const
{
    return modifiable->getBool();
}

void ProfileSettings::setProfileID(int id)
{
    const QString member = QStringLiteral("profile_id");
    structSettings->getStructSettingByName(member)->setValue(double(id));
    if (stats)
        stats->structSettings->getStructSettingByName(member)->setValue(double(id));
}

void ProfileSettings::setScheduledForDeletion(bool on)
{
    structSettings->getStructSettingByName(QStringLiteral("scheduled_for_deletion"))->setValue(on);
}

void ProfileSettings::print() const
{
    const QList<HParser::StructSetting *> settings = structSettings->getStructSettings();
    QTextStream out(stdout);
    out << "Title : " << settings.at(0)->getValue() << '\n'
        << "Subtitle : " << settings.at(1)->getValue() << '\n';
}
