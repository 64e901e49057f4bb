#include "ImportProfiles/importprofilesmain.h"

#include "ImportProfiles/parsedfselement.h"
#include "ImportProfiles/settingtext.h"
#include "SSGenerator/formula.h"
#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "app/messagedialogs.h"
#include "profiles/profilesettings.h"
#include "profiles/profileshare.h"
#include "profiles/profilestats.h"

#include <QMap>

#include <algorithm>
#include <utility>

using HParser::SettingKind;
using HParser::StructSetting;
using HParser::StructSettings;
using Properties = QMap<QString, QString>;

namespace ImportProfiles
{
namespace
{
constexpr int noPageCounter = 3;
constexpr int noPlaceOnCharger = 255;

const QString nameKey = QStringLiteral("name");
const QString profileIDKey = QStringLiteral("profile_id");

QString valueOf(const StructSettings *settings, const QString &member)
{
    return settings->getStructSettingByName(member)->getValue();
}

bool isNamedLike(const Properties &properties, const StructSettings *element)
{
    return element && properties.value(nameKey) == element->getDescriptiveName();
}

/// Keeps in a list the latest record of each profile id, at the place of the first one.
class LatestByID
{
public:
    explicit LatestByID(QList<ParsedFSElement *> *list) : list(list) {}

    void add(ParsedFSElement *element)
    {
        const int id = element->getProperties().value(profileIDKey).toInt();
        const auto known = indexByID.constFind(id);
        if (known != indexByID.constEnd()) {
            list->replace(*known, element);
        } else {
            indexByID.insert(id, list->size());
            list->append(element);
        }
    }

private:
    QList<ParsedFSElement *> *list;
    QMap<int, int> indexByID;
};

bool hasFormulaTrees(const StructSettings *settings)
{
    const QList<StructSetting *> members = settings->getOriginalOrderStructSettings();
    return std::all_of(members.begin(), members.end(), [](const StructSetting *setting) {
        return !setting->lowerBound || setting->lowerBound->getRootTree();
    });
}

/// The statistics of a record, or null where the schema has no struct of its name.
ProfileStats *createStats(const Properties &properties, HParser::Generator *generator)
{
    auto *stats = new ProfileStats;
    if (!stats->initializeStructSettings(properties.value(nameKey), generator)) {
        delete stats;
        return nullptr;
    }
    for (StructSetting *setting : stats->structSettings->getOriginalOrderStructSettings()) {
        if (setting->xmlName == QLatin1String("calculated"))
            setting->setDefault();
        else
            setValueFromText(setting, properties.value(setting->xmlName));
    }
    return stats;
}

/// Whether a setting took the number of this text as it is. What lies beyond a limit is taken as
/// the limit, and that may be what the setting held before: then it does not tell.
bool holdsNumber(const StructSetting *setting, const QString &text)
{
    const double wanted = text.toDouble();
    const double fitting = setting->getValueInBounds(wanted);
    return wanted == fitting || wanted == setting->getRoundedValue(fitting);
}

/// Gives a profile the values of a record. False: one of them does not fit the schema in force.
bool takeValues(StructSettings *profile, const Properties &properties)
{
    bool compatible = true;
    const QList<StructSetting *> shown = profile->getStructSettings();
    // Limits may name other members, so those come first.
    for (StructSetting *setting : profile->getDependancyOrderStructSettings()) {
        setting->advancedEnabled = true;
        const QString value = properties.value(setting->xmlName);
        const bool mayBeEmpty = setting->name == QLatin1String("title") ||
                                setting->name == QLatin1String("description");
        if (value.isEmpty() && !mayBeEmpty)
            continue;
        if (!setValueFromText(setting, value))
            compatible = false;
        else if (setting->settingKind == SettingKind::Num && shown.contains(setting) &&
                 !holdsNumber(setting, value))
            compatible = false;
    }
    return compatible;
}

/// Takes the statistics with the profile's id out of the list and attaches them.
void attachStats(ProfileSettings *profile, QList<ProfileStats *> *stats)
{
    const QString id = valueOf(profile->structSettings, profileIDKey);
    const auto match = std::find_if(stats->begin(), stats->end(), [&id](const ProfileStats *one) {
        return valueOf(one->structSettings, profileIDKey) == id;
    });
    if (match == stats->end())
        return;
    profile->setProfileStats(*match);
    stats->erase(match);
}

/// Gives a profile that has no place, or one that is taken, the lowest free id.
void avoidTakenID(ProfileSettings *profile, QList<int> *usedIDs)
{
    const int id = valueOf(profile->structSettings, profileIDKey).toInt();
    if (id != noPlaceOnCharger && !usedIDs->contains(id))
        return;
    for (int candidate = 0; candidate < noPlaceOnCharger; ++candidate) {
        if (!usedIDs->contains(candidate)) {
            profile->setProfileID(candidate);
            usedIDs->append(candidate);
            return;
        }
    }
}
} // namespace

ImportProfilesMain::ImportProfilesMain(QWidget *parent, HParser::Generator *generator,
                                       QObject *qparent)
    : QObject(qparent), parent(parent), generator(generator)
{
}

void ImportProfilesMain::sortElements(const QList<ParsedFSElement *> &elements)
{
    LatestByID profiles(&profileElements);
    LatestByID stats(&profileStatElements);
    bool pageCounterFound = false;
    for (ParsedFSElement *element : elements) {
        const Properties properties = element->getProperties();
        if (isNamedLike(properties, generator->getUnitSettingsStruct())) {
            importSSFileStruct(element, generator->getUnitSettingsStruct());
        } else if (isNamedLike(properties, generator->getProfileStatsStruct())) {
            stats.add(element);
        } else if (isNamedLike(properties, generator->getUnitStatsStruct())) {
            const int result = importSSFileStruct(element, generator->getUnitStatsStruct());
            generator->setUnitStatsExists(result >= 0);
        } else if (isNamedLike(properties, generator->getVersionInfoStruct())) {
            importSSFileStruct(element, generator->getVersionInfoStruct());
        } else if (isNamedLike(properties, generator->getPageCounterStruct())) {
            if (importSSFileStruct(element, generator->getPageCounterStruct()) < 0)
                throw int(noPageCounter);
            pageCounterFound = true;
        } else if (isNamedLike(properties, generator->getHardwareVersionStruct())) {
            importSSFileStruct(element, generator->getHardwareVersionStruct());
        } else if (isNamedLike(properties, generator->getBarcodeStruct())) {
            importSSFileStruct(element, generator->getBarcodeStruct());
        } else {
            const int type = properties.value(QStringLiteral("type")).toInt();
            if (type != 8 && type != 9 && type != 10)
                qt_assert("type==8 || type==9 || type==10", __FILE__, __LINE__);
            if (generator->getChemistrySettingsByName(properties.value(nameKey)))
                profiles.add(element);
        }
    }
    if (!pageCounterFound)
        throw int(noPageCounter);
}

void ImportProfilesMain::emptyProfilesAndStats()
{
    profileElements.clear();
    profileStatElements.clear();
}

void ImportProfilesMain::importProfilesAndStats(const QList<ParsedFSElement *> &profiles,
                                                const QList<ParsedFSElement *> &stats,
                                                const QList<int> &usedIDs)
{
    for (ProfileSettings *profile : createProfileSettings(profiles, stats, usedIDs)) {
        // Read before anyone is told: a row clears the flags of its profile.
        const QString yes = QStringLiteral("true");
        const bool active = valueOf(profile->structSettings, QStringLiteral("active")) == yes;
        const bool isDefault =
            valueOf(profile->structSettings, QStringLiteral("defaultprofile")) == yes;
        if (valueOf(profile->structSettings, QStringLiteral("scheduled_for_deletion")) == yes) {
            destroy(profile);
            continue;
        }
        ProfileShare::handOver(profile);
        emit profileReadyForImport(profile, active, isDefault);
    }
}

void ImportProfilesMain::sendProfilesToUploader()
{
    const QList<ProfileSettings *> profiles =
        createProfileSettings(profileElements, profileStatElements, {});
    sent.clear();
    for (ProfileSettings *profile : profiles) {
        ProfileShare::handOver(profile);
        sent.append(ProfileShare(profile));
    }
    emit profilesLastImported(profiles);
}

QList<ProfileSettings *>
ImportProfilesMain::createProfileSettings(const QList<ParsedFSElement *> &profiles,
                                          const QList<ParsedFSElement *> &stats, QList<int> usedIDs)
{
    QList<ProfileStats *> unmatchedStats;
    for (const ParsedFSElement *element : stats) {
        if (ProfileStats *one = createStats(element->getProperties(), generator))
            unmatchedStats.append(one);
    }

    QList<ProfileSettings *> result;
    QStringList incompatible;
    int done = 0;
    for (const ParsedFSElement *element : profiles) {
        emit profilesBuilt(done++, profiles.size());
        const Properties properties = element->getProperties();
        const QString name = properties.value(nameKey);
        // Other structs lack what every profile has.
        if (!generator->getChemistrySettingsByName(name))
            continue;
        auto *profile = new ProfileSettings;
        profile->initializeStructSettings(name, generator);
        profile->setModifiable(element->getModifiableStatus());
        StructSettings *settings = profile->structSettings;
        if (!takeValues(settings, properties)) {
            incompatible.append(valueOf(settings, QStringLiteral("title")) + QStringLiteral(" - ") +
                                valueOf(settings, QStringLiteral("description")));
            destroy(profile);
            continue;
        }
        settings->setAdvancedSettingsEdited(!areAdvancedSettingsDefault(settings));
        attachStats(profile, &unmatchedStats);
        avoidTakenID(profile, &usedIDs);
        result.append(profile);
    }
    for (ProfileStats *one : qAsConst(unmatchedStats))
        destroy(one);
    emit profilesBuilt(done, profiles.size());

    if (!incompatible.isEmpty())
        MessageDialogs::incompatibleProfilesNotImported(
            parent, QString::number(generator->hwVersion()), incompatible);
    return result;
}

int ImportProfilesMain::importSSFileStruct(const ParsedFSElement *element, StructSettings *target)
{
    // Building again would throw away the values held, which a record that says nothing about a
    // member (a profile file names only what a user sees) must not do.
    if (!hasFormulaTrees(target))
        target->buildFormulaTrees();
    if (!element)
        return -1;
    const Properties properties = element->getProperties();
    const auto valueFor = [&properties](const StructSetting *setting) {
        return properties.value(setting->xmlName);
    };
    // A limit may follow a member that comes behind it: what the last record has left there must
    // not bound what this one says.
    for (StructSetting *setting : target->getOriginalOrderStructSettings()) {
        if (!valueFor(setting).isEmpty())
            setting->setDefault();
    }
    const auto takeAll = [&] {
        QStringList values;
        for (StructSetting *setting : target->getOriginalOrderStructSettings()) {
            setting->advancedEnabled = true;
            if (!valueFor(setting).isEmpty())
                setValueFromText(setting, valueFor(setting));
            values.append(setting->getValue());
        }
        return values;
    };
    // What this record says there may have cut a value as well, or still does: the default. Each
    // further round settles at least one member for good.
    QStringList values = takeAll();
    for (int rounds = values.size(); rounds > 0; --rounds) {
        const QStringList before = std::exchange(values, takeAll());
        if (values == before)
            break;
    }
    return 0;
}

bool ImportProfilesMain::areAdvancedSettingsDefault(const StructSettings *settings) const
{
    const auto holdsDefault = [](const StructSetting *setting) {
        switch (setting->settingKind) {
        case SettingKind::Num: {
            // Not a number is no default: it equals nothing, itself included.
            const double fitting = setting->getValueInBounds(setting->defaultFormula->toDouble());
            return setting->getNumber() == setting->getRoundedValue(fitting);
        }
        case SettingKind::Bool:
            return setting->getBool() == setting->getDefaultBool();
        case SettingKind::String:
        case SettingKind::List:
            return setting->getValue() == setting->getDefaultText();
        case SettingKind::Unknown:
            break;
        }
        return true;
    };
    const QList<StructSetting *> shown = settings->getStructSettings();
    return std::all_of(shown.begin(), shown.end(), [&](const StructSetting *setting) {
        return setting->isBasic || holdsDefault(setting);
    });
}

} // namespace ImportProfiles
