#include "xml/busydialog.h"

#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>

namespace XMLGeneratorParser
{
namespace
{
// Milliseconds.
constexpr qint64 shortestStep = 50;
constexpr qint64 longestStep = 1000;

constexpr int barSteps = 1000;
} // namespace

qint64 BusyDialog::patience = 500;

BusyDialog::BusyDialog(const QString &text, QWidget *parent)
    : QDialog(parent), bar(new QProgressBar), nextShow(patience)
{
    setWindowModality(Qt::ApplicationModal);
    setWindowFlag(Qt::WindowCloseButtonHint, false);
    setWindowTitle(QApplication::applicationDisplayName());
    auto *label = new QLabel(text);
    label->setBuddy(bar);
    bar->setRange(0, barSteps);
    bar->setAccessibleName(text);
    bar->setMinimumWidth(300);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(label);
    layout->addWidget(bar);
    watch.start();
    showPointer();
}

BusyDialog::~BusyDialog()
{
    hidePointer();
}

void BusyDialog::showPointer()
{
    if (!pointerShown)
        QApplication::setOverrideCursor(Qt::WaitCursor);
    pointerShown = true;
}

void BusyDialog::hidePointer()
{
    if (pointerShown)
        QApplication::restoreOverrideCursor();
    pointerShown = false;
}

void BusyDialog::tell(int part, int parts, qint64 done, qint64 size)
{
    showPointer();
    if (resting)
        nextShow = watch.elapsed() + patience; // the user's time is not the work's
    resting = false;
    if (watch.elapsed() < nextShow)
        return;
    const double fraction = size > 0 ? double(done) / double(size) : 0;
    bar->setValue(static_cast<int>(barSteps * (part + qBound(0.0, fraction, 1.0)) / parts));
    const qint64 before = watch.elapsed();
    show();
    QApplication::processEvents();
    const qint64 after = watch.elapsed();
    nextShow = after + qBound(shortestStep, 10 * (after - before), longestStep);
}

void BusyDialog::rest()
{
    hide();
    hidePointer();
    resting = true;
}

void BusyDialog::closeEvent(QCloseEvent *event)
{
    event->ignore();
}

} // namespace XMLGeneratorParser
