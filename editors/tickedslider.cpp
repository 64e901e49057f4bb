#include "editors/tickedslider.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOptionSlider>

namespace
{

constexpr int tickLength = 3;
/// A tick and the room below it, and as much under the handle, which stays in the middle.
constexpr int margin = tickLength + 1;

} // namespace

TickedSlider::TickedSlider(QWidget *parent) : QSlider(Qt::Horizontal, parent) {}

QSize TickedSlider::sizeHint() const
{
    QStyleOptionSlider option;
    initStyleOption(&option);
    const QRect handle =
        style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this);
    const QSize usual = QSlider::sizeHint();
    return {usual.width(), qMax(usual.height(), handle.height() + 2 * margin)};
}

void TickedSlider::paintEvent(QPaintEvent *event)
{
    QSlider::paintEvent(event);
    if (tickInterval() <= 0)
        return;

    QStyleOptionSlider option;
    initStyleOption(&option);
    const QRect handle =
        style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this);
    const int bottom = handle.top() - 1;
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.setOpacity(0.6);
    for (qint64 value = minimum(); value <= maximum(); value += tickInterval()) {
        const int x = handle.width() / 2 +
                      QStyle::sliderPositionFromValue(minimum(), maximum(), static_cast<int>(value),
                                                      width() - handle.width(), option.upsideDown);
        painter.drawLine(x, bottom - tickLength, x, bottom - 1);
    }
}
