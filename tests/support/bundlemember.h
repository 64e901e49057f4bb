#pragma once

#include <QByteArray>

/// A file within a bundle, from its start line to its end line. The content ends with a line feed.
QByteArray bundleMember(const QByteArray &name, const QByteArray &content);
