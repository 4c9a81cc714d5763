// Bytes on their way from a slave to the host, on a virtual clock.
#ifndef KVT_TESTS_FUZZ_SUPPORT_SLAVE_LINE_H
#define KVT_TESTS_FUZZ_SUPPORT_SLAVE_LINE_H

#include "host/host_time.h"

#include <QByteArray>

#include <deque>

/// How bytes travel. Times are nanoseconds.
struct LineKind {
    qint64 characterTime_ns = 0; ///< 0: all bytes of a piece come at once
    bool paced = false;          ///< the host is told to count on that pace
    qint64 hold_ns = 0;          ///< how late the interface hands each piece over
    int pieceLength = 1;         ///< bytes that are handed over together
};

/// One thing after the other leaves the slave, whatever it is asked for.
class SlaveLine
{
public:
    explicit SlaveLine(const LineKind &kind) : kind_(kind) {}

    /// Has bytes leave at `start_ns`, or as soon as the line is free behind that.
    void send(qint64 start_ns, const QByteArray &bytes);

    /// When something happens next; NEVER when nothing is on its way.
    qint64 next_ns() const;

    /// Goes on to `now_ns`. Returns the piece that arrives then; empty when none does.
    QByteArray step(qint64 now_ns);

    /// What is on its way is lost.
    void clear();

private:
    struct Bytes {
        qint64 at_ns;
        QByteArray bytes;
    };

    void leave(const Bytes &sending);

    LineKind kind_;
    std::deque<Bytes> waiting_;  // by the time at which each is to leave
    std::deque<Bytes> arriving_; // by the time at which each is there
    qint64 free_ns_ = 0;
};

#endif
