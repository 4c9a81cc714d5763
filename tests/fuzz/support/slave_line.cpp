#include "tests/fuzz/support/slave_line.h"

#include <algorithm>

void SlaveLine::send(qint64 start_ns, const QByteArray &bytes)
{
    if (bytes.isEmpty())
        return;
    const auto place =
        std::upper_bound(waiting_.begin(), waiting_.end(), start_ns,
                         [](qint64 time_ns, const Bytes &next) { return time_ns < next.at_ns; });
    waiting_.insert(place, {start_ns, bytes});
}

qint64 SlaveLine::next_ns() const
{
    const qint64 leaves_ns = waiting_.empty() ? kvt::NEVER : waiting_.front().at_ns;
    const qint64 arrives_ns = arriving_.empty() ? kvt::NEVER : arriving_.front().at_ns;
    return std::min(leaves_ns, arrives_ns);
}

QByteArray SlaveLine::step(qint64 now_ns)
{
    while (!waiting_.empty() && waiting_.front().at_ns <= now_ns) {
        leave(waiting_.front());
        waiting_.pop_front();
    }
    QByteArray piece;
    if (!arriving_.empty() && arriving_.front().at_ns <= now_ns) {
        piece = arriving_.front().bytes;
        arriving_.pop_front();
    }
    return piece;
}

void SlaveLine::leave(const Bytes &sending)
{
    const qint64 start_ns = std::max(sending.at_ns, free_ns_);
    const int size = sending.bytes.size();
    for (int at = 0; at < size; at += kind_.pieceLength) {
        const int end = std::min(at + kind_.pieceLength, size);
        arriving_.push_back({start_ns + end * kind_.characterTime_ns + kind_.hold_ns,
                             sending.bytes.mid(at, end - at)});
    }
    free_ns_ = start_ns + size * kind_.characterTime_ns;
}

void SlaveLine::clear()
{
    waiting_.clear();
    arriving_.clear();
    free_ns_ = 0;
}
