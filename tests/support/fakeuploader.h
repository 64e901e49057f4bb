#pragma once

#include "support/workingdirectory.h"

#include <QStringList>

/// A vexa.bin in a fresh working directory that notes its arguments and does what the test says.
class FakeUploader
{
public:
    /// Lines of a shell for one run each.
    static const QString SUCCEED;
    static const QString FAIL;
    static const QString CRASH;
    /// Waits for release(), or for the end of the test's folder, then ends well.
    static const QString WAIT;
    /// Waits for release(), then fails.
    static const QString WAIT_AND_FAIL;
    /// Prints what say() gives it until release(), or the end of the test's folder.
    static const QString SPEAK;

    FakeUploader();

    /// What the next runs do, one after the other; runs beyond the plan succeed.
    void plan(const QStringList &runs);
    /// Lets the runs go on that wait or will wait.
    void release();
    /// Gives the run that speaks something to print, at once and whole.
    void say(const QByteArray &text);
    /// Takes the program away, so that no run can start.
    void remove();
    /// The arguments of each run so far, parted by blanks.
    QStringList runs() const;

    WorkingDirectory folder;
};
