#include "simulator/simulation.h"

#include "simulator/pages.h"
#include "simulator/textfile.h"

#include <poll.h>

#include <cstdlib>
#include <sstream>

namespace simulator
{
namespace
{
std::string runtimeDirectory()
{
    const char *directory = std::getenv("XDG_RUNTIME_DIR");
    return directory ? directory : "";
}

std::string modeName(Charger::Mode mode)
{
    switch (mode) {
    case Charger::Mode::PowerOn:
        return "power-on";
    case Charger::Mode::Bootloader:
        return "bootloader";
    case Charger::Mode::Left:
        break;
    }
    return "left";
}

bool loadPage(const std::string &file, FlashMemory *flash, std::string *error)
{
    const std::optional<std::string> text = readTextFile(file);
    if (!text) {
        *error = file + ": cannot be read";
        return false;
    }
    std::string reason;
    if (flash->load(*text, &reason))
        return true;
    *error = file + ": " + reason;
    return false;
}

bool loadNamedPage(const std::string &name, FlashMemory *flash, std::string *error)
{
    const std::string *text = findNamedPage(name);
    if (!text) {
        *error = "hardware is one of " + namedPageNames();
        return false;
    }
    return flash->load(*text, error);
}

bool saveTo(const std::string &file, const std::string &text, std::string *error)
{
    if (writeTextFile(file, text))
        return true;
    *error = file + ": cannot be written";
    return false;
}
} // namespace

Simulation::Simulation(const Options &options) : options(options), charger(&log), line(&charger)
{
    for (const Fault &fault : options.faults)
        charger.addFault(fault);
}

bool Simulation::start(std::string *error)
{
    if (!options.log.empty()) {
        logFile.open(options.log, std::ios::trunc);
        if (!logFile) {
            *error = options.log + ": cannot be written";
            return false;
        }
        log = FrameLog(&logFile);
    }
    if (!options.page.empty() && !loadPage(options.page, &charger.flash, error))
        return false;
    if (!options.hardware.empty() && !loadNamedPage(options.hardware, &charger.flash, error))
        return false;
    if (options.powerOn)
        charger.setMode(Charger::Mode::PowerOn);
    followedMode = charger.mode();
    if (!options.control.empty()) {
        const auto handler = [this](const std::string &command) { return control(command); };
        controlSocket = ControlSocket::listenAt(options.control, handler, error);
        if (!controlSocket)
            return false;
    }
    return plug(error);
}

std::string Simulation::portPath() const
{
    return port ? port->path() : std::string();
}

void Simulation::run(int quitDescriptor)
{
    while (!ending) {
        std::vector<pollfd> waiting{{quitDescriptor, POLLIN, 0}};
        if (port) {
            const short sending = port->hasUnsent() ? POLLOUT : 0;
            waiting.push_back({port->descriptor(), static_cast<short>(POLLIN | sending), 0});
            if (port->clientWatch() >= 0)
                waiting.push_back({port->clientWatch(), POLLIN, 0});
        }
        if (controlSocket) {
            for (const int descriptor : controlSocket->descriptors())
                waiting.push_back({descriptor, POLLIN, 0});
        }
        ::poll(waiting.data(), waiting.size(), timeout());
        if (waiting[0].revents != 0)
            return;
        if (reenterAt && Line::Clock::now() >= *reenterAt)
            charger.setMode(Charger::Mode::Bootloader);
        servePort();
        if (controlSocket)
            controlSocket->serve();
        followMode();
    }
}

bool Simulation::saveAll(std::string *error) const
{
    return (options.save.empty() || saveTo(options.save, charger.flash.save(), error)) &&
           (options.saveEeprom.empty() || saveTo(options.saveEeprom, charger.eeprom.save(), error));
}

std::string Simulation::control(const std::string &command)
{
    const std::size_t blank = command.find(' ');
    const std::string verb = command.substr(0, blank);
    const std::string value = blank == std::string::npos ? "" : command.substr(blank + 1);

    std::string error;
    std::string told;
    if (verb == "fault") {
        if (const std::optional<Fault> fault = parseFault(value, &error))
            charger.addFault(*fault);
    } else if (verb == "page") {
        loadPage(value, &charger.flash, &error);
    } else if (verb == "hardware") {
        loadNamedPage(value, &charger.flash, &error);
    } else if (verb == "save") {
        saveTo(value, charger.flash.save(), &error);
    } else if (verb == "save-eeprom") {
        saveTo(value, charger.eeprom.save(), &error);
    } else if (!value.empty()) {
        error = "\"" + verb + "\" is no command with a value";
    } else if (verb == "clear") {
        charger.clearFaults();
    } else if (verb == "state") {
        told = stateText();
    } else if (verb == "enter") {
        charger.setMode(Charger::Mode::Bootloader);
    } else if (verb == "leave") {
        charger.setMode(Charger::Mode::Left);
    } else if (verb == "power-on") {
        charger.setMode(Charger::Mode::PowerOn);
    } else if (verb == "unplug") {
        unplug();
    } else if (verb == "plug") {
        if (!port)
            plug(&error);
    } else if (verb == "quit") {
        ending = true;
    } else {
        error = "there is no command \"" + verb + "\"";
    }
    return told + (error.empty() ? "ok\n" : "error: " + error + '\n');
}

bool Simulation::plug(std::string *error)
{
    port = PtyPort::open(error);
    if (!port)
        return false;
    announcement = std::make_unique<Announcement>(runtimeDirectory(), port->bareName());
    loggedBaud = 0;
    log.note("plugged in");
    return true;
}

void Simulation::unplug()
{
    if (!port)
        return;
    announcement.reset();
    port.reset();
    line.clientGone();
    log.note("unplugged");
}

void Simulation::servePort()
{
    if (!port)
        return;
    if (port->takeClientGone()) {
        // What the last client wrote before it closed the port is still on its way; but with a new
        // client there already, bytes that wait are the new one's.
        if (!port->hasClient())
            receive();
        line.clientGone();
        port->discardUnread();
    }
    receive();
    port->write(line.advance(Line::Clock::now(), byteTime()));
    if (line.takeUnplugged()) {
        unplug();
        ending = !controlSocket;
    }
}

void Simulation::receive()
{
    const Bytes bytes = port->read();
    if (bytes.empty())
        return;
    if (port->baud() != loggedBaud) {
        loggedBaud = port->baud();
        log.note(std::to_string(loggedBaud) + " baud");
    }
    line.fromClient(bytes, Line::Clock::now());
}

void Simulation::followMode()
{
    if (charger.mode() == followedMode)
        return;
    followedMode = charger.mode();
    reenterAt.reset();
    if (followedMode == Charger::Mode::Left && options.reenterSeconds) {
        const auto wait = std::chrono::duration<double>(*options.reenterSeconds);
        reenterAt = Line::Clock::now() + std::chrono::duration_cast<Line::Clock::duration>(wait);
    }
}

int Simulation::timeout() const
{
    std::optional<Line::Clock::time_point> due;
    if (port)
        due = line.nextDue(byteTime());
    if (reenterAt && (!due || *reenterAt < *due))
        due = reenterAt;
    if (!due)
        return -1;
    const auto wait = *due - Line::Clock::now();
    if (wait <= wait.zero())
        return 0;
    return static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(wait).count());
}

Line::Clock::duration Simulation::byteTime() const
{
    return options.pace && port ? port->byteTime() : std::chrono::nanoseconds(0);
}

std::string Simulation::stateText() const
{
    std::ostringstream text;
    text << "port " << (port ? port->path() : "unplugged") << '\n';
    text << "mode " << modeName(charger.mode()) << '\n';
    text << "commands " << charger.commandCount() << '\n';
    for (const std::string &fault : charger.pendingFaults())
        text << "fault " << fault << '\n';
    return text.str();
}

} // namespace simulator
