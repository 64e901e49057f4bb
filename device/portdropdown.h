#pragma once

#include <QList>

#include <qextserialenumerator.h>

class QComboBox;

/// The computer's serial ports as the entries of a drop-down list, which follows the cables that
/// are plugged in and pulled.
class PortDropdown
{
public:
    /// What becomes of the computer's own serial ports, which have no charger behind them.
    enum class BuiltInPorts { Listed, LeftOut };

    /// list must outlive this object.
    PortDropdown(QComboBox *list, BuiltInPorts builtInPorts);

    /// Puts the ports of now in front of what is listed. The last port stands first: it is the
    /// cable that was plugged in most lately.
    void insertPorts();
    /// Lists all ports anew and chooses the new one; does nothing when it is listed already.
    void add(const QextPortInfo &port);
    void remove(const QList<QextPortInfo> &ports);

private:
    QComboBox *list;
    BuiltInPorts builtInPorts;
};
