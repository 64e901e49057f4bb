#include "editors/numberspinbox.h"

#include "editors/typednumber.h"

#include <QLocale>

NumberSpinBox::NumberSpinBox(QWidget *parent) : QDoubleSpinBox(parent)
{
    setLocale(QLocale::c());
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
