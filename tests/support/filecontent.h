#pragma once

#include <QByteArray>
#include <QString>

/// The bytes of a file; none when it cannot be read.
QByteArray contentOf(const QString &name);
/// The bytes of a file that the test cannot do without: ends the program when it cannot be read.
QByteArray neededContentOf(const QString &name);
/// Makes a file hold these bytes and no others; ends the program when it cannot be written.
void writeFile(const QString &name, const QByteArray &content);
