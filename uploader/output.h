#pragma once

/// Standard output as an interface. A program that watches this one through a pipe looks at each
/// chunk once, for the phase that it believes to be running: all that a phase prints has to arrive
/// as one chunk, and the next phase's texts in another.
namespace Uploader
{
/// Collects what is printed until it is handed over; also on a terminal or into a file. To be
/// called before the first text.
void bufferOutput();

/// Ends a phase: hands over its texts and gives a watcher the time to take them out of the pipe
/// before there is more. One that does not read holds the run up for a second at most.
void endPhase();

/// Shows a percentage with what was printed before it, and goes back to where it began.
void showProgress(const char *action, int percentage);

} // namespace Uploader
