#pragma once

#include <QList>
#include <QString>

/// A dotted version number such as "1.039". Decides every question of which bundle or software is
/// the newer one.
///
/// Components compare as integers, so "1.039" equals "1.39"; where one version continues the other
/// the shorter is the smaller, so "1.2" is below "1.2.0". Text that is no version is invalid, equal
/// to any other invalid one and below all valid ones. A leading "v" is not part of a version.
class VersionString
{
public:
    /// Surrounding white space of text is dropped.
    explicit VersionString(QString text);

    /// The text as given, trimmed.
    QString toString() const { return string; }
    bool isValid() const { return valid; }

    /// -1, 0 or 1 as this version is below, equal to or above other.
    int compare(VersionString other) const;
    bool equalTo(VersionString other) const;
    bool lessThan(VersionString other) const;
    bool greaterThan(VersionString other) const;
    bool greaterThanEqualTo(VersionString other) const;
    bool lessThanEqualTo(VersionString other) const;

    /// Writes "Version: " and each component with a "|" behind it as a line on standard output.
    void print() const;

private:
    void compileVersionString();

    QString string;
    /// Most significant component first; empty for an invalid version.
    QList<int> numbers;
    bool valid = false;
};
