// The latest reading of every cell of the PLC, and how far it can be trusted.
#ifndef KVT_HOST_VALUE_TABLE_H
#define KVT_HOST_VALUE_TABLE_H

#include "host/host_time.h"

#include <QString>
#include <QVector>

namespace kvt
{

enum class Quality {
    NeverRead, ///< there is no reading
    Good,      ///< the latest reading, younger than its limit
    Doubtful,  ///< the latest reading, from a reply that does not look like one of its station
    Suspect,   ///< the latest reading, from a reply that may have answered another request
    Stale,     ///< a good or doubtful reading that has grown old
    Torn,      ///< of several words that did not hold still; the value is the one before
    Failed     ///< the latest attempt to read it has failed; the value is the one before
};

/// Returns "never read", "good" and so on.
QString qualityName(Quality quality);

/// What good replies say of a cell, or of a tag.
struct Reading {
    quint64 raw = 0;       ///< the value's bits; 0 for a string, which HostSession::values has
    qint64 readAt_ns = 0;  ///< when the reply was complete, of several the oldest
    bool doubtful = false; ///< the reply does not look like one of its station
    qint64 reply = 0;      ///< of a cell: the number of the reply since the start, from 1
};

/// The latest value of a tag.
struct TagValue {
    quint64 raw = 0;           ///< the value's bits; 0 for a string
    QVector<quint16> elements; ///< of a string, at rising addresses; empty for all else
    Quality quality = Quality::NeverRead;
    bool isKnown = false;      ///< there is a value, good or not
    qint64 readAt_ns = 0;      ///< when the oldest reading that it is made of was complete
    qint64 newestAt_ns = 0;    ///< the same of the newest
    bool writePending = false; ///< a write to one of its cells has not ended
    bool provable = true;      ///< false: it was in doubt, which no later proof ends
    qint64 provedUntil_ns = 0; ///< replies up to then are proved, but for those in doubt

    /// True when it is proved to be the tag's own.
    bool isProved() const { return provable && newestAt_ns <= provedUntil_ns; }
};

/// The cells by number. Does no locking of its own.
class ValueTable
{
public:
    explicit ValueTable(int cells);

    int count() const { return cells_.size(); }

    /// A good reply brought this reading. Returns false, and changes nothing, while a write to the
    /// cell is pending: the request may have gone out before the write took effect.
    bool read(int cell, const Reading &reading);

    /// Readings after `provedUntil_ns` may be another cell's. Returns the cells that have one and
    /// are Suspect from now on.
    QVector<int> withdraw(qint64 provedUntil_ns);

    /// Number of writes to the cell so far, pending ones included.
    quint32 writesTo(int cell) const { return cells_.at(cell).writes; }

    /// An attempt to read the cell has failed for good. Its value stays.
    void readFailed(int cell);

    /// A write to the cell has been requested, or has ended. Several may be pending.
    void writeRequested(int cell);
    void writeEnded(int cell);

    /// The value at `now_ns` of a tag that is the cell's bits; good and doubtful readings older
    /// than `staleAfter_ns` are Stale. Whether a write to the tag is pending is not in it.
    TagValue value(int cell, qint64 now_ns, qint64 staleAfter_ns) const;

    /// True while a write to the cell has not ended.
    bool isWritePending(int cell) const { return cells_.at(cell).pendingWrites > 0; }

private:
    struct Cell {
        quint16 raw = 0;
        Quality quality = Quality::NeverRead;
        bool provable = true;
        qint64 readAt_ns = 0;
        int pendingWrites = 0;
        quint32 writes = 0;
    };

    QVector<Cell> cells_;
};

} // namespace kvt

#endif
