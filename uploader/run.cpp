#include "uploader/run.h"

#include "uploader/programming.h"
#include "uploader/reading.h"
#include "uploader/session.h"
#include "uploader/trials.h"

namespace Uploader
{
namespace
{
/// Erase, load, write, verify, read, reset: each when it was asked for.
End program(const Options &options, const IntelHexFile::bootloader_t &bldr)
{
    if (const End end = erase(options, bldr))
        return end;
    if (options.writes() || options.verify) {
        Image image(bldr);
        if (const End end = load(options.inputFile, bldr, &image))
            return end;
        if (options.writes()) {
            if (const End end = write(options, bldr, image))
                return end;
        }
        if (options.verify) {
            if (const End end = verify(bldr, image))
                return end;
        }
    }
    if (options.reads()) {
        if (const End end = read(options, bldr))
            return end;
    }
    return options.reset ? reset() : End();
}

End runSession(const Options &options)
{
    Session session(options);
    if (const End end = session.begin())
        return end;
    if (options.testPasses)
        return testThroughput(*options.testPasses, session.record());
    return program(options, session.record());
}

End runAny(const Options &options)
{
    if (!options.probedPort.empty())
        return probePorts(options.probedPort);
    if (options.waitForBoot)
        return showBootSequence(options);
    if (!options.captureFile.empty())
        return capture(options);
    return runSession(options);
}

} // namespace

int run(const Options &options)
{
    return runAny(options).value_or(0);
}

} // namespace Uploader
