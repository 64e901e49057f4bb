#pragma once

#include <QByteArray>

#include <functional>

/// What a piece of code left behind that ran in a child process.
struct ChildResult {
    bool aborted = false;
    QByteArray standardOutput;
    QByteArray standardError;
};

/// Runs code in a fork of this process, so that it may die. The child ends without the test
/// framework: whatever it says on its standard channels is the code's own.
ChildResult runInChild(const std::function<void()> &code);
