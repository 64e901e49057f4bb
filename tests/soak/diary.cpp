#include "diary.h"

#include <cstdio>

namespace
{
void say(const QString &line)
{
    std::printf("%s\n", qPrintable(line));
    std::fflush(stdout);
}
} // namespace

void Diary::begin(int newRound)
{
    round = newRound;
    deeds.clear();
}

void Diary::note(const QString &deed)
{
    deeds.append(deed);
}

void Diary::broken(const QString &law)
{
    ++count;
    say(QStringLiteral("BROKEN in round %1: %2").arg(round).arg(law));
    say(QStringLiteral("    after: ") + deeds.join(QStringLiteral("; ")));
}

void Diary::broken(const QString &law, const QStringList &differences)
{
    if (!differences.isEmpty())
        broken(law + QStringLiteral(": ") + differences.join(QStringLiteral("; ")));
}
