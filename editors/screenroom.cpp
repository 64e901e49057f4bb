#include "editors/screenroom.h"

#include <QScreen>
#include <QWidget>

QSize roomOnScreen(const QWidget *window)
{
    constexpr int titleBar = 30;
    return window->screen()->availableSize() - QSize(0, titleBar);
}
