// What a disturbed line makes of the PLC's answers.
#ifndef KVT_RIG_LINE_FAULT_H
#define KVT_RIG_LINE_FAULT_H

#include "simulator/simulated_plc.h"

namespace kvt
{

/// Bytes on their way to the host. Times are nanoseconds.
struct LineBytes {
    qint64 start_ns = 0;
    QByteArray bytes;
    bool inOnePiece = false; ///< all are handed over at `start_ns`; otherwise each as the line's
                             ///< speed has it
};

/// What happens on the line after one request.
struct LineReaction {
    QVector<LineBytes> bytes; ///< in any order; what overlaps arrives by turns
    qint64 lineBreak_ns = 0;  ///< if not 0, the line goes down now for so long
};

/// Stands between the simulated PLC and a virtual line. It sees each request with the answer that
/// the PLC gives to it, and decides what the host gets to hear. One thread.
class LineFault
{
public:
    virtual ~LineFault() = default;

    /// Returns what of `request` reaches the PLC; empty when nothing does.
    virtual QByteArray onItsWay(const QByteArray &request, qint64) { return request; }

    /// The last byte of `request` has left at `now_ns`, and `honest` is the PLC's answer.
    /// Nothing of what is returned begins before `now_ns`.
    virtual LineReaction disturb(const QByteArray &request, qint64 now_ns,
                                 const PlcReaction &honest) = 0;

    /// The line is up again after a break: what was on its way is gone.
    virtual void lineOpened() {}
};

/// What a sound line makes of an answer: the same.
LineReaction undisturbed(const PlcReaction &honest);

} // namespace kvt

#endif
