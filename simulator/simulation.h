#pragma once

#include "simulator/announcement.h"
#include "simulator/charger.h"
#include "simulator/controlsocket.h"
#include "simulator/line.h"
#include "simulator/options.h"
#include "simulator/ptyport.h"

#include <fstream>
#include <memory>
#include <string>

namespace simulator
{
/// One charger with its cable, from start to end: joins port, line, charger and control socket, and
/// waits for them without using the processor.
class Simulation
{
public:
    explicit Simulation(const Options &options);

    /// Opens everything. False, with the reason in *error, where something cannot be had.
    bool start(std::string *error);
    /// Path of the port, such as "/dev/pts/3".
    std::string portPath() const;

    /// Serves clients until quitDescriptor turns readable, the cable is pulled for good or a
    /// command says so.
    void run(int quitDescriptor);

    /// Saves the memories as the options ask. False, with the file in *error, where that fails.
    bool saveAll(std::string *error) const;

    /// Carries out one command of the control socket and returns its answer.
    std::string control(const std::string &command);

private:
    bool plug(std::string *error);
    void unplug();
    void servePort();
    void receive();
    void followMode();
    /// Milliseconds until something is due, -1 for nothing.
    int timeout() const;
    Line::Clock::duration byteTime() const;
    std::string stateText() const;

    Options options;
    std::ofstream logFile;
    FrameLog log;
    Charger charger;
    Line line;
    // The announcement goes first and comes last: a name that is told is a port that is there.
    std::unique_ptr<PtyPort> port;
    std::unique_ptr<Announcement> announcement;
    std::unique_ptr<ControlSocket> controlSocket;
    std::optional<Line::Clock::time_point> reenterAt;
    Charger::Mode followedMode = Charger::Mode::Bootloader;
    unsigned loggedBaud = 0;
    bool ending = false;
};

} // namespace simulator
