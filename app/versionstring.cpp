#include "app/versionstring.h"

#include <QRegExp>
#include <QStringList>
#include <QTextStream>

#include <algorithm>

VersionString::VersionString(QString text) : string(std::move(text))
{
    compileVersionString();
}

void VersionString::compileVersionString()
{
    string = string.trimmed();

    const QRegExp grammar(QStringLiteral("^(\\d+\\.)*\\d+$"));
    valid = grammar.indexIn(string) != -1;
    if (!valid)
        return;

    // A component beyond 32 bits counts as 0 and leaves the version valid.
    for (const QString &part : string.split(QLatin1Char('.'), Qt::SkipEmptyParts))
        numbers.append(part.toInt(nullptr, 10));
}

int VersionString::compare(VersionString other) const
{
    if (valid != other.valid)
        return valid ? 1 : -1;

    const int shared = std::min(numbers.size(), other.numbers.size());
    for (int i = 0; i < shared; ++i) {
        if (numbers.at(i) != other.numbers.at(i))
            return numbers.at(i) < other.numbers.at(i) ? -1 : 1;
    }
    if (numbers.size() != other.numbers.size())
        return numbers.size() < other.numbers.size() ? -1 : 1;
    return 0;
}

bool VersionString::equalTo(VersionString other) const
{
    return compare(std::move(other)) == 0;
}

bool VersionString::lessThan(VersionString other) const
{
    return compare(std::move(other)) < 0;
}

bool VersionString::greaterThan(VersionString other) const
{
    return compare(std::move(other)) > 0;
}

bool VersionString::greaterThanEqualTo(VersionString other) const
{
    return greaterThan(other) || equalTo(other);
}

bool VersionString::lessThanEqualTo(VersionString other) const
{
    return lessThan(other) || equalTo(other);
}

void VersionString::print() const
{
    QTextStream out(stdout);
    out << "Version: ";
    for (const int number : numbers)
        out << number << '|';
    out << '\n';
}
