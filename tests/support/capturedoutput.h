#pragma once

#include <QByteArray>

#include <functional>

/// What an action prints on standard output; the stream of the test itself stays untouched.
QByteArray printedBy(const std::function<void()> &action);

/// Runs an action in a child process that has to be ended by abort(), and returns what it wrote on
/// standard error; "survived" or "died otherwise" when it was not.
QByteArray lastWordsOf(const std::function<void()> &action);
