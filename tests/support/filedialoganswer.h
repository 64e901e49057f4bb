#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

/// Stands in for the user in front of the next file dialog: notes how it looks and chooses.
class FileDialogAnswer : public QObject
{
    Q_OBJECT

public:
    /// An empty name cancels.
    explicit FileDialogAnswer(const QString &file);

    QString title;
    QStringList filters;
    QString folder;
    bool saving = false;
    bool asked = false;

private:
    void answer();

    QString file;
};
