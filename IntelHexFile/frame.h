#pragma once

#include <cstdint>

/// The frames of the charger's bootloader: STX STX payload checksum ETX. Every byte of payload and
/// checksum that is one of the three control bytes has the escape before it; the unescaped payload
/// and the checksum add up to 0 modulo 256.
namespace IntelHexFile
{
constexpr unsigned char STX = 0x55;
constexpr unsigned char ETX = 0x04;
constexpr unsigned char escape = 0x05;

/// Size of every buffer that takes a reply.
constexpr std::uint32_t replySize = 527;

/// Frames cmdLen command bytes and dataLen data bytes and sends them. Returns the number of bytes
/// written; 0 when they do not fit one frame or the port refuses them.
std::uint32_t sendcmd(const unsigned char *cmd, std::uint32_t cmdLen, const unsigned char *data,
                      std::uint32_t dataLen, int port);

/// Waits, at most one second of processor time, for the reply to the command that begins with
/// cmd[0]. The first echoCount bytes to arrive are passed over: on a half-duplex line the sent
/// frame comes back. Returns 1 with the unescaped payload at the beginning of buffer (replySize
/// bytes) and its size in *length, or 0 with a complaint on standard output.
int receivecmd(const unsigned char *cmd, unsigned char *buffer, std::uint32_t *length, int port,
               std::uint32_t echoCount);

} // namespace IntelHexFile
