// Finds request frames in the bytes that arrive.
#ifndef KVT_SIMULATOR_FRAME_FINDER_H
#define KVT_SIMULATOR_FRAME_FINDER_H

#include <QByteArray>

#include <optional>

namespace kvt
{

/// Collects bytes until they make a frame. Text frames run from ENQ to CR: what stands before an
/// ENQ is dropped, and a second ENQ begins anew. Envelopes begin with their own length modulo 256
/// and end with the sum of what is before; a pause begins a new one. Not thread-safe.
class FrameFinder
{
public:
    enum class Mode { Text, Envelope };

    /// `gap_ns` is the pause that ends an unfinished envelope.
    FrameFinder(Mode mode, qint64 gap_ns) : mode_(mode), gap_ns_(gap_ns) {}

    /// Takes the byte that arrived at `time_ns`. Returns the frame that it completes, if it does.
    std::optional<QByteArray> take(char byte, qint64 time_ns);

    /// Drops an unfinished frame.
    void clear();

    /// Returns the number of bytes that were part of no frame.
    qint64 droppedBytes() const { return dropped_; }

private:
    std::optional<QByteArray> takeText(char byte);
    std::optional<QByteArray> takeEnvelope(char byte, qint64 time_ns);
    QByteArray takeAll();

    Mode mode_;
    qint64 gap_ns_;
    QByteArray buffer_;
    qint64 lastByte_ns_ = 0;
    qint64 dropped_ = 0;
};

} // namespace kvt

#endif
