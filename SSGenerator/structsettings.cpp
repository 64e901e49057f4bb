#include "SSGenerator/structsettings.h"

#include "SSGenerator/formula.h"
#include "SSGenerator/structsetting.h"

#include <QPair>
#include <QVector>

#include <algorithm>

namespace HParser
{

namespace
{

/// Gives setting the value of source.
void copyValue(const StructSetting *source, StructSetting *setting)
{
    switch (source->settingKind) {
    case SettingKind::Num:
        setting->setValue(source->getShownNumber());
        break;
    case SettingKind::Bool:
        setting->setValue(source->getBool());
        break;
    case SettingKind::String:
    case SettingKind::List:
        setting->setValue(source->getValue());
        break;
    case SettingKind::Unknown:
        break;
    }
}

/// Whether the values read the same. Equal numbers need not be spelled out to know that.
bool sameValue(const StructSetting *one, const StructSetting *other)
{
    if (one->settingKind == SettingKind::Num && other->settingKind == SettingKind::Num &&
        one->getNumber() == other->getNumber())
        return true;
    return one->getValue() == other->getValue();
}

} // namespace

StructSettings::StructSettings(QObject *parent) : QObject(parent) {}

void StructSettings::setOriginalOrderStructSettings(const QList<StructSetting *> &settings)
{
    for (StructSetting *setting : settings)
        setting->setParent(this);
    originalOrderStructSettings = settings;
}

void StructSettings::setAdvancedSettingsEdited(bool edited)
{
    advancedSettingsEdited = edited;
    emit advancedEditedChanged(edited);
}

StructSetting *StructSettings::getStructSettingByName(const QString &name) const
{
    for (StructSetting *setting : originalOrderStructSettings) {
        if (setting->name == name)
            return setting;
    }
    return nullptr;
}

StructSetting *StructSettings::getStructSettingByDescriptiveName(const QString &name) const
{
    for (StructSetting *setting : originalOrderStructSettings) {
        if (setting->descriptiveName == name)
            return setting;
    }
    return nullptr;
}

bool StructSettings::compare(const StructSettings *other) const
{
    if (descriptiveName != other->descriptiveName || structType != other->structType)
        return false;
    for (const StructSetting *setting : originalOrderStructSettings) {
        const StructSetting *counterpart = other->getStructSettingByName(setting->name);
        Q_ASSERT(counterpart);
        if (!sameValue(setting, counterpart))
            return false;
    }
    return true;
}

void StructSettings::buildFormulaTrees()
{
    // Every import from a charger builds anew. Connections that added up would make a setting
    // follow one change as many times as there were builds, squared.
    for (StructSetting *setting : originalOrderStructSettings)
        setting->detachFormulaSignals();
    for (StructSetting *setting : originalOrderStructSettings)
        setting->buildFormulaTrees(originalOrderStructSettings);
    for (StructSetting *setting : originalOrderStructSettings)
        setting->attachMemberSettingSignalsToContainerFormulaSlots();
    for (StructSetting *setting : originalOrderStructSettings)
        setting->attachMemberFormulaSignalsToThisSettingsSlot();
    for (StructSetting *setting : originalOrderStructSettings)
        setting->setDefault();
}

StructSettings *StructSettings::deepCopy() const
{
    QList<StructSetting *> copies;
    copies.reserve(originalOrderStructSettings.size());
    for (const StructSetting *setting : originalOrderStructSettings)
        copies.append(setting->deepCopy());

    auto *copy = new StructSettings;
    copy->descriptiveName = descriptiveName;
    copy->structType = structType;
    copy->setOriginalOrderStructSettings(copies);
    copy->setStructSettings(sortByVisualIndex(copies));
    copy->advancedSettingsEdited = advancedSettingsEdited;
    return copy;
}

StructSettings *StructSettings::deepCopyWithValues() const
{
    StructSettings *copy = deepCopy();
    copy->buildFormulaTrees();
    copy->takeValuesOf(this);
    return copy;
}

bool StructSettings::takeValuesOf(const StructSettings *other)
{
    const auto places =
        std::min(originalOrderStructSettings.size(), other->originalOrderStructSettings.size());
    QList<QPair<const StructSetting *, StructSetting *>> pairs;
    for (int i = 0; i < places; ++i) {
        const StructSetting *source = other->originalOrderStructSettings.at(i);
        StructSetting *setting = originalOrderStructSettings.at(i);
        if (source->name != setting->name || source->settingKind != setting->settingKind)
            continue;
        setting->advancedEnabled = true;
        pairs.append({source, setting});
    }
    const auto copyAll = [&pairs] {
        for (const auto &pair : pairs)
            copyValue(pair.first, pair.second);
        return std::count_if(pairs.begin(), pairs.end(),
                             [](const auto &pair) { return !sameValue(pair.first, pair.second); });
    };
    // A value may have been cut by a limit whose own settings were copied after it. Each further
    // round brings at least one such value home; one that its own limits forbid never comes.
    auto differing = copyAll();
    for (auto before = differing + 1; differing > 0 && differing < before;) {
        before = differing;
        differing = copyAll();
    }
    return differing == 0;
}

QList<StructSetting *> StructSettings::getDependancyOrderStructSettings() const
{
    QStringList resolved;
    QList<StructSetting *> ordered;
    QList<StructSetting *> deferred;
    for (StructSetting *setting : originalOrderStructSettings) {
        const QStringList dependees = setting->getDependeeSettingsNames();
        const bool ready =
            std::all_of(dependees.begin(), dependees.end(),
                        [&resolved](const QString &name) { return resolved.contains(name); });
        if (ready) {
            ordered.append(setting);
            resolved.append(setting->descriptiveName);
        } else {
            deferred.append(setting);
        }
    }
    return ordered + deferred;
}

bool StructSettings::setFormulaTrees(const StructSettings *other)
{
    for (StructSetting *setting : getDependancyOrderStructSettings()) {
        const StructSetting *counterpart = other->getStructSettingByName(setting->name);
        Q_ASSERT(counterpart);
        if (!setting->setFormulaTrees(counterpart, originalOrderStructSettings))
            return false;
    }
    return true;
}

QList<StructSetting *> StructSettings::sortByVisualIndex(const QList<StructSetting *> &settings)
{
    QVector<double> indices;
    indices.reserve(settings.size());
    for (const StructSetting *setting : settings)
        indices.append(setting->visualIndex ? setting->visualIndex->toString().toDouble() : -1);

    QList<StructSetting *> sorted;
    for (int wanted = 0; wanted < settings.size(); ++wanted) {
        const int found = indices.indexOf(wanted);
        if (found != -1)
            sorted.append(settings.at(found));
    }
    return sorted;
}

} // namespace HParser
