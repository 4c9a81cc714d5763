// All slaves of one line: an honest memory whose answers meet with faults that the input chooses.
#ifndef KVT_TESTS_FUZZ_SUPPORT_HOSTILE_SLAVE_H
#define KVT_TESTS_FUZZ_SUPPORT_HOSTILE_SLAVE_H

#include "tests/fuzz/support/fuzz_input.h"
#include "tests/fuzz/support/issued_values.h"
#include "tests/fuzz/support/slave_line.h"

#include <QSet>

/// What happens to one request or its reply.
enum class SlaveFault {
    RequestLost,  ///< nothing is carried out, nothing comes
    ReplyLost,    ///< carried out, nothing comes
    Late,         ///< the reply comes some time later, at most two seconds
    HeadOnly,     ///< the first bytes of the reply
    TailOnly,     ///< the last bytes of it
    Twice,        ///< the reply, and again some time later
    NoiseAhead,   ///< any bytes, some time before the reply
    NoiseBehind,  ///< any bytes, some time behind it
    NoiseWithin,  ///< any bytes in the middle of it
    Foreign,      ///< another station answers instead, with a value of its own
    ForeignAhead, ///< another station answers first
    Refused,      ///< refused, not carried out
    RefusedAhead, ///< refused, and carried out, the reply some time behind
    WrongDigits,  ///< other digits than the memory's
    NoDigits,     ///< a data digit is any byte
    NoEnd,        ///< any byte instead of the last one
    Babble,       ///< the reply, and bytes without end for up to four seconds
    LineBreak     ///< the line is down for up to two seconds
};
constexpr int SLAVE_FAULTS = 18;

/// Reads its faults from the input, one byte for each run of undisturbed requests.
class HostileSlave
{
public:
    /// `turnaround_ns` of stations 1 and 2, which are all there are. `input` and `line` outlive it.
    HostileSlave(FuzzInput *input, SlaveLine *line, const qint64 (&turnaround_ns)[2])
        : input_(*input), line_(*line), turnaround_ns_{turnaround_ns[0], turnaround_ns[1]}
    {
    }

    /// A request has arrived, which is the host's number `request`; repeated attempts at it have
    /// the same number. With `mayFail` it can meet with a fault.
    void receive(const QByteArray &frame, qint64 now_ns, int request, bool mayFail);

    /// How long the line is down from now on; 0 for a line that stays up. Asked once.
    qint64 takeBreak_ns();

    /// Whether a fault has happened since this was asked last.
    bool takeFaultHappened();

    /// Whether the bytes of this write were carried out.
    bool hasCarriedOut(const QByteArray &writeFrame) const { return writes_.contains(writeFrame); }

    /// The request that a tag's value was given to; -1 when it was given to none.
    int requestOf(kvt::Area area, int raw) const { return values_.requestOf(area, raw); }

    /// Whether the digits of a reply to this request were changed on the way. No digit says so.
    bool hasDamagedDigits(int request) const { return damaged_.contains(request); }

private:
    bool isFaultDue();
    QByteArray carryOut(const QByteArray &frame, int request);
    void commit(SlaveFault fault, const QByteArray &frame, qint64 now_ns, int request);
    void commitToReply(SlaveFault fault, const QByteArray &reply, qint64 now_ns, int request);
    void damage(SlaveFault fault, QByteArray reply, qint64 start_ns, int request);
    QByteArray disguised(int request);
    void babble(qint64 start_ns);
    QByteArray foreignReply(const QByteArray &reply);
    QByteArray noise();
    qint64 time_ns();
    qint64 start_ns(const QByteArray &frame, qint64 now_ns) const;

    FuzzInput &input_;
    SlaveLine &line_;
    const qint64 turnaround_ns_[2];
    IssuedValues values_;
    QSet<QByteArray> writes_;
    QSet<int> damaged_;
    int undisturbed_ = 0; // requests to come
    bool faultHappened_ = false;
    qint64 break_ns_ = 0;
};

#endif
