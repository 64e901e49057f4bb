#include "firmware/elidedlabel.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

ElidedLabel::ElidedLabel(QWidget *parent) : QLabel(parent)
{
    // A name of a file is no markup.
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
}

QSize ElidedLabel::minimumSizeHint() const
{
    return QSize(0, QLabel::minimumSizeHint().height());
}

bool ElidedLabel::event(QEvent *event)
{
    if (event->type() != QEvent::ToolTip)
        return QLabel::event(event);
    // A tool tip guesses whether it is given markup.
    const QString tip = shownText() == text() ? QString() : text().toHtmlEscaped();
    QToolTip::showText(static_cast<QHelpEvent *>(event)->globalPos(),
                       tip.isEmpty() ? tip : QStringLiteral("<span>") + tip, this);
    return true;
}

void ElidedLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    style()->drawItemText(&painter, contentsRect(),
                          QStyle::visualAlignment(layoutDirection(), alignment()), palette(),
                          isEnabled(), shownText(), foregroundRole());
}

QString ElidedLabel::shownText() const
{
    return fontMetrics().elidedText(text(), Qt::ElideMiddle, contentsRect().width());
}
