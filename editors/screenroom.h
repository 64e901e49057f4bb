#pragma once

#include <QSize>

class QWidget;

/// The largest size at which a window, with a title bar above it, is wholly on its screen.
QSize roomOnScreen(const QWidget *window);
