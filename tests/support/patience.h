#pragma once

#include <QTest>

/// Milliseconds that a test gives a child process, which takes its time on a loaded computer. What
/// comes early is not waited for.
constexpr int PATIENCE = 30000;

// Tests that wait for children are as patient as that wherever they try.
#undef QTRY_VERIFY
#define QTRY_VERIFY(expression) QTRY_VERIFY_WITH_TIMEOUT(expression, PATIENCE)
#undef QTRY_COMPARE
#define QTRY_COMPARE(expression, expected) QTRY_COMPARE_WITH_TIMEOUT(expression, expected, PATIENCE)
