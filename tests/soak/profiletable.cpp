#include "profiletable.h"

#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "profiles/profilename.h"
#include "profiles/profilesettings.h"
#include "profiles/profilestats.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

namespace
{
const QString statsPrefix = QStringLiteral("stats.");
const QString idMember = QStringLiteral("profile_id");

Values storedMembers(const HParser::StructSettings *record, const QString &prefix)
{
    const QStringList notStored{QStringLiteral("checksum"), QStringLiteral("calculated")};
    Values values;
    for (const HParser::StructSetting *setting : record->getOriginalOrderStructSettings()) {
        if (setting->name != QLatin1String("type") && !notStored.contains(setting->xmlName))
            values.insert(prefix + setting->name, setting->getValue());
    }
    return values;
}

QString textOf(const QJsonValue &value)
{
    if (value.isBool())
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    return value.isDouble() ? QString::number(value.toDouble(), 'g', 6) : value.toString();
}

Values membersOf(const QJsonObject &element, const QString &prefix)
{
    Values values;
    for (auto member = element.begin(); member != element.end(); ++member) {
        if (member.key() != QLatin1String("element"))
            values.insert(prefix + member.key(), textOf(member.value()));
    }
    return values;
}

bool isLeftOut(const QString &member, const QStringList &but)
{
    return but.contains(member) || (but.contains(statsPrefix) && member.startsWith(statsPrefix));
}
} // namespace

QList<Values> profilesInList(const SuiteStory &story)
{
    QList<Values> profiles;
    for (int i = 0; i < story.list()->count(); ++i) {
        const ProfileSettings *profile = story.row(i)->getProfileSettings();
        Values values = storedMembers(profile->structSettings, QString());
        values[idMember] = QString::number(i);
        if (profile->getStats()) {
            const Values stats = storedMembers(profile->getStats()->structSettings, statsPrefix);
            for (auto value = stats.begin(); value != stats.end(); ++value)
                values.insert(value.key(), value.value());
            values[statsPrefix + idMember] = QString::number(i);
        }
        profiles.append(values);
    }
    return profiles;
}

ChargerPage ChargerPage::read(SuiteStory &story)
{
    ChargerPage page;
    const QString text = story.pageOnCharger();
    const QJsonDocument json = QJsonDocument::fromJson(text.toUtf8());
    if (!json.isArray()) {
        page.complaint = text.simplified();
        return page;
    }
    QStringList order;
    QMap<QString, QJsonObject> profiles;
    QMap<QString, QJsonObject> stats;
    const QJsonArray elements = json.array();
    for (const QJsonValue &value : elements) {
        const QJsonObject element = value.toObject();
        const QString kind = element[QStringLiteral("element")].toString();
        const QString id = textOf(element[idMember]);
        if (kind.startsWith(QLatin1String("chemistry_"))) {
            if (!profiles.contains(id))
                order.append(id);
            profiles[id] = element;
        } else if (kind == QLatin1String("profile_stats")) {
            stats[id] = element;
        } else if (kind == QLatin1String("global_settings")) {
            page.settings = membersOf(element, QString());
        } else {
            page.others[kind] = membersOf(element, QString());
        }
    }
    if (!page.others.contains(QStringLiteral("page_counter")))
        page.complaint = QStringLiteral("no page counter");
    for (const QString &id : qAsConst(order)) {
        if (profiles[id][QStringLiteral("scheduled_for_deletion")].toBool())
            continue;
        Values values = membersOf(profiles[id], QString());
        const Values counted = membersOf(stats.value(id), statsPrefix);
        for (auto value = counted.begin(); value != counted.end(); ++value)
            values.insert(value.key(), value.value());
        page.profiles.append(values);
    }
    return page;
}

QStringList differences(const Values &expected, const Values &found, const QStringList &but)
{
    QStringList result;
    const QSet<QString> members = QSet<QString>(expected.keyBegin(), expected.keyEnd()) +
                                  QSet<QString>(found.keyBegin(), found.keyEnd());
    const auto told = [](const Values &values, const QString &member) {
        return values.contains(member) ? QStringLiteral("\"%1\"").arg(values[member])
                                       : QStringLiteral("nothing");
    };
    for (const QString &member : members) {
        if (isLeftOut(member, but))
            continue;
        if (!expected.contains(member) || !found.contains(member) ||
            expected[member] != found[member])
            result.append(QStringLiteral("%1 is %2 in place of %3")
                              .arg(member, told(found, member), told(expected, member)));
    }
    result.sort();
    return result;
}

QStringList differences(const QList<Values> &expected, const QList<Values> &found,
                        const QStringList &but)
{
    QStringList result;
    if (expected.size() != found.size())
        result.append(
            QStringLiteral("%1 profiles in place of %2").arg(found.size()).arg(expected.size()));
    for (int i = 0; i < qMin(expected.size(), found.size()); ++i) {
        const QStringList one = differences(expected[i], found[i], but);
        if (!one.isEmpty())
            result.append(
                QStringLiteral("profile %1 (%2): %3")
                    .arg(i)
                    .arg(expected[i][QStringLiteral("title")], one.join(QStringLiteral(", "))));
    }
    return result;
}
