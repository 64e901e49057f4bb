// The port layer of the application, which talks to chargers through the uploader alone: whoever
// opens a port here has made a mistake.

#include "IntelHexFile/rs232.h"

#include "IntelHexFile/assertion.h"

namespace IntelHexFile
{
int OpenComport(int, int, const char *)
{
    assertionFailed("false", "../IntelHexFile/rs232.cpp", 52);
}

int PollComport(int, unsigned char *, int)
{
    return 0;
}

int SendByte(int, unsigned char)
{
    return 1;
}

int SendBuf(int, const unsigned char *, int)
{
    return -1;
}

void CloseComport(int) {}

int IsCTSEnabled(int)
{
    return 0;
}

void cprintf(int, const char *) {}

} // namespace IntelHexFile
