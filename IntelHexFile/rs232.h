#pragma once

/// The serial ports, by small numbers. The uploader is linked with ports that exist; in the
/// application no port can be opened through this layer.
namespace IntelHexFile
{
/// Ports are numbered from 0 up to, not including, this.
constexpr int comportCount = 23;

/// Opens the device at path for 8 data bits at one of the POSIX baud rates from 50 to 1,000,000.
/// Returns 0, or 1 (with a complaint) on failure.
int OpenComport(int port, int baud, const char *path);

/// Takes what has arrived, at most size bytes, without waiting. Returns the number of bytes: 0 also
/// when the port is gone.
int PollComport(int port, unsigned char *buffer, int size);

/// Returns 0, or 1 when the byte could not be written.
int SendByte(int port, unsigned char byte);

/// Hands size bytes over in one write. Returns the number of bytes taken, -1 on failure.
int SendBuf(int port, const unsigned char *buffer, int size);

/// Closes the port. The line keeps its settings.
void CloseComport(int port);

/// 1 when the line says "clear to send"; 0 otherwise, and for a line that has no such signal.
int IsCTSEnabled(int port);

/// Sends a text without its NUL.
void cprintf(int port, const char *text);

} // namespace IntelHexFile
