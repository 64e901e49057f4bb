#include "editors/numbervalidator.h"

#include "editors/typednumber.h"

#include <QLocale>

#include <limits>

NumberValidator::NumberValidator(QObject *parent)
    : QDoubleValidator(std::numeric_limits<double>::lowest(), std::numeric_limits<double>::max(),
                       20, parent)
{
    setLocale(QLocale::c());
}

QValidator::State NumberValidator::validate(QString &input, int &) const
{
    return TypedNumber::state(input);
}

void NumberValidator::fixup(QString &input) const
{
    input = TypedNumber::numberIn(input);
    if (input.isEmpty())
        input = QStringLiteral("0");
}
