#pragma once

#include "app/mainwindow.h"
#include "support/messageboxanswers.h"
#include "support/patience.h"
#include "support/simulatorprocess.h"

#include <QAction>
#include <QComboBox>
#include <QDialog>
#include <QJsonObject>
#include <QLabel>
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
    /// The end of a write that was begun otherwise, "OK" included; true when no dialog is left.
    bool endSaving();
    bool disconnectCharger();

    QListWidget *list() const;
    ProfileName *row(int index) const;
    /// Titles of the rows as they are shown, change marks included.
    QStringList titles() const;
    void select(int index);

    /// The widget of this name in the dialog in front, or else in the window.
    template <class Widget = QWidget> Widget *widget(const char *name) const
    {
        return front()->findChild<Widget *>(QLatin1String(name));
    }
    /// What is in front of the user: a dialog, or else the window.
    QWidget *front() const;
    /// Clicks the button of this object name, or else of this text.
    void press(const char *button) const;
    /// The field in sight that is called so, or null.
    QWidget *field(const char *name) const;
    /// What a field shows: a number or a text; "on" or "off" of a check box.
    QString shown(const char *field) const;
    /// Puts a text into the place of all that a field holds, and stays in the field.
    void type(const char *field, const QString &text) const;
    /// The same, and goes on to the next field.
    void enter(const char *field, const QString &text) const;
    /// The choice of the charger's model.
    QComboBox *model() const { return window->findChild<QComboBox *>("hardwareDropdown"); }
    /// Picks a model from its list; returns when all questions about it are answered.
    void choose(const QString &modelName) const;
    /// Turns a check box over.
    void tick(const char *field) const;

    /// A file of the working directory; empty where there is none.
    static QByteArray workingFile(const QString &name);
    /// What the reader that shares nothing with the suite makes of the charger's page: JSON, or the
    /// text of its complaint.
    QString pageOnCharger();
    /// The profiles on the charger that count, in their order there.
    QList<QJsonObject> profilesOnCharger();
    /// The element of this name on the charger that counts.
    QJsonObject onCharger(const char *element);

    MessageBoxAnswers boxes;

private:
    bool waitForDialogsToEnd();
    /// Keys go where the user's would.
    void bringToFront() const;

    QTemporaryDir home;
    std::unique_ptr<SimulatorProcess> simulated;
    std::unique_ptr<MainWindow> window;
};
