#pragma once

#include "simulator/faults.h"

#include <optional>
#include <string>
#include <vector>

namespace simulator
{
/// What the command line asks for. Empty file names stand for options that were not given.
struct Options {
    bool help = false;
    std::string page;     ///< Intel HEX file to start from
    std::string hardware; ///< named page to start from
    bool pace = false;
    bool powerOn = false;
    bool withParent = false;
    std::string log;
    std::string save;
    std::string saveEeprom;
    std::string control; ///< path of the socket
    std::optional<double> reenterSeconds;
    std::vector<Fault> faults;
};

/// Reads the arguments behind the program's name. Nothing, with the reason in *error, for arguments
/// that make no sense.
std::optional<Options> parseOptions(const std::vector<std::string> &arguments, std::string *error);

/// The text of --help.
std::string usageText();

} // namespace simulator
