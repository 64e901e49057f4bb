#pragma once

#include <QStringList>

/// The names ("pts/3") of the simulated chargers that run now, each once, by rising number.
///
/// A simulator announces itself by a file in $XDG_RUNTIME_DIR/velantor-ports that holds its name in
/// one line. The folder is open to any program of the user, so everything in it that is not a small
/// plain file with the name of an existing pseudo-terminal is passed over.
QStringList announcedPorts();
