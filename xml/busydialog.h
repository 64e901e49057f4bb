#pragma once

#include <QDialog>
#include <QElapsedTimer>

class QProgressBar;

namespace XMLGeneratorParser
{
/// Tells the user that something takes its time: the pointer shows it at once, a window with a bar
/// comes up when the work has gone on for a while.
///
/// The window takes all input of the application and cannot be closed, so that of all slots only
/// those that nobody presses (timers, ends of processes) run while the work goes on.
class BusyDialog : public QDialog
{
    Q_OBJECT

public:
    BusyDialog(const QString &text, QWidget *parent);
    ~BusyDialog() override;

    /// Part of so many parts of the work is done to done/size. May be called as often as one likes:
    /// most calls return at once, so that showing the bar takes no more than a tenth of the time,
    /// or comes once in a second.
    void tell(int part, int parts, qint64 done, qint64 size);
    /// The user is to do something else first, such as to answer a box. Ends with the next tell().
    void rest();

    /// How long work may go on without the window, in milliseconds. For dialogs still to come.
    static qint64 patience;

public slots:
    void reject() override {}

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void showPointer();
    void hidePointer();

    QProgressBar *bar;
    QElapsedTimer watch;
    qint64 nextShow;
    bool pointerShown = false;
    bool resting = false;
};

} // namespace XMLGeneratorParser
