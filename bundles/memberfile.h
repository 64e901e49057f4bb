#pragma once

#include <QByteArray>
#include <QString>

/// Where the members of a bundle, which may come from anywhere, are allowed to go.
namespace MemberFile
{
/// Whether a member of this name may be written, as things stand in the current directory. Refused:
/// - names that lead out of the directory, by themselves or through a symbolic link;
/// - programs: the suite runs them, and a bundle holds no programs;
/// - the user's own: preferences, logs, and profile files that exist already;
/// - other bundles, the source itself among them: choosing one must not replace another;
/// - what is there and is no plain file, such as a pipe, which would keep the suite waiting.
bool mayWrite(const QString &name);

/// Replaces the content of the file, as far as that changes anything. False where it could not be
/// opened or not be written to its end.
bool write(const QByteArray &content, const QString &name);
} // namespace MemberFile
