// Writes that take more than one request: of several words, or of a bit that is read first.
#ifndef KVT_HOST_PARTED_WRITES_H
#define KVT_HOST_PARTED_WRITES_H

#include "host/write_tracker.h"

#include <QVector>

#include <optional>
#include <vector>

namespace kvt
{

/// One of them, while it goes on.
struct PartedWrite {
    int id = 0;         ///< as returned when the write was requested
    int tag = 0;        ///< index of its tag
    QVector<int> cells; ///< in the order in which they are written
    QByteArray bytes;   ///< of these cells, two each
    int done = 0;       ///< parts that were acknowledged

    /// The bytes of the part that comes next, which there must be.
    QByteArray nextBytes() const { return bytes.mid(2 * done, 2); }
};

/// Keeps writes of several parts, of which only one at a time is in the driver's queue, and makes
/// one write of them for the application. All calls from the polling thread.
class PartedWrites
{
public:
    bool isEmpty() const { return entries_.empty(); }

    void begin(const PartedWrite &write);

    /// The one with this id, null when there is none. Valid until the next call that is not const.
    const PartedWrite *find(int id) const;

    /// Changes what one of them is to write.
    void setBytes(int id, const QByteArray &bytes) { entryOf(id)->write.bytes = bytes; }

    /// A part has come to another state, but has not been acknowledged. Returns what is to be told
    /// of the whole: of Queued and Sent the first alone; a part that failed ends it, as
    /// PartlyWritten if others were acknowledged before.
    std::optional<WriteReport> changed(const WriteReport &part);

    /// A part was acknowledged; `part` says what that is worth, and `isProved` whether it can still
    /// turn out to be another's. Returns the final report of the whole once that was the last.
    std::optional<WriteReport> acknowledged(const WriteReport &part, bool isProved);

    /// Nothing waits for a proof any more. With a reason: it was not proved, and the whole can only
    /// end as Uncertain.
    void decided(WriteReason doubt = WriteReason::None);

private:
    struct Entry {
        PartedWrite write;
        WriteState told = WriteState::Refused; // Queued or Sent; before that neither
        WriteReason doubt = WriteReason::None;
        bool isUnproven = false;
        int timesSent = 0;
    };

    std::vector<Entry>::iterator entryOf(int id);
    static bool isNews(const Entry &entry, WriteState state);

    std::vector<Entry> entries_;
};

} // namespace kvt

#endif
