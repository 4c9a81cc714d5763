#include "bench/peers/masters.h"

#include "host/poller.h"
#include "host/serial_line.h"

#include <cstdio>
#include <future>

namespace kvt
{

namespace
{

class Reader final : public HostEvents
{
public:
    explicit Reader(Meter *meter) : meter_(meter) {}

    /// Waits for the end of the run. Returns false when a transaction failed.
    bool wait() { return ended_.get_future().get(); }

    void tagRead(int, const Reading &reading) override
    {
        if (!over_ && !meter_->transactionEnded(static_cast<int>(reading.raw)))
            end(true);
    }

    void attemptEnded(const Attempt &attempt) override
    {
        if (!over_ && !attempt.isSuccess())
            end(false);
    }

private:
    void end(bool good)
    {
        over_ = true;
        ended_.set_value(good);
    }

    Meter *meter_;
    std::promise<bool> ended_;
    bool over_ = false; // the host goes on until it is stopped
};

QVector<Tag> oneWord()
{
    Tag tag;
    tag.name = QStringLiteral("word");
    tag.area = Area::D;
    tag.address = QStringLiteral("32.0.0");
    tag.station = 1;
    tag.form = ValueType::U16;
    return {tag};
}

} // namespace

bool runHost(const MasterLine &line, Meter *meter)
{
    DriverLibrary library;
    QString error;
    if (!library.load(QStringLiteral(KVT_LIBRARY), &error)) {
        std::fprintf(stderr, "host: %s\n", qPrintable(error));
        return false;
    }
    SerialSettings serial;
    serial.path = line.device;
    serial.baud = line.baud;
    serial.pacing = line.paced ? Pacing::Paced : Pacing::Unpaced;
    Reader reader(meter);
    Poller poller(library.api(), PollerSettings(), oneWord(), std::make_unique<SerialLine>(serial),
                  &reader);
    poller.start();
    const bool good = reader.wait();
    poller.stop();
    if (!good)
        std::fprintf(stderr, "host: a transaction failed\n");
    return good;
}

} // namespace kvt
