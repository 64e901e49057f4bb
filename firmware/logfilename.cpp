#include "firmware/logfilename.h"

#include <QLocale>

namespace FirmwareTool
{

QString logFileName(const QDateTime &moment)
{
    const QLocale english = QLocale::c();
    return QStringLiteral("outputlog-") +
           english.toString(moment.date(), QStringLiteral("ddd-MMMM-d-yyyy--")) +
           english.toString(moment.time(), QStringLiteral("h-m-s-ap")) + QStringLiteral(".txt");
}

} // namespace FirmwareTool
