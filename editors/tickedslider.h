#pragma once

#include <QSlider>

/// A horizontal slider that has its tick marks above the handle also under a style sheet, where Qt
/// leaves them out.
class TickedSlider final : public QSlider
{
    Q_OBJECT

public:
    explicit TickedSlider(QWidget *parent = nullptr);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
};
