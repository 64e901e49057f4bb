#pragma once

#include "simulator/faults.h"
#include "simulator/frame.h"
#include "simulator/framelog.h"
#include "simulator/memory.h"

namespace simulator
{
/// The charger's side of the line: takes the client's bytes one by one and answers. Owns no port
/// and no clock.
class Charger
{
public:
    enum class Mode {
        PowerOn,    ///< waits for the greeting 55 55 55, deaf to frames
        Bootloader, ///< takes commands
        Left,       ///< the firmware runs: bytes are echoed by the cable, nobody listens
    };

    /// What one received byte leads to. The echo comes before the reply on the line.
    struct Reaction {
        bool echo = true;
        Bytes reply;
        double delay = 0; ///< seconds before the reply begins
        bool unplug = false;
    };

    static constexpr std::uint16_t defaultVersion = 0x0106; ///< major byte high

    /// The log must outlive the charger.
    explicit Charger(FrameLog *log) : log(log) {}

    Reaction receive(std::uint8_t byte);
    /// Forgets a half-received frame, as when the client has gone.
    void lineIdle();

    Mode mode() const { return currentMode; }
    void setMode(Mode mode);
    /// Commands received so far, those with a wrong checksum left out.
    unsigned long commandCount() const { return commands; }

    void addFault(const Fault &fault) { faults.add(fault); }
    /// Back to an honest charger; also brings a dead line back to life.
    void clearFaults();
    std::vector<std::string> pendingFaults() const { return faults.pending(); }

    FlashMemory flash;
    EepromMemory eeprom;

private:
    Reaction receiveGreeting(std::uint8_t byte);
    Reaction execute(const Frame &frame);
    /// The payload of the honest answer; empty where none is due.
    Bytes answer(Command command, const Bytes &payload, const Misbehaviour &how);
    Bytes answerOf(bool done, std::uint8_t command) const;

    FrameLog *log;
    FrameDecoder decoder;
    FaultPlan faults;
    Mode currentMode = Mode::Bootloader;
    unsigned long commands = 0;
    int greetingBytes = 0;
    bool lineDead = false;
};

} // namespace simulator
