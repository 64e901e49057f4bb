#pragma once

#include <QString>

namespace FirmwareTool
{

/// Looks into what the uploader prints. Texts are UTF-8, end with a NUL and are never null.
class StringManipulation
{
public:
    /// Index of the first such character, -1 when the text has none.
    static int indexOf(char character, const char *text);
    static bool contains(char character, const char *text);
    /// Whether needle occurs in text, in the same case. An empty needle occurs everywhere.
    static bool contains(const char *needle, const char *text);
    /// Whether the QRegExp pattern matches anywhere in text. Its dot crosses line ends.
    static bool containsRegex(const char *pattern, const char *text);

    /// Prints the code of each byte in decimal on standard output, to see what is invisible.
    static void printStringChars(const char *text);

    /// Bytes before the NUL.
    static int length(const char *text);
    static bool equals(const char *a, const char *b);
    /// Whether both texts have n bytes at least and share the first n; true for n below 1.
    static bool equalsLength(const char *a, const char *b, int n);

    /// The uploader has no device table.
    static bool matchStar1(const char *text);
    /// The uploader has loaded the firmware image.
    static bool matchStar2(const char *text);
    /// The uploader has written the flash.
    static bool matchStar5(const char *text);
    /// The charger's flash differs from the image.
    static bool matchStar6(const char *text);
    /// The uploader cannot read the firmware image.
    static bool matchStar7(const char *text);

    /// The last progress in text, 0 to 100, or -1 without one. Only the two characters before the
    /// percent sign count, so 100 percent are told by "00". Garbage there gives any value.
    static int getPercentage(const char *text);

    /// The path of a numbered port in the style of another operating system: "COM3" becomes
    /// "\\.\COM3".
    static QString getComPort(const QString &name);
    /// The name of a file without its folders.
    static QString getFileName(const QString &path);
};

} // namespace FirmwareTool
