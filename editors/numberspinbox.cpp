#include "editors/numberspinbox.h"

#include "editors/typednumber.h"

#include <QEvent>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QLineEdit>
#include <QLocale>

NumberSpinBox::NumberSpinBox(QWidget *parent) : QDoubleSpinBox(parent)
{
    setLocale(QLocale::c());
    connect(this, qOverload<double>(&QDoubleSpinBox::valueChanged), this, &NumberSpinBox::fitText);
}

QSize NumberSpinBox::sizeHint() const
{
    return QDoubleSpinBox::sizeHint() +
           QSize(0, fontMetrics().height() - lineEdit()->fontMetrics().height());
}

QValidator::State NumberSpinBox::validate(QString &input, int &) const
{
    return TypedNumber::state(input);
}

void NumberSpinBox::fixup(QString &input) const
{
    input = TypedNumber::numberIn(input);
}

double NumberSpinBox::valueFromText(const QString &text) const
{
    return TypedNumber::value(text);
}

void NumberSpinBox::resizeEvent(QResizeEvent *event)
{
    QDoubleSpinBox::resizeEvent(event);
    fitText();
}

void NumberSpinBox::changeEvent(QEvent *event)
{
    QDoubleSpinBox::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        fitText();
}

/// The box has a fixed width, and a desktop may ask for larger texts than it was made for. Cut, a
/// number would be another one.
void NumberSpinBox::fitText()
{
    constexpr double smallest = 5; // points
    constexpr double step = 0.5;
    constexpr int margins = 2; // pixels that a line edit keeps free beside its text
    const int room = lineEdit()->contentsRect().width() - margins;
    const QString number = textFromValue(value());
    QFont fitting = font();
    double size = QFontInfo(fitting).pointSizeF();
    while (size > smallest && QFontMetricsF(fitting, this).horizontalAdvance(number) > room) {
        size -= step;
        fitting.setPointSizeF(size);
    }
    lineEdit()->setFont(fitting);
}
