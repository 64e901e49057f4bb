#pragma once

#include <QList>
#include <QStringList>

#include <qextserialenumerator.h>

/// The ports of a pretended computer, in the order in which it lists them. In a test that links
/// test_ports the suite sees these alone.
extern QStringList portsOfTheComputer;

/// What the computer tells of ports with these names.
QList<QextPortInfo> portInfos(const QStringList &names);
