#include "app/applicationglobalmap.h"

QMap<QString, QString> ApplicationGlobalMap::map;

void ApplicationGlobalMap::putString(QString key, QString value)
{
    map.insert(key, value);
}

QString ApplicationGlobalMap::getString(QString key)
{
    return map[key];
}

void ApplicationGlobalMap::putDouble(QString key, double value)
{
    putString(key, QString::number(value, 'g', 6));
}

double ApplicationGlobalMap::getDouble(QString key)
{
    return getString(key).toDouble();
}

void ApplicationGlobalMap::putInt64(QString key, long long value)
{
    putString(key, QString::number(value, 10));
}

long long ApplicationGlobalMap::getInt64(QString key)
{
    return getString(key).toLongLong(nullptr, 10);
}
