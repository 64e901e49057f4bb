#include "announcedports.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <algorithm>
#include <optional>

namespace
{

/// More than any announcement needs: "pts/", a number and a line end.
constexpr qint64 LONGEST_ANNOUNCEMENT = 32;

std::optional<int> announcedNumber(const QString &fileName)
{
    QFile file(fileName);
    if (file.size() > LONGEST_ANNOUNCEMENT || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    // The text as long as it is: a conversion of the array itself would end at a zero byte.
    const QByteArray bytes = file.read(LONGEST_ANNOUNCEMENT + 1);
    const QString content = QLatin1String(bytes.constData(), bytes.size());

    // Without leading zeros, so that a terminal has one name only.
    static const QRegularExpression form(QStringLiteral("\\Apts/(0|[1-9][0-9]{0,8})\\n?\\z"));
    const QRegularExpressionMatch match = form.match(content);
    if (!match.hasMatch())
        return std::nullopt;
    return match.captured(1).toInt();
}

QString portName(int number)
{
    return QStringLiteral("pts/%1").arg(number);
}

} // namespace

QStringList announcedPorts()
{
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (runtime.isEmpty() || QDir::isRelativePath(runtime))
        return {};

    // Plain files only: opening a pipe would hang until somebody writes to it.
    const QDir folder(runtime + QStringLiteral("/velantor-ports"));
    const auto entries = folder.entryInfoList(QDir::Files | QDir::Hidden | QDir::NoSymLinks);
    QList<int> numbers;
    for (const QFileInfo &entry : entries) {
        const std::optional<int> number = announcedNumber(entry.filePath());
        if (number && !numbers.contains(*number) &&
            QFile::exists(QStringLiteral("/dev/") + portName(*number)))
            numbers.append(*number);
    }
    std::sort(numbers.begin(), numbers.end());

    QStringList names;
    for (int number : qAsConst(numbers))
        names.append(portName(number));
    return names;
}
