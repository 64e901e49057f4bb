#include "app/look.h"

#include <QApplication>
#include <QEvent>
#include <QFont>
#include <QPalette>
#include <QWidget>

void setSuiteLook()
{
    qApp->setStyleSheet(QStringLiteral(
        "QLineEdit{border-color: rgb(176, 174, 171);border-width:  2px;border-style: inset;"
        "border-radius: 3px;padding: 1px;padding-top: 0px;padding-bottom: 0px;}"
        "QLineEdit:!enabled{border: none;color: black;}"));
    QApplication::setFont(QFont(QStringLiteral("Arial"), 9));

    // The style sheet writes disabled line edits black. Without a native border they are filled
    // with the desktop's colour, whatever their own palette says: it takes another style sheet to
    // keep black off a dark ground.
    if (QApplication::palette().color(QPalette::Base).lightness() < 128) {
        const auto windows = QApplication::topLevelWidgets();
        for (QWidget *window : windows)
            window->setStyleSheet(
                QStringLiteral("QLineEdit{background-color: white;color: black;}"));
    }

    // Before the event loop runs Qt tells no widget of a new font: the window would keep the
    // desktop's font beside dialogs in the suite's.
    QEvent fontChange(QEvent::ApplicationFontChange);
    const auto widgets = QApplication::allWidgets();
    for (QWidget *widget : widgets)
        QCoreApplication::sendEvent(widget, &fontChange);
}
