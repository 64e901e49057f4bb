#include "app/messageboxsize.h"

#include <QGridLayout>
#include <QGuiApplication>
#include <QLabel>
#include <QMessageBox>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSpacerItem>

void keepOnScreen(QMessageBox *box)
{
    auto *text = box->findChild<QLabel *>(QStringLiteral("qt_msgbox_label"));
    auto *grid = qobject_cast<QGridLayout *>(box->layout());
    const int place = text && grid ? grid->indexOf(text) : -1;
    const QSize screen = QGuiApplication::primaryScreen()->availableSize();
    const int highest = screen.height() * 3 / 4;
    if (place == -1 || text->sizeHint().height() <= highest)
        return;
    int row = 0;
    int column = 0;
    int rows = 0;
    int columns = 0;
    grid->getItemPosition(place, &row, &column, &rows, &columns);
    auto *area = new QScrollArea(box);
    area->setFrameShape(QFrame::NoFrame);
    // A message box limits its width by itself, and cuts off what has a larger minimum.
    const int widest = qMin(screen.width() / 2, 900);
    const int width = text->sizeHint().width() + area->verticalScrollBar()->sizeHint().width();
    area->setMinimumSize(qMin(width, widest), highest);
    grid->removeWidget(text);
    area->setWidget(text);
    area->setWidgetResizable(true);
    grid->addWidget(area, row, column, rows, columns);
}

void setLeastWidth(QMessageBox *box, int pixels)
{
    auto *grid = qobject_cast<QGridLayout *>(box->layout());
    Q_ASSERT(grid);
    grid->addItem(new QSpacerItem(pixels, 0, QSizePolicy::Minimum, QSizePolicy::Expanding),
                  grid->rowCount(), 0, 1, grid->columnCount());
}
