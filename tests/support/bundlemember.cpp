#include "support/bundlemember.h"

QByteArray bundleMember(const QByteArray &name, const QByteArray &content)
{
    return "////// " + name + " //////\n" + content + "\\\\\\\\\\\\ END FILE \\\\\\\\\\\\\n";
}
