#pragma once

#include "IntelHexFile/bootloader.h"
#include "uploader/options.h"

#include <optional>
#include <string>

namespace Uploader
{
/// How a step ended: nothing when the run goes on, else the exit status with which it is over. A
/// step that ends a run has said why.
using End = std::optional<int>;

/// The one port of a run.
constexpr int portNumber = 0;

/// The way to a charger: its port is open as long as this object lives, first at the slow rate at
/// which the bootloader tells its version, then at the rate of its record.
class Session
{
public:
    explicit Session(const Options &options);
    ~Session();
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    /// Opens the port at the slow rate.
    End open();
    /// Finds the bootloader's version in the way that the options choose.
    End findVersion();
    /// Waits for a charger that is being powered on.
    End identify();
    /// Reads the version's record from the device table.
    End findRecord();
    /// Reopens the port at the rate of the record.
    End changeRate();

    /// All of these, in this order.
    End begin();

    const IntelHexFile::bootloader_t &record() const { return bldr; }

private:
    bool openAt(std::uint32_t baud) const;
    void setVersion(unsigned char major, unsigned char minor);
    std::string versionKey() const;

    const Options &options;
    IntelHexFile::bootloader_t bldr;
};

} // namespace Uploader
