#include "editors/fonts.h"

#include <QFont>
#include <QFontInfo>
#include <QWidget>

void setPointSize(QWidget *widget, int points)
{
    QFont font = widget->font();
    font.setPointSize(points);
    widget->setFont(font);
}

void enlargeFont(QWidget *widget, int points)
{
    // The font itself has no size in points where the desktop gave it one in pixels.
    setPointSize(widget, QFontInfo(widget->font()).pointSize() + points);
}
