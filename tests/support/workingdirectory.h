#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

/// A fresh folder that is the current directory as long as this object lives.
class WorkingDirectory
{
public:
    WorkingDirectory();
    ~WorkingDirectory();
    WorkingDirectory(const WorkingDirectory &) = delete;
    WorkingDirectory &operator=(const WorkingDirectory &) = delete;

    QString path() const { return folder.path(); }
    /// Writes a file in the folder; ends the test program where that fails.
    void write(const QString &name, const QByteArray &content) const;
    /// Copies a file into the folder under its own name.
    void copyHere(const QString &file) const;
    /// The content of a file of the folder; empty where there is none.
    QByteArray read(const QString &name) const;

private:
    QTemporaryDir folder;
    QString before;
};
