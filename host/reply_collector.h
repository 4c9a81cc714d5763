// Collects the bytes of one reply and knows when it is complete.
#ifndef KVT_HOST_REPLY_COLLECTOR_H
#define KVT_HOST_REPLY_COLLECTOR_H

#include "host/request.h"

namespace kvt
{

/// Longest reply that is collected when any length is accepted, in bytes.
constexpr int LONGEST_REPLY = 4096;

/// Collects one reply at a time. No clock; one thread.
class ReplyCollector
{
public:
    ReplyCollector();

    /// Begins anew for the reply to `request`. In remote mode CR is a byte like any other.
    void start(const Request &request, bool remoteMode);

    /// Takes from the front of `bytes` what repeats the request: some two-wire interfaces hand the
    /// host its own bytes back. Nothing else begins like a request, so that no reply is lost by
    /// it. Returns how many were taken; 0 once another byte has come.
    int skipEcho(const char *bytes, int count);

    /// Takes bytes until the reply is complete: at its expected length or, on the ASCII link, at
    /// CR. Returns how many were taken.
    int add(const char *bytes, int count);

    /// Takes bytes behind the expected length up to the CR that ends them, but no more than the
    /// longest reply. Returns true when that CR is among them.
    bool addOverrun(const char *bytes, int count);

    bool isComplete() const { return complete_; }
    const QByteArray &bytes() const { return bytes_; }

private:
    QByteArray request_;
    QByteArray bytes_;
    int echoed_ = 0;
    int lengthLimit_ = 0;
    bool remoteMode_ = false;
    bool complete_ = false;
};

} // namespace kvt

#endif
