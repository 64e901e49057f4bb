#pragma once

#include <QDoubleValidator>

/// Lets any number be typed, as TypedNumber reads it; the setting does the limiting. A text that is
/// no number yet becomes one when editing ends: the number at its beginning, or 0.
class NumberValidator final : public QDoubleValidator
{
    Q_OBJECT

public:
    explicit NumberValidator(QObject *parent = nullptr);

    State validate(QString &input, int &position) const override;
    void fixup(QString &input) const override;
};
