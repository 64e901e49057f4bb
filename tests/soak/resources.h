#pragma once

#include <QtGlobal>

/// What this process holds of the system.
struct Resources {
    qint64 heap = 0;     ///< bytes allocated and not freed
    qint64 resident = 0; ///< bytes of real memory, freed ones that are kept for later included
    int descriptors = 0; ///< open files
    int children = 0;    ///< child processes, dead ones that nobody waited for included

    static Resources now();
};
