#include "IntelHexFile/optiontext.h"

#include <cstdio>

namespace IntelHexFile
{
const char *killdashes(const char *text)
{
    while (*text == ' ' || *text == '-')
        ++text;
    return text;
}

std::size_t getfilename(const char *text, std::string *out)
{
    *out = killdashes(text);
    if (out->empty())
        std::printf("No file name specified!");
    return out->size();
}

} // namespace IntelHexFile
