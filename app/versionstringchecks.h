#pragma once

/// Part of the self-check at start-up: says "Running VersionString tests" on standard output and
/// ends the process with an assertion where the order of versions is not what it should be, since
/// a wrong order would choose a wrong bundle.
void runVersionStringChecks();
