#include "apps/kvt/demo_witness.h"

#include "apps/kvt/console.h"

namespace kvt
{

bool DemoWitness::expectWrite(int tag, int value)
{
    if (write_ == Write::Open)
        return false;
    writtenTag_ = tag;
    writtenValue_ = value;
    write_ = Write::Open;
    return true;
}

void DemoWitness::stationSwitched(int station, bool on)
{
    printError(QStringLiteral("station %1 is switched %2")
                   .arg(station)
                   .arg(on ? QStringLiteral("on") : QStringLiteral("off")));
}

void DemoWitness::writeChanged(const WriteReport &report)
{
    if (!report.isFinal() || report.reason == WriteReason::HostStopped)
        return; // the end of the demonstration catches a write on its way now and then
    const Tag &tag = tags_.at(report.tag);
    const auto inMemory = runner_->withPlc([&tag](const SimulatedPlc &plc) {
        return plc.memory().value(tag.station, tag.area, tag.address);
    });
    if (report.state == WriteState::Acknowledged && inMemory == writtenValue_) {
        ++writesConfirmed_;
        write_ = Write::Confirmed;
    } else {
        ++writesFailed_;
        write_ = Write::None;
        printError(
            QStringLiteral("write to %1: %2, %3")
                .arg(tag.name, writeStateName(report.state), writeReasonText(report.reason)));
    }
}

void DemoWitness::onceReadEnded(int, int, bool) {}

void DemoWitness::lineChanged(bool up, const QString &reason)
{
    if (!up)
        printError(QStringLiteral("the line is down: %1").arg(reason));
}

void DemoWitness::tagRead(int tag, const Reading &reading)
{
    ++valuesRead_;
    if (write_ == Write::Confirmed && tag == writtenTag_ &&
        static_cast<int>(reading.raw) == writtenValue_) {
        ++writesReadBack_;
        write_ = Write::None;
    }
}

} // namespace kvt
