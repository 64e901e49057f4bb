#include "support/messageboxanswers.h"

#include <QAbstractButton>
#include <QApplication>
#include <QEvent>
#include <QPointer>
#include <QPushButton>
#include <QTimer>

MessageBoxAnswers::MessageBoxAnswers()
{
    qApp->installEventFilter(this);
}

MessageBoxAnswers::~MessageBoxAnswers()
{
    qApp->removeEventFilter(this);
}

void MessageBoxAnswers::push(Answer answer)
{
    answers.append(std::move(answer));
}

void MessageBoxAnswers::push(QMessageBox::StandardButton button)
{
    push([button](QMessageBox *box) { box->button(button)->click(); });
}

void MessageBoxAnswers::push(const QString &buttonText)
{
    push([buttonText](QMessageBox *box) {
        for (QAbstractButton *button : box->buttons()) {
            if (button->text() == buttonText) {
                button->click();
                return;
            }
        }
        qFatal("no button %s in the box", qPrintable(buttonText));
    });
}

void MessageBoxAnswers::pushClose()
{
    push([](QMessageBox *box) { box->close(); });
}

QStringList MessageBoxAnswers::titles() const
{
    QStringList result;
    for (const Box &box : boxes)
        result.append(box.title);
    return result;
}

void MessageBoxAnswers::clear()
{
    boxes.clear();
    answers.clear();
}

bool MessageBoxAnswers::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Show) {
        if (auto *box = qobject_cast<QMessageBox *>(watched)) {
            QPointer<QMessageBox> shown(box);
            QTimer::singleShot(0, this, [this, shown] {
                if (shown)
                    answer(shown);
            });
        }
    }
    return QObject::eventFilter(watched, event);
}

void MessageBoxAnswers::answer(QMessageBox *box)
{
    Box record;
    record.title = box->windowTitle();
    record.text = box->text();
    record.icon = box->icon();
    for (QAbstractButton *button : box->buttons())
        record.buttons.append(button->text());
    if (box->defaultButton())
        record.defaultButton = box->defaultButton()->text();
    record.modal = box->isModal();
    boxes.append(record);

    if (!answers.isEmpty())
        answers.takeFirst()(box);
    else if (box->defaultButton())
        box->defaultButton()->click();
    else
        box->close();
    emit answered();
}
