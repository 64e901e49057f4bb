#pragma once

#include <functional>

/// What a function returns, 0 to 255, in a process of its own, which may change what belongs to a
/// process.
int inChild(const std::function<int()> &function);

/// Gives up the rights of root for good, where this process has them. False: it could not.
bool becomeOrdinaryUser();
