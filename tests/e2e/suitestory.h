#pragma once

#include "app/mainwindow.h"
#include "support/messageboxanswers.h"
#include "support/patience.h"
#include "support/simulatorprocess.h"

#include <QAction>
#include <QDialog>
#include <QListWidget>
#include <QPushButton>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

class ProfileName;

/// One sitting of a user in front of the suite: a home, chargers on its ports, the real window with
/// everything that it embeds, and the boxes that come up. Verbs are what the user does; they return
/// when what they lead to has ended, or false when that does not happen.
class SuiteStory
{
public:
    SuiteStory();
    ~SuiteStory();
    SuiteStory(const SuiteStory &) = delete;
    SuiteStory &operator=(const SuiteStory &) = delete;

    /// Starts a simulated charger with these options.
    SimulatorProcess &plugIn(const QStringList &options);
    /// The charger that was started last.
    SimulatorProcess &charger() { return *simulated; }
    /// "bootloader" or "left".
    QString chargerMode();
    /// Ends all faults of the charger and plugs its cable in.
    void mend();
    void open();
    /// Takes the window away, as the end of the program does.
    void closeWindow() { window.reset(); }
    /// Puts a script in the place of the uploader, which it finds as "./uploader.bin".
    static void replaceUploader(const QByteArray &shell);
    static void bringUploaderBack();

    MainWindow *mainWindow() const { return window.get(); }
    HParser::Generator *generator() const { return window->getGenerator(); }
    QAction *action(const char *name) const;
    bool isConnected() const;
    /// The dialog that is in front of the window, or null.
    static QDialog *dialog();

    /// "Connect" in the tool bar; true with the dialog on screen.
    bool startConnecting();
    /// Picks the charger's port in the dialog that is open and presses its button, "Connect" or
    /// "Try Again"; true with the charger connected and no dialog left.
    bool pressConnect();
    /// startConnecting(), then pressConnect().
    bool connectCharger();
    /// "Read Data"; true when no dialog is left.
    bool readData();
    /// "Save Data", and "OK" in its dialog at the end; true when no dialog is left.
    bool saveData();
    bool disconnectCharger();

    QListWidget *list() const;
    ProfileName *row(int index) const;
    /// Titles of the rows as they are shown, change marks included.
    QStringList titles() const;
    void select(int index);

    /// A file of the working directory; empty where there is none.
    static QByteArray workingFile(const QString &name);
    /// What the reader that shares nothing with the suite makes of the charger's page: JSON, or the
    /// text of its complaint.
    QString pageOnCharger();

    MessageBoxAnswers boxes;

private:
    bool waitForDialogsToEnd();

    QTemporaryDir home;
    std::unique_ptr<SimulatorProcess> simulated;
    std::unique_ptr<MainWindow> window;
};
