#pragma once

#include <QDialog>

#include <memory>

class QFileDevice;

namespace Ui
{
class ConfigFile;
}

/// The user's one preference, whether the suite looks for updates by itself: the dialog that asks
/// for it, and the reader and writer of config.txt in the current directory.
///
/// The file is replaced as a whole or stays as it was.
class ConfigFile : public QDialog
{
    Q_OBJECT

public:
    enum Mode : int { ReadWrite = 0, ReadOnly = 1, WriteOnly = 2 };

    explicit ConfigFile(QWidget *parent = nullptr);
    ~ConfigFile() override;

    /// Whether the preference was read or written; a failed write ends that.
    bool isValid() const { return valid; }
    /// Whether updates are looked for. False until the preference is known.
    bool isAuto() const { return automaticUpdates; }

    /// Reads config.txt; where there is none that can be read, asks the user and returns at once.
    void readFile();
    /// Takes the preference from the file that is open, and emits parsed(). A file that does not
    /// name it changes nothing.
    void parseFile();
    /// Opens config.txt. False also for what is no plain file and, to be read, for one that is far
    /// larger than any that was written here.
    bool openFile(Mode mode);
    /// Writes what the dialog shows into the file that is open; with that in place, takes it over,
    /// emits parsed() and closes the dialog. False, with the former file in place, otherwise.
    bool writeData();

public slots:
    /// Saves for the first time.
    void writeFile();
    /// Saves after editing.
    void rewriteFile();
    /// Shows the dialog to change the preference.
    void editFile();

signals:
    /// The preference is known.
    void parsed();

protected:
    void showEvent(QShowEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void showFor(void (ConfigFile::*save)());
    void save(const QString &titleOfFailure, const QString &failure);

    std::unique_ptr<Ui::ConfigFile> ui;
    std::unique_ptr<QFileDevice> configFile;
    bool valid = false;
    bool automaticUpdates = false;
};
