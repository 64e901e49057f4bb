#include "app/versionstringchecks.h"

#include "app/versionstring.h"

#include <QTextStream>

namespace
{

VersionString version(const char *text)
{
    return VersionString(QLatin1String(text));
}

void checkOrder()
{
    Q_ASSERT(version("1.2.3").equalTo(version("1.2.3")));
    Q_ASSERT(version("10").equalTo(version("10")));
    Q_ASSERT(version("1.2.0").lessThan(version("1.2.3")));
    Q_ASSERT(version("1.2.3").greaterThan(version("1.2.0")));
    Q_ASSERT(version("1.5.2").lessThan(version("1.5.2.5")));
    Q_ASSERT(version("1.5.2.5").greaterThan(version("1.5.2")));
    Q_ASSERT(version("1.1.2").lessThan(version("1.5.2.5")));
    Q_ASSERT(version("45").lessThan(version("66")));
}

void checkGrammar()
{
    Q_ASSERT(version("  1.2 ").equalTo(version("1.2")));
    Q_ASSERT(version("  1.2 ").toString() == QLatin1String("1.2"));
    for (const char *text : {"", "1.", ".1", "1..2", "v1.2", "1.2a"}) {
        Q_ASSERT(!version(text).isValid());
        Q_ASSERT(version(text).lessThan(version("0")));
    }
    Q_ASSERT(version("0").isValid());
    Q_ASSERT(version("007").isValid());
    Q_ASSERT(version("007").equalTo(version("7")));
}

} // namespace

void runVersionStringChecks()
{
    QTextStream(stdout) << "Running VersionString tests\n";
    checkOrder();
    checkGrammar();
}
