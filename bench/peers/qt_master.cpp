#include "bench/peers/masters.h"

#include <QCoreApplication>
#include <QModbusDataUnit>
#include <QModbusReply>
#include <QModbusRtuSerialMaster>
#include <QSerialPort>
#include <QVariant>

#include <cstdio>

namespace kvt
{

namespace
{

// Each answer asks for the next one, within the event loop.
class Reader
{
public:
    explicit Reader(Meter *meter) : meter_(meter) {}

    bool run(const MasterLine &line)
    {
        bus_.setConnectionParameter(QModbusDevice::SerialPortNameParameter, line.device);
        bus_.setConnectionParameter(QModbusDevice::SerialBaudRateParameter, line.baud);
        bus_.setConnectionParameter(QModbusDevice::SerialParityParameter, QSerialPort::NoParity);
        return bus_.connectDevice() && ask() && QCoreApplication::exec() == 0;
    }

    QString error() const { return bus_.errorString(); }

private:
    bool ask()
    {
        QModbusReply *const reply = bus_.sendReadRequest(word_, 1);
        if (reply == nullptr)
            return false;
        QObject::connect(reply, &QModbusReply::finished, reply, [this, reply] { take(reply); });
        return true;
    }

    void take(QModbusReply *reply)
    {
        reply->deleteLater();
        const bool good = reply->error() == QModbusDevice::NoError;
        if (good && !meter_->transactionEnded(reply->result().value(0)))
            QCoreApplication::exit(0);
        else if (!good || !ask())
            QCoreApplication::exit(1);
    }

    Meter *meter_;
    QModbusRtuSerialMaster bus_;
    const QModbusDataUnit word_{QModbusDataUnit::HoldingRegisters, 0, 1};
};

} // namespace

bool runQt(const MasterLine &line, Meter *meter)
{
    Reader reader(meter);
    if (reader.run(line))
        return true;
    std::fprintf(stderr, "qt: %s\n", qPrintable(reader.error()));
    return false;
}

} // namespace kvt
