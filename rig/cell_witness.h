// Judges what a host shows and says against what the PLC has really answered and carried out.
#ifndef KVT_RIG_CELL_WITNESS_H
#define KVT_RIG_CELL_WITNESS_H

#include "rig/witness.h"

#include <QMap>
#include <QSet>

namespace kvt
{

/// What came out of one run. Times are nanoseconds.
struct Findings {
    qint64 values = 0;           ///< shown as good
    qint64 wrong = 0;            ///< of these, not from the PLC's answer to their own request
    qint64 wrongLongest_ns = 0;  ///< for so long such a one was shown as good
    qint64 bound_ns = 0;         ///< the bound, as it was for wrong values or, without any, is
    qint64 beyondBound = 0;      ///< those shown for longer than the bound
    qint64 beyondOfSeveral = 0;  ///< the same where faults followed each other
    qint64 recovery_ns = 0;      ///< longest time from a single fault to the next good value
    qint64 recoveryAfter_ns = 0; ///< the same behind the last of a row of faults; -1: never
    qint64 writes = 0;           ///< requested
    qint64 writesLost = 0;       ///< sent, and not carried out
    qint64 writesDoubled = 0;    ///< carried out more than once
    qint64 writesUnsettled = 0;  ///< without exactly one final state
    qint64 writesBelied = 0;     ///< acknowledged, and not carried out just once where it counts
    QMap<QString, int> verdicts; ///< on struck attempts
    QSet<QString> qualities;     ///< of struck tags until they were good again
    QSet<QString> told;          ///< events
};

/// Takes part in a run as its receiver of events. One thread.
class CellWitness final : public Witness
{
public:
    /// `isStruck` tells the tags that faults concern.
    CellWitness(const QVector<Tag> &tags, const std::function<bool(const Tag &)> &isStruck);

    /// A fault was committed, or `goesOn`; `single`: it is not one of a row.
    void struck(qint64 now_ns, bool single, bool goesOn);

    /// From now on faults strike one at a time, or one before the host has recovered from another;
    /// `mixed`: not all of them are of the cell's kind, and what is said counts for nothing.
    void expect(bool several, bool mixed)
    {
        several_ = several;
        mixed_ = mixed;
    }

    /// A write with this id was requested.
    void requested(int id);

    /// The run has ended.
    void finish();

    const Findings &findings() const { return findings_; }
    qint64 openWrites() const { return openWrites_; }
    bool isRecovered() const { return struckAt_ns_ < 0; }

    void stationSwitched(int station, bool on) override;
    void writeChanged(const WriteReport &report) override;
    void onceReadEnded(int id, int tag, bool good) override;
    void lineChanged(bool up, const QString &reason) override;
    void tagRead(int tag, const Reading &reading) override;
    void stationDoubtful(int station) override;
    void outOfStep() override;
    void attemptEnded(const Attempt &attempt) override;

private:
    struct Write {
        int finals = 0;
        int carriedOut = 0;
        bool isCommand = false;
        WriteReport last;
    };

    void recovered(qint64 at_ns);
    void tell(const QString &text);
    void noteQualities();
    void writeEnded(const Attempt &attempt);

    QVector<Tag> tags_;
    QVector<bool> isStruck_;
    Findings findings_;
    QHash<int, Write> writes_;
    qint64 openWrites_ = 0;
    qint64 struckAt_ns_ = -1;
    bool single_ = true;
    bool several_ = false;
    bool mixed_ = false;
    int unseenStrikes_ = 0;
};

} // namespace kvt

#endif
