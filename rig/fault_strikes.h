// What single faults make of the answer to one request.
#ifndef KVT_RIG_FAULT_STRIKES_H
#define KVT_RIG_FAULT_STRIKES_H

#include "rig/line_fault.h"

#include <functional>

namespace kvt
{

/// An answer that a fault is committed at. Times are nanoseconds.
struct Struck {
    QByteArray request;
    QByteArray reply;            ///< the PLC's; empty when the request has not reached it
    QByteArray station;          ///< two digits
    qint64 now_ns = 0;           ///< the request's last byte
    qint64 start_ns = 0;         ///< when the reply begins
    qint64 timeout_ns = 0;       ///< the host's, for this reply
    qint64 gap_ns = 0;           ///< longest gap that the host allows within a reply
    qint64 characterTime_ns = 0; ///< 0: a line without a pace
    int turn = 0;                ///< how often the fault was committed before
    Random *random = nullptr;

    /// When the reply's last byte arrives.
    qint64 end_ns() const { return start_ns + reply.size() * characterTime_ns; }
};

/// Returns what the host gets to hear instead of the reply.
using Strike = std::function<LineReaction(const Struck &)>;

/// Where noise gets into an answer, and what is in it.
enum class NoisePlace { Early, Before, Within, Behind, Later, Alone };
enum class NoiseKind { Plain, WithCr, WithNak, Refusal };

Strike nothing();
Strike late(double timeouts);
Strike cutShort();
Strike doubled(double timeouts, qint64 more_ns);
Strike swollen(bool atEnd);
Strike foreign();
Strike foreignThenTrue(qint64 pause_ns);
Strike otherMaster();
Strike noise(NoisePlace place, NoiseKind kind);
Strike wrongDigits();
Strike changedDigit();
Strike lostEnd();
Strike wrongEnd();
Strike refused(bool byForeign);
Strike refusedThenReply(bool byForeign);
Strike halfRefusal(bool thenReply);
Strike stream(qint64 duration_ns);
Strike garbage(int bytes);
Strike byteByByte(double gaps);
Strike echoed(bool thenReply, bool damaged);
Strike lineDown(qint64 duration_ns);
Strike heldBack(qint64 latency_ns);
Strike inPieces(qint64 latency_ns);

} // namespace kvt

#endif
