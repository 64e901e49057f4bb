#pragma once

#include <QString>
#include <QStringList>

/// What was done in a round, told when a law turns out to be broken.
class Diary
{
public:
    void begin(int newRound);
    /// Something the user did.
    void note(const QString &deed);
    /// A law is broken: says so on standard output, with the round's deeds so far.
    void broken(const QString &law);
    /// The same for each of these, unless there are none.
    void broken(const QString &law, const QStringList &differences);

    int brokenCount() const { return count; }

private:
    int round = 0;
    int count = 0;
    QStringList deeds;
};
