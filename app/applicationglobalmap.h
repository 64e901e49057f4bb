#pragma once

#include <QMap>
#include <QString>

/// Named values that the whole process shares, from start to end. All are stored as text. Its one
/// key in use is "bundle_version", the version of the bundle in use without a leading "v".
///
/// Reading a key that was never stored inserts it with an empty value. Main thread only.
class ApplicationGlobalMap
{
public:
    ApplicationGlobalMap() = delete;

    static void putString(QString key, QString value);
    /// Empty for a key that was never stored.
    static QString getString(QString key);
    /// Keeps six significant digits.
    static void putDouble(QString key, double value);
    /// 0 for a key that was never stored, and for text that is no number.
    static double getDouble(QString key);
    static void putInt64(QString key, long long value);
    /// 0 for a key that was never stored, and for text that is no whole number.
    static long long getInt64(QString key);

private:
    static QMap<QString, QString> map;
};
