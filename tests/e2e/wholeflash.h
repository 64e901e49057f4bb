#pragma once

#include <QProcess>

class SuiteStory;

/// A program that takes all the processor time that one core has, until this object goes.
class BusyProgram
{
public:
    BusyProgram();
    ~BusyProgram();

private:
    QProcess process;
};

/// Opens the suite and flashes the bundle that it brings along onto the charger of the story, which
/// begins with a page of profiles; tests what is then in the charger's memory, in the log, on
/// standard output, in the window and in the working directory. A failure is one of the test
/// function that is running.
void flashWholeImage(SuiteStory &story, bool overwriteProfiles, int milliseconds);
