#pragma once

#include <QtGlobal>

namespace HParser
{

/// Ends the process where a demand on the schema is not met. Schemas are trusted data, so this is a
/// programming error. The words and places are fixed: reports of users are told apart by them.
inline void demand(bool holds, const char *condition, const char *file, int line)
{
    if (Q_UNLIKELY(!holds))
        qt_assert(condition, file, line);
}

} // namespace HParser
