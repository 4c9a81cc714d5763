// Notes when the reply to the latest request began.
#ifndef KVT_RIG_REPLY_BEGIN_H
#define KVT_RIG_REPLY_BEGIN_H

#include "host/line_tap.h"
#include "rig/virtual_line.h"

namespace kvt
{

/// A tap of the host's line. One thread.
class ReplyBegin final : public LineTap
{
public:
    /// The line, which outlives its use here.
    void watch(const VirtualLine *line) { line_ = line; }

    /// When the first byte came behind the latest request; NEVER when none has.
    qint64 at_ns() const { return at_ns_; }

    void bytesSent(const QByteArray &) override { at_ns_ = NEVER; }
    void bytesReceived(const char *, int) override
    {
        if (at_ns_ == NEVER && line_ != nullptr)
            at_ns_ = line_->now_ns();
    }
    void bytesDropped(DroppedBytes, int) override {}
    void attemptEnded(const Attempt &) override {}
    void lineChanged(bool) override {}

private:
    const VirtualLine *line_ = nullptr;
    qint64 at_ns_ = NEVER;
};

} // namespace kvt

#endif
