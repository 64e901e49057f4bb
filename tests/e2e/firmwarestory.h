#pragma once

#include "suitestory.h"

#include <QByteArray>
#include <QLabel>
#include <QMainWindow>
#include <QPointer>
#include <QProgressBar>
#include <QString>

/// The firmware tool over the window of a story: what the user does in it, and what is then to be
/// seen there, on the charger and in the logs.
class FirmwareStory
{
public:
    explicit FirmwareStory(SuiteStory *story) : story(story) {}

    /// The bundle that the suite brings along: an image that fills the firmware's whole region.
    static QString embeddedBundle() { return QStringLiteral("v1.039.velantor"); }
    /// A bundle with both device tables and this text as its firmware.
    static QByteArray bundleWith(const QByteArray &hexText);
    /// The same with an image of a few rows, so that flashing takes no time; told apart by the
    /// seed.
    static QByteArray smallBundle(int seed);
    /// The bytes of that image, which begins at the firmware's first address.
    static QByteArray smallImage(int seed);
    /// The bytes of Intel HEX text from one word address up to another, blank where it says none.
    static QByteArray imageOf(const QByteArray &hexText, int from, int to);
    /// Puts a file beside the working directory, where no scan finds it, and returns its path.
    QString save(const QString &name, const QByteArray &content) const;

    /// "Update Velantor Firmware..." in the menu; true with the tool on screen.
    bool openTool();
    QMainWindow *tool() const { return window; }
    template <class Widget> Widget *widget(const char *name) const
    {
        return window->findChild<Widget *>(QLatin1String(name));
    }

    /// Types the path of the bundle.
    void choose(const QString &bundle) const;
    /// Picks the port of the story's charger; false where the tool does not list it.
    bool choosePort() const;
    void overwriteProfiles(bool overwrite) const;
    /// A click on "Update Firmware".
    void begin() const;
    /// True when the attempt has ended, well or not, and all boxes about it are closed.
    bool waitForEnd(int milliseconds = PATIENCE) const;
    /// All of this with a bundle; true where it went well: check marks on all rows, both buttons
    /// enabled, no box.
    bool flash(const QString &bundle, int milliseconds = PATIENCE) const;

    /// The check marks of the four rows: "√", "!" or "-" each.
    QString marks() const;
    bool isSubmitEnabled() const { return widget<QPushButton>("submitButton")->isEnabled(); }
    bool isCloseEnabled() const { return widget<QPushButton>("closeButton")->isEnabled(); }

    /// The log of the last attempt.
    static QByteArray log();
    static QString logName();

private:
    SuiteStory *story;
    QPointer<QMainWindow> window;
};
