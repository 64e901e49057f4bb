#include "simulator/options.h"

#include "simulator/pages.h"

namespace simulator
{

std::optional<Options> parseOptions(const std::vector<std::string> &arguments, std::string *error)
{
    Options options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string &option = arguments[i];
        if (option == "--help" || option == "-h") {
            options.help = true;
        } else if (option == "--pace") {
            options.pace = true;
        } else if (option == "--power-on") {
            options.powerOn = true;
        } else if (option == "--with-parent") {
            options.withParent = true;
        } else if (option != "--page" && option != "--hardware" && option != "--log" &&
                   option != "--save" && option != "--save-eeprom" && option != "--control" &&
                   option != "--reenter" && option != "--fault") {
            *error = "there is no option \"" + option + "\"";
            return std::nullopt;
        } else if (i + 1 == arguments.size() || arguments[i + 1].empty()) {
            *error = option + " wants a value";
            return std::nullopt;
        } else {
            const std::string &value = arguments[++i];
            if (option == "--page")
                options.page = value;
            else if (option == "--hardware")
                options.hardware = value;
            else if (option == "--log")
                options.log = value;
            else if (option == "--save")
                options.save = value;
            else if (option == "--save-eeprom")
                options.saveEeprom = value;
            else if (option == "--control")
                options.control = value;
            else if (option == "--reenter") {
                double seconds = 0;
                if (!parseSeconds(value, &seconds)) {
                    *error = "--reenter wants a number of seconds";
                    return std::nullopt;
                }
                options.reenterSeconds = seconds;
            } else {
                const std::optional<Fault> fault = parseFault(value, error);
                if (!fault)
                    return std::nullopt;
                options.faults.push_back(*fault);
            }
        }
    }
    if (!options.hardware.empty() && !findNamedPage(options.hardware)) {
        *error = "--hardware is one of " + namedPageNames();
        return std::nullopt;
    }
    if (!options.page.empty() && !options.hardware.empty()) {
        *error = "--page and --hardware both tell what to start from";
        return std::nullopt;
    }
    return options;
}

std::string usageText()
{
    return "Usage: velantor-sim [options]\n"
           "A simulated charger in bootloader mode on a pseudo-terminal. The first line of its\n"
           "output is the port's path. While it runs, a file in $XDG_RUNTIME_DIR/velantor-ports\n"
           "announces the port. It ends on SIGTERM, SIGINT or SIGHUP, or when its cable is "
           "pulled.\n"
           "\n"
           "  --page FILE         start from an Intel HEX file; else the flash is blank\n"
           "  --hardware NAME     start from a page of its own: " +
           namedPageNames() +
           "\n"
           "  --pace              let bytes take their time on the wire, at the client's baud "
           "rate\n"
           "  --power-on          start switched off: answer the greeting 55 55 55 first\n"
           "  --reenter SECONDS   come back to the bootloader that long after a reset\n"
           "  --log FILE          write every frame to FILE, a line each\n"
           "  --save FILE         at the end write the flash to FILE as Intel HEX\n"
           "  --save-eeprom FILE  the same for the EEPROM\n"
           "  --control SOCKET    take commands on a Unix socket, see below\n"
           "  --fault FAULT       misbehave, see below; may be given more than once\n"
           "  --with-parent       end when the program that started this one ends\n"
           "  --help              print this text\n"
           "\n"
           "Faults are written NAME[=VALUE][@WHEN]:\n" +
           faultHelp() +
           "\n"
           "Commands on the socket, a line each; each is answered by a line \"ok\" or \"error: "
           "...\":\n"
           "  fault FAULT         add a fault\n"
           "  clear               an honest charger again\n"
           "  page FILE           blank the profile page, then take over the Intel HEX file\n"
           "  hardware NAME       the same with a page of its own\n"
           "  save FILE           write the flash to FILE\n"
           "  save-eeprom FILE    write the EEPROM to FILE\n"
           "  state               first tell port, mode, number of commands and pending faults\n"
           "  enter               enter the bootloader\n"
           "  leave               leave the bootloader, as after a reset\n"
           "  power-on            wait for the greeting\n"
           "  unplug              pull the cable; the program goes on\n"
           "  plug                plug it in again, on a port that may have another name\n"
           "  quit                end\n"
           "With --control a cable pulled by a fault does not end the program either.\n";
}

} // namespace simulator
