#pragma once

/// What the flasher does in a test that links fakefirmwareflasher.cpp, which stands in front of the
/// library's code: it starts no uploader, and throws.
struct FakeFirmwareFlasher {
    enum class ThrowsIn { SetComPort, StartFlashing };

    static ThrowsIn place;
    static int code;
};
