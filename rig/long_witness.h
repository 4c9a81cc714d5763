// Keeps the books of a long run, in memory that does not grow with it.
#ifndef KVT_RIG_LONG_WITNESS_H
#define KVT_RIG_LONG_WITNESS_H

#include "rig/witness.h"

#include <array>
#include <functional>

namespace kvt
{

/// Counts since the start of the run.
struct LongCounts {
    qint64 values = 0;   ///< shown as good
    qint64 doubtful = 0; ///< shown as doubtful
    qint64 writes = 0;
    qint64 writesBelied = 0;    ///< acknowledged, and not carried out just once where it counts
    qint64 writesUnsettled = 0; ///< ended more than once, or unknown
    std::array<qint64, WRITE_STATES> writeEnds = {}; ///< by WriteState
    qint64 onceReads = 0;                            ///< ended
    qint64 stationsOff = 0;
    qint64 outOfStep = 0;
};

/// One thread.
class LongWitness final : public Witness
{
public:
    explicit LongWitness(const QVector<Tag> &tags);

    void struck(qint64 now_ns);
    void requested(int id);

    /// Has `action` run once as soon as no request is under way, ahead of the next.
    void betweenExchanges(const std::function<void()> &action) { betweenExchanges_ = action; }

    /// The host has ended: what it showed is gone, and every write must have its end. Returns the
    /// number of those that have none.
    int hostEnded();

    const LongCounts &counts() const { return counts_; }
    const WrongValues &wrong() const { return wrong_; }
    int openWrites() const { return writes_.size(); }

    void stationSwitched(int station, bool on) override;
    void writeChanged(const WriteReport &report) override;
    void onceReadEnded(int id, int tag, bool good) override;
    void tagRead(int tag, const Reading &reading) override;
    void outOfStep() override;
    void attemptEnded(const Attempt &attempt) override;

private:
    struct Write {
        int carriedOut = 0;
        bool isCommand = false;
    };

    LongCounts counts_;
    QHash<int, Write> writes_; // that have not ended
    std::function<void()> betweenExchanges_;
    qint64 struckAt_ns_ = 0;
    qint64 struckBefore_ns_ = 0;
};

} // namespace kvt

#endif
