#pragma once

class QWidget;

/// Gives the widget its own font in this size.
void setPointSize(QWidget *widget, int points);
/// Gives the widget its own font, larger by this many points.
void enlargeFont(QWidget *widget, int points);
