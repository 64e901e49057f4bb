#include "uploader/options.h"
#include "uploader/output.h"
#include "uploader/run.h"

#include <cstdio>

int main(int argc, char *argv[])
{
    Uploader::bufferOutput();
    std::printf("Serial Uploader by Tolk Technologies (2011)\nVersion %s\n", "1.2");
    const Uploader::ParsedOptions parsed = Uploader::parseOptions(argc, argv);
    if (!parsed.options) {
        std::fputs(parsed.complaint.c_str(), stdout);
        return 1;
    }
    return Uploader::run(*parsed.options);
}
