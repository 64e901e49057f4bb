#include "IntelHexFile/hexfile.h"

#include <cstdio>
#include <ctime>
#include <vector>

/// Loads the HEX file named by its argument and tells the milliseconds of processor time.
int main(int argc, char *argv[])
{
    if (argc != 2)
        return 2;
    std::FILE *file = std::fopen(argv[1], "r");
    if (!file)
        return 1;
    std::vector<unsigned char> flash(IntelHexFile::flashImageSize);
    std::vector<unsigned char> eeprom(IntelHexFile::eepromImageSize);
    char eepromSeen = 0;
    std::uint32_t eepromTop = 0;
    const std::clock_t start = std::clock();
    const std::uint32_t top =
        IntelHexFile::loadhexfile(flash.data(), eeprom.data(), file, &eepromSeen, &eepromTop, 0, 0);
    const double milliseconds = 1000.0 * static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    std::fclose(file);
    std::printf("%.3f ms, top %x\n", milliseconds, top);
    return top == IntelHexFile::flashImageSize ? 0 : 1;
}
