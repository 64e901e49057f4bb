// What arrives on the serial line while the uploader runs.
//
// An input: the conversation, flags, the portion in which bytes arrive, and pieces with a length
// byte each: what the charger answers to one command after the other.

#include "IntelHexFile/bootloader.h"
#include "IntelHexFile/frame.h"
#include "fuzz/scriptedline.h"
#include "fuzz/target.h"
#include "simulator/frame.h"

#include <array>

namespace
{
using namespace IntelHexFile;
using simulator::Bytes;

constexpr int port = 0;
constexpr std::uint32_t longestReply = 526;

enum Conversation { Receive, Send, Version, Read, ReadEeprom, Identify, Verify, Change, count };

enum Flag : std::uint8_t {
    Framed = 1, ///< the pieces are payloads, else they are what arrives
    HalfDuplex = 2,
};

bootloader_t shippedRecord()
{
    bootloader_t record;
    record.flashEnd = 0xA000;
    record.bootloaderEnd = 0x0C00;
    record.pageSize = 0x0800;
    record.rowSize = 0x0100;
    record.wordSize = 4;
    record.addressSize = 2;
    record.verifyRowSize = 0x10;
    record.flashFiller = 0xFFFFFF00;
    record.flashFillerSize = 4;
    record.eepromStart = 0x1000;
    record.eepromEnd = 0x2000;
    record.eepromMaxSize = 0x1000;
    record.eepromWordSize = 2;
    record.eepromAddressSize = 2;
    record.eepromRowSize = 0x20;
    record.eepromVerifyRowSize = 0x10;
    record.eepromFiller = 0xFFFF;
    record.eepromFillerSize = 2;
    return record;
}

std::vector<Bytes> pieces(fuzz::Input *input)
{
    std::vector<Bytes> result;
    while (!input->isEmpty()) {
        const std::size_t size = input->byte();
        result.push_back(input->bytes(size));
    }
    return result;
}

/// One frame behind as many bytes of echo as the first piece has; another implementation built it.
void receiveFrame(const Bytes &echo, const Bytes &payload, std::size_t portion)
{
    const Bytes frame = simulator::encodeFrame(payload);
    scriptedline::Script script;
    script.arrived = echo;
    script.arrived.insert(script.arrived.end(), frame.begin(), frame.end());
    script.portion = portion;
    scriptedline::play(script);

    std::array<unsigned char, replySize> buffer;
    std::uint32_t length = 0;
    const int result =
        receivecmd(READ_CMD, buffer.data(), &length, port, static_cast<std::uint32_t>(echo.size()));
    const bool fits = !payload.empty() && frame.size() <= longestReply;
    fuzz::require(result == (fits ? 1 : 0), "a good frame is received");
    fuzz::require(!fits || (length == payload.size() &&
                            std::equal(payload.begin(), payload.end(), buffer.begin())),
                  "a frame arrives as it was sent");
}

void receive(const scriptedline::Script &script, std::uint32_t echoCount)
{
    scriptedline::play(script);
    std::array<unsigned char, replySize> buffer;
    std::uint32_t length = 0;
    if (receivecmd(READ_CMD, buffer.data(), &length, port, echoCount) == 1)
        fuzz::require(length < replySize, "a reply fits its buffer");
}

void send(const Bytes &command, const Bytes &data)
{
    scriptedline::play({});
    const std::uint32_t count = sendcmd(command.data(), static_cast<std::uint32_t>(command.size()),
                                        data.data(), static_cast<std::uint32_t>(data.size()), port);
    Bytes payload = command;
    payload.insert(payload.end(), data.begin(), data.end());
    const Bytes sent = scriptedline::sent();
    fuzz::require(count == sent.size(), "the size of a frame is told");
    fuzz::require(count == 0 || sent == simulator::encodeFrame(payload), "a frame is well formed");
}

void verify(const bootloader_t &record, bool isEeprom)
{
    constexpr std::uint32_t from = 0x100;
    constexpr std::uint32_t to = 0x140;
    // One row beyond the end, as promised.
    std::vector<unsigned char> image(to + record.verifyRowSize);
    for (std::size_t i = 0; i < image.size(); ++i)
        image[i] = static_cast<unsigned char>(i);
    const int result =
        bootloader_verify(from, to, image.data(), port, record.verifyRowSize, isEeprom, record);
    fuzz::require(result >= verified && result <= different, "the result is a known one");
}

void change(const bootloader_t &record)
{
    std::array<unsigned char, replySize> buffer;
    const std::vector<unsigned char> row(record.rowSize, 0x55);
    bootloader_eraserange(buffer.data(), port, record, 0xA000, 0x9C00);
    bootloader_writerow(row.data(), buffer.data(), record, 0x9C00, port, false);
    bootloader_writerow(row.data(), buffer.data(), record, 0x0010, port, true);
    bootloader_sendverifyOK(buffer.data(), port, record);
    bootloader_eraseall(buffer.data(), port, record);
    bootloader_sendreset(port);
}

void talk(Conversation conversation, const scriptedline::Script &script)
{
    bootloader_t record = shippedRecord();
    record.halfDuplex = script.echo ? 1 : 0;
    std::array<unsigned char, replySize> buffer;
    scriptedline::play(script);
    switch (conversation) {
    case Version:
        fuzz::require(bootloader_getversion(buffer.data(), port, record) < replySize,
                      "a reply fits its buffer");
        return;
    case Read:
    case ReadEeprom: {
        const std::uint32_t length =
            bootloader_read(buffer.data(), 64, 0x9C00, 0, port, conversation == ReadEeprom, record);
        fuzz::require(length == readFailed || length < replySize, "a reply fits its buffer");
        return;
    }
    case Identify: {
        const std::uint32_t result = bootloader_identify(buffer.data(), port);
        fuzz::require(result == identified || result == identifyTimeout,
                      "a charger is found or not");
        return;
    }
    case Verify:
        verify(record, false);
        verify(record, true);
        return;
    case Change:
        change(record);
        return;
    default:
        return;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    fuzz::Input input(data, size);
    const auto conversation = static_cast<Conversation>(input.byte() % count);
    const unsigned flags = input.byte();
    scriptedline::Script script;
    script.echo = (flags & HalfDuplex) != 0;
    script.portion = std::size_t{1} + input.byte();

    if (conversation == Receive && !(flags & Framed)) {
        const std::uint32_t echoCount = input.byte();
        script.arrived = input.rest();
        receive(script, echoCount);
        return 0;
    }
    const std::vector<Bytes> parts = pieces(&input);
    const auto part = [&parts](std::size_t i) { return i < parts.size() ? parts[i] : Bytes(); };
    if (conversation == Receive) {
        // Two pieces in one payload: it can be longer than the buffer.
        Bytes payload = part(1);
        const Bytes more = part(2);
        payload.insert(payload.end(), more.begin(), more.end());
        receiveFrame(part(0), payload, script.portion);
    } else if (conversation == Send) {
        send(part(0), part(1));
    } else {
        for (const Bytes &piece : parts)
            script.reactions.push_back(flags & Framed ? simulator::encodeFrame(piece) : piece);
        talk(conversation, script);
    }
    return 0;
}
