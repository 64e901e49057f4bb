#pragma once

#include <QList>
#include <QMessageBox>
#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>

/// Stands in for the user in front of message boxes: remembers each box that comes up and answers
/// it as soon as its event loop runs. Boxes come to it as long as this object lives.
class MessageBoxAnswers : public QObject
{
    Q_OBJECT

public:
    struct Box {
        QString title;
        QString text;
        QMessageBox::Icon icon = QMessageBox::NoIcon;
        QStringList buttons; ///< texts, in the order of QMessageBox::buttons()
        QString defaultButton;
        bool modal = false;
    };

    using Answer = std::function<void(QMessageBox *)>;

    MessageBoxAnswers();
    ~MessageBoxAnswers() override;

    /// Queues an answer; without one a box is answered by its Enter key's button, else closed.
    void push(Answer answer);
    /// Queues a press of a standard button.
    void push(QMessageBox::StandardButton button);
    /// Queues a press of the button with this text ("&" included).
    void push(const QString &buttonText);
    /// Queues closing by the window's close control.
    void pushClose();

    const QList<Box> &seen() const { return boxes; }
    QStringList titles() const;
    void clear();

signals:
    void answered();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void answer(QMessageBox *box);

    QList<Box> boxes;
    QList<Answer> answers;
};
