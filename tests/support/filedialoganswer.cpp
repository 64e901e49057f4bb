#include "support/filedialoganswer.h"

#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>
#include <QTimer>

FileDialogAnswer::FileDialogAnswer(const QString &file) : file(file)
{
    QTimer::singleShot(0, this, &FileDialogAnswer::answer);
}

void FileDialogAnswer::answer()
{
    auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
    if (!dialog) {
        QTimer::singleShot(1, this, &FileDialogAnswer::answer);
        return;
    }
    asked = true;
    title = dialog->windowTitle();
    filters = dialog->nameFilters();
    folder = dialog->directory().absolutePath();
    saving = dialog->acceptMode() == QFileDialog::AcceptSave;
    if (file.isEmpty()) {
        dialog->reject();
        return;
    }
    dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"))->setText(file);
    QMetaObject::invokeMethod(dialog, "accept");
}
