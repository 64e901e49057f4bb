#pragma once

#include <QDateTime>
#include <QString>

namespace FirmwareTool
{

/// The name, without a folder, of the log of a flashing attempt begun at that moment, such as
/// "outputlog-Sun-November-15-2026--8-5-9-am.txt". In English whatever the locale.
QString logFileName(const QDateTime &moment);

} // namespace FirmwareTool
