#pragma once

#include <QObject>

class QWidget;

/// Ends the process at the first paint of a window, telling on standard output the milliseconds
/// since the time in VELANTOR_BENCH_START (seconds of the monotonic clock, taken by whoever started
/// the process) and the peak of the memory that it held, in KiB.
class FirstPaint : public QObject
{
    Q_OBJECT

public:
    explicit FirstPaint(QWidget *window);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
};
