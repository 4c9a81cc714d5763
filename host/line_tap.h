// Sees what passes on the line.
#ifndef KVT_HOST_LINE_TAP_H
#define KVT_HOST_LINE_TAP_H

#include "host/exchange_observer.h"

namespace kvt
{

/// Called by an exchange engine, on its thread, from within its own calls: to record, never to
/// take part.
class LineTap
{
public:
    virtual ~LineTap() = default;

    /// A request has been handed to the line.
    virtual void bytesSent(const QByteArray &bytes) = 0;

    /// Bytes have arrived, whatever becomes of them.
    virtual void bytesReceived(const char *bytes, int count) = 0;

    /// Bytes were thrown away.
    virtual void bytesDropped(DroppedBytes kind, int count) = 0;

    /// An attempt has ended; the driver has judged it already.
    virtual void attemptEnded(const Attempt &attempt) = 0;

    /// The line can be used, or no longer.
    virtual void lineChanged(bool up) = 0;
};

} // namespace kvt

#endif
