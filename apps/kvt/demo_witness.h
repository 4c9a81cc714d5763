// Watches the demonstration: do values really go both ways?
#ifndef KVT_APPS_KVT_DEMO_WITNESS_H
#define KVT_APPS_KVT_DEMO_WITNESS_H

#include "apps/kvt/tag_results.h"
#include "host/host_events.h"
#include "simulator/plc_runner.h"
#include "tags/tag.h"

#include <atomic>

namespace kvt
{

/// Counts readings, asks the simulated PLC whether an acknowledged value has arrived in its memory,
/// and looks for that value among the readings that follow. One write at a time.
class DemoWitness : public HostEvents
{
public:
    DemoWitness(const QVector<Tag> &tags, PlcRunner *runner)
        : tags_(tags), runner_(runner), results_(tags)
    {
    }

    /// To be called before a write is requested. False while the latest one has not ended.
    bool expectWrite(int tag, int value);

    /// How the latest reading of each tag ended.
    QVector<TagResult> results() const { return results_.results(); }

    qint64 valuesRead() const { return valuesRead_; }
    qint64 writesConfirmed() const { return writesConfirmed_; }
    qint64 writesReadBack() const { return writesReadBack_; }
    qint64 writesFailed() const { return writesFailed_; }

    void stationSwitched(int station, bool on) override;
    void writeChanged(const WriteReport &report) override;
    void onceReadEnded(int id, int tag, bool good) override;
    void lineChanged(bool up, const QString &reason) override;
    void tagRead(int tag, const Reading &reading) override;
    void attemptEnded(const Attempt &attempt) override { results_.attemptEnded(attempt); }

private:
    enum class Write { None, Open, Confirmed };

    QVector<Tag> tags_;
    PlcRunner *runner_;
    TagResults results_;
    std::atomic<Write> write_{Write::None};
    std::atomic<int> writtenTag_{-1};
    std::atomic<int> writtenValue_{0};
    std::atomic<qint64> valuesRead_{0};
    std::atomic<qint64> writesConfirmed_{0};
    std::atomic<qint64> writesReadBack_{0};
    std::atomic<qint64> writesFailed_{0};
};

} // namespace kvt

#endif
