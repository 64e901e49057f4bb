#include "editors/formparts.h"

#include <QLayout>
#include <QWidget>

void makeRoom(QWidget *form, const QList<QWidget *> &parts)
{
    int wider = 0;
    for (const QWidget *part : parts) {
        if (const QLayout *layout = part->layout())
            wider = qMax(wider, layout->minimumSize().width() - part->width());
    }
    int lower = 0;
    for (QWidget *part : parts) {
        QRect place = part->geometry().translated(0, lower);
        place.setWidth(place.width() + wider);
        if (const QLayout *layout = part->layout()) {
            const int missing = qMax(0, layout->minimumSize().height() - place.height());
            place.setHeight(place.height() + missing);
            lower += missing;
        }
        part->setGeometry(place);
    }
    form->setMinimumSize(form->minimumSize() + QSize(wider, lower));
}
