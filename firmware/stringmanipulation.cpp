#include "firmware/stringmanipulation.h"

#include <QFileInfo>
#include <QRegExp>

#include <cstdio>
#include <cstring>
#include <string_view>

namespace FirmwareTool
{

int StringManipulation::indexOf(char character, const char *text)
{
    const auto index = std::string_view(text).find(character);
    return index == std::string_view::npos ? -1 : static_cast<int>(index);
}

bool StringManipulation::contains(char character, const char *text)
{
    return indexOf(character, text) != -1;
}

bool StringManipulation::contains(const char *needle, const char *text)
{
    return QString::fromUtf8(text).contains(QString::fromUtf8(needle));
}

bool StringManipulation::containsRegex(const char *pattern, const char *text)
{
    return QRegExp(QString::fromUtf8(pattern)).indexIn(QString::fromUtf8(text)) != -1;
}

void StringManipulation::printStringChars(const char *text)
{
    std::fputs("---", stdout);
    for (const char character : std::string_view(text))
        std::printf("%d|", static_cast<unsigned char>(character));
    std::fputs("---", stdout);
    std::fflush(stdout);
}

int StringManipulation::length(const char *text)
{
    return static_cast<int>(std::strlen(text));
}

bool StringManipulation::equals(const char *a, const char *b)
{
    return std::strcmp(a, b) == 0;
}

bool StringManipulation::equalsLength(const char *a, const char *b, int n)
{
    if (n < 1)
        return true;
    return length(a) >= n && length(b) >= n && std::strncmp(a, b, static_cast<std::size_t>(n)) == 0;
}

bool StringManipulation::matchStar1(const char *text)
{
    return contains("Could not find device.txt file", text);
}

bool StringManipulation::matchStar2(const char *text)
{
    return contains("hex file loaded", text);
}

bool StringManipulation::matchStar5(const char *text)
{
    return contains("Flash Write success", text);
}

bool StringManipulation::matchStar6(const char *text)
{
    return contains("verify fail", text);
}

bool StringManipulation::matchStar7(const char *text)
{
    return contains("failed to find input file", text);
}

int StringManipulation::getPercentage(const char *text)
{
    const std::string_view view(text);
    const auto percent = view.rfind('%');
    if (percent == std::string_view::npos || percent < 2)
        return -1;
    const char tens = view[percent - 2];
    const int ones = view[percent - 1] - '0';
    if (tens == ' ')
        return ones;
    const int result = (tens - '0') * 10 + ones;
    return result == 0 ? 100 : result;
}

QString StringManipulation::getComPort(const QString &name)
{
    return QStringLiteral("\\\\.\\COM") + name.mid(name.indexOf(QLatin1Char('M')) + 1);
}

QString StringManipulation::getFileName(const QString &path)
{
    return QFileInfo(path).fileName();
}

} // namespace FirmwareTool
