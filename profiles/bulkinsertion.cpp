#include "profiles/bulkinsertion.h"

#include <QCoreApplication>
#include <QEvent>

BulkInsertion::BulkInsertion(QListWidget *list) : list(list->isVisible() ? list : nullptr)
{
    if (!this->list)
        return;
    QWidget *focused = list->window()->focusWidget();
    if (focused == list || list->isAncestorOf(focused))
        focus = focused;
    list->hide();
}

BulkInsertion::~BulkInsertion()
{
    if (!list)
        return;
    list->doItemsLayout();
    // A row in sight would ask for a layout when it takes its looks, and every widget that appears
    // asks to be painted: each time in a search among all the others. So the looks come before, and
    // one request serves for all.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::PolishRequest);
    list->show();
    QCoreApplication::removePostedEvents(nullptr, QEvent::UpdateLater);
    list->window()->update();
    if (focus)
        focus->setFocus();
}
