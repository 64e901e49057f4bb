#include "app/look.h"

#include <QApplication>
#include <QEvent>
#include <QFont>
#include <QWidget>

void setSuiteLook()
{
    qApp->setStyleSheet(QStringLiteral(
        "QLineEdit{border-color: rgb(176, 174, 171);border-width:  2px;border-style: inset;"
        "border-radius: 3px;padding: 1px;padding-top: 0px;padding-bottom: 0px;}"
        "QLineEdit:!enabled{border: none;color: black;}"));
    QApplication::setFont(QFont(QStringLiteral("Arial"), 9));

    // Before the event loop runs Qt tells no widget of a new font: the window would keep the
    // desktop's font beside dialogs in the suite's.
    QEvent fontChange(QEvent::ApplicationFontChange);
    const auto widgets = QApplication::allWidgets();
    for (QWidget *widget : widgets)
        QCoreApplication::sendEvent(widget, &fontChange);
}
