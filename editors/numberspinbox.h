#pragma once

#include <QDoubleSpinBox>

/// A spin box that takes numbers as TypedNumber reads them and always shows a decimal point. What
/// is too large, too small or too fine can be typed, and is limited when editing ends. The number
/// is written smaller where it would not fit the box in the box's own font.
class NumberSpinBox final : public QDoubleSpinBox
{
    Q_OBJECT

public:
    explicit NumberSpinBox(QWidget *parent = nullptr);

    /// As tall as the box's own font needs, however small the number is written.
    QSize sizeHint() const override;

    QValidator::State validate(QString &input, int &position) const override;
    /// Completes a number half typed. An empty box gets its last value back.
    void fixup(QString &input) const override;
    double valueFromText(const QString &text) const override;

protected:
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void fitText();
};
