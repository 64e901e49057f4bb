#include "fakefirmwareflasher.h"

#include "bundles/velantorbundle.h"
#include "firmware/firmwareflasher.h"

#include <QFile>
#include <QTextStream>

FakeFirmwareFlasher::ThrowsIn FakeFirmwareFlasher::place = ThrowsIn::StartFlashing;
int FakeFirmwareFlasher::code = 0;

namespace FirmwareTool
{

FirmwareFlasher::FirmwareFlasher(QObject *parent, Ui::VelantorFirmwareToolWindow *ui, Clock clock)
    : QObject(parent), ui(ui), clock(std::move(clock))
{
}

FirmwareFlasher::~FirmwareFlasher() = default;

std::chrono::milliseconds FirmwareFlasher::steadyTime()
{
    return {};
}

void FirmwareFlasher::setHexPath(const QString &path)
{
    hexPath = path;
}

void FirmwareFlasher::setComPort(const QString &)
{
    if (FakeFirmwareFlasher::place == FakeFirmwareFlasher::ThrowsIn::SetComPort)
        throw FakeFirmwareFlasher::code;
}

void FirmwareFlasher::startFlashing()
{
    throw FakeFirmwareFlasher::code;
}

// Not the business of this test, but named by the class's list of slots.
void FirmwareFlasher::readStream() {}
void FirmwareFlasher::checkAppFrozen() {}

} // namespace FirmwareTool
