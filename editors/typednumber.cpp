#include "editors/typednumber.h"

#include <QRegularExpression>

#include <algorithm>
#include <limits>

namespace
{

constexpr QChar arabicDecimalSeparator(0x066B);
constexpr QChar typographicMinus(0x2212);

/// text without blanks, in the characters of the C locale.
QString plain(const QString &text)
{
    QString result;
    for (const QChar character : text) {
        if (character.isSpace())
            continue;
        if (character.isDigit())
            result += QChar('0' + character.digitValue());
        else if (character == QLatin1Char(',') || character == arabicDecimalSeparator)
            result += QLatin1Char('.');
        else if (character == typographicMinus)
            result += QLatin1Char('-');
        else
            result += character;
    }
    return result;
}

const QRegularExpression &number()
{
    static const QRegularExpression pattern(
        QStringLiteral("\\A[+-]?(\\d+\\.?\\d*|\\.\\d+)([eE][+-]?\\d+)?"));
    return pattern;
}

} // namespace

QValidator::State TypedNumber::state(const QString &text)
{
    static const QRegularExpression beginning(
        QStringLiteral("\\A[+-]?\\d*\\.?\\d*([eE][+-]?\\d*)?\\z"));
    const QString typed = plain(text);
    const QRegularExpressionMatch match = number().match(typed);
    if (match.hasMatch() && match.capturedLength() == typed.length())
        return QValidator::Acceptable;
    return beginning.match(typed).hasMatch() ? QValidator::Intermediate : QValidator::Invalid;
}

QString TypedNumber::numberIn(const QString &text)
{
    return number().match(plain(text)).captured();
}

double TypedNumber::value(const QString &text)
{
    constexpr double largest = std::numeric_limits<double>::max();
    return std::clamp(numberIn(text).toDouble(), -largest, largest);
}
