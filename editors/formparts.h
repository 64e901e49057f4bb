#pragma once

#include <QList>

class QWidget;

/// Makes room in a form whose parts, listed from top to bottom, stand at fixed places. A part whose
/// layout needs more height than its place has gets it, and what stands below moves down; all parts
/// become as wide as the widest needs. The minimum size of the form grows by as much.
void makeRoom(QWidget *form, const QList<QWidget *> &parts);
