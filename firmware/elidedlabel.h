#pragma once

#include <QLabel>

/// A line of plain text that gives way: where it has not the room it shows an ellipsis in its
/// middle, and the whole text as its tool tip.
class ElidedLabel : public QLabel
{
    Q_OBJECT

public:
    explicit ElidedLabel(QWidget *parent = nullptr);

    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QString shownText() const;
};
