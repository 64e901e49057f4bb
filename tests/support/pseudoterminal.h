#pragma once

#include <QByteArray>
#include <QString>

/// One end of a serial line for a test: a pseudo-terminal whose other end is listed as a port while
/// it is announced.
class PseudoTerminal
{
public:
    PseudoTerminal();
    ~PseudoTerminal();
    PseudoTerminal(const PseudoTerminal &) = delete;
    PseudoTerminal &operator=(const PseudoTerminal &) = delete;

    /// The bare name of the other end, such as "pts/3".
    QString portName() const { return name; }
    /// Writes the announcement below $XDG_RUNTIME_DIR, as a simulator does that starts.
    void announce();
    /// Takes it back, as a simulator does that ends.
    void withdraw();
    /// What has been sent from the other end and not been read yet; does not wait.
    QByteArray receive();

private:
    QString announcement() const;

    int descriptor = -1;
    QString name;
};
