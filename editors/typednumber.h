#pragma once

#include <QString>
#include <QValidator>

/// Reads a number as users type or paste it: with a decimal point or a decimal comma whatever the
/// desktop's language, with blanks anywhere, with or without an exponent, in any script's digits.
class TypedNumber
{
public:
    /// Acceptable: a whole number text. Intermediate: the beginning of one, be it empty. Invalid:
    /// can become none by typing on; "nan" and "inf" are no numbers here.
    static QValidator::State state(const QString &text);
    /// The number at the beginning of text, with a decimal point; empty where there is none.
    static QString numberIn(const QString &text);
    /// The value of numberIn(), 0 for none. Always finite: what is too large for a double reads as
    /// the largest one of its sign.
    static double value(const QString &text);
};
