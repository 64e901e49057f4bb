#include "mishaps.h"

#include <QStringList>

#include <numeric>

namespace
{
// So many commands read the whole page, and so many write the rows that a dozen profiles take.
constexpr int readsOfAPage = 8;
constexpr int rowsOfAPage = 5;

QString kindOf(const QString &fault)
{
    return fault.section(QLatin1Char('@'), 0, 0).section(QLatin1Char('='), 0, 0);
}
} // namespace

/// Any fault of an answer at this place.
QString Mishaps::at(const QString &where)
{
    const QStringList kinds{
        QStringLiteral("silent"),
        QStringLiteral("dead"),
        QStringLiteral("unplug"),
        QStringLiteral("lost-echo"),
        QStringLiteral("bad-checksum"),
        QStringLiteral("bad-stx"),
        QStringLiteral("truncate=%1").arg(dice->below(8)),
        QStringLiteral("wrong-reply=%1").arg(dice->below(256), 2, 16, QLatin1Char('0')),
        QStringLiteral("slow=0.2"),
    };
    return dice->pick(kinds) + QLatin1Char('@') + where;
}

QString Mishaps::whileReading()
{
    if (dice->chance(5))
        return QStringLiteral("version=0207");
    if (dice->chance(20))
        return at(QStringLiteral("version:1"));
    return at(QStringLiteral("read:%1").arg(1 + dice->below(readsOfAPage)));
}

QString Mishaps::whileWriting()
{
    const QString row = QStringLiteral("write:%1").arg(1 + dice->below(rowsOfAPage));
    switch (dice->below(10)) {
    case 0:
        return QStringLiteral("version=0207");
    case 1:
        return at(QStringLiteral("version:%1").arg(1 + dice->below(4)));
    case 2:
    case 3:
        return at(QStringLiteral("read:%1").arg(1 + dice->below(2 * readsOfAPage)));
    case 4:
        return at(QStringLiteral("erase"));
    case 5:
        return QStringLiteral("lazy@") + (dice->chance(50) ? QStringLiteral("erase") : row);
    case 6:
    case 7:
        // The last byte of each word does not exist.
        return QStringLiteral("flip-bit=%1@%2")
            .arg(32 * dice->below(64) + dice->below(24))
            .arg(row);
    default:
        return at(row);
    }
}

QString Mishaps::whileWritingSettings()
{
    switch (dice->below(3)) {
    case 0:
        return at(QStringLiteral("version:%1").arg(1 + dice->below(2)));
    case 1:
        return at(QStringLiteral("erase"));
    default:
        return at(QStringLiteral("write:%1").arg(1 + dice->below(rowsOfAPage)));
    }
}

void Mishaps::lay(SimulatorProcess *charger, const QString &fault)
{
    pending = fault;
    if (fault.isEmpty())
        return;
    ++laid;
    charger->fault(fault);
}

void Mishaps::settle(SimulatorProcess *charger, bool transferFailed)
{
    if (pending.isEmpty())
        return;
    const bool waits =
        charger->control(QStringLiteral("state")).contains(QStringLiteral("fault ") + pending);
    if (!waits || transferFailed)
        ++struckByKind[kindOf(pending)];
    pending.clear();
    charger->control(QStringLiteral("clear"));
}

int Mishaps::struckCount() const
{
    return std::accumulate(struckByKind.begin(), struckByKind.end(), 0);
}
