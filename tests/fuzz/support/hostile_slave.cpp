#include "tests/fuzz/support/hostile_slave.h"

#include "tests/fuzz/support/promise.h"
#include "tests/fuzz/support/slave_plant.h"
#include "tests/fuzz/support/story.h"

#include <algorithm>
#include <utility>

namespace
{

constexpr char ACK = 0x06;
constexpr char NAK = 0x15;
constexpr char CR = 0x0D;
constexpr int DIGITS_AT = 3;
constexpr int OF_NO_REQUEST = -2;

int stationOf(const QByteArray &frame)
{
    return frame.mid(1, 2).toInt(nullptr, 16);
}

QByteArray refusalOf(const QByteArray &frame)
{
    return NAK + frame.mid(1, 2) + CR;
}

kvt::Area areaOfReply(const QByteArray &reply)
{
    return reply.size() == 6 ? kvt::Area::X : reply.size() == 8 ? kvt::Area::D : kvt::Area::C;
}

bool isDigit(char byte)
{
    return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'F');
}

bool hasDigit(const QByteArray &bytes)
{
    return std::any_of(bytes.cbegin(), bytes.cend(), isDigit);
}

// Whether bytes are a reply that nothing tells from `reply` but its digits.
bool looksLike(const QByteArray &bytes, const QByteArray &reply)
{
    return bytes.size() == reply.size() && bytes.startsWith(reply.left(DIGITS_AT)) &&
           bytes.endsWith(CR) && std::all_of(bytes.cbegin() + DIGITS_AT, bytes.cend() - 1, isDigit);
}

// Whether there is one among the bytes.
bool holdsReplyLike(const QByteArray &reply, const QByteArray &bytes)
{
    for (int at = 0; at + reply.size() <= bytes.size(); ++at)
        if (looksLike(bytes.mid(at, reply.size()), reply))
            return true;
    return false;
}

} // namespace

void HostileSlave::receive(const QByteArray &frame, qint64 now_ns, int request, bool mayFail)
{
    if (mayFail && isFaultDue()) {
        faultHappened_ = true;
        const int fault = input_.below(SLAVE_FAULTS);
        tell(now_ns, "fault", fault);
        commit(static_cast<SlaveFault>(fault), frame, now_ns, request);
        return;
    }
    line_.send(start_ns(frame, now_ns), carryOut(frame, request));
}

// A byte below 0x80 lets some requests pass, mostly few: faults are what an input is for. Any other
// is the next fault.
bool HostileSlave::isFaultDue()
{
    if (undisturbed_ == 0 && !input_.isEmpty()) {
        const int next = input_.byte();
        if (next >= 0x80)
            return true;
        undisturbed_ = next < 0x60 ? next % 8 : next % 32 * 4;
    }
    undisturbed_ = std::max(undisturbed_ - 1, 0);
    return false;
}

QByteArray HostileSlave::carryOut(const QByteArray &frame, int request)
{
    kvt::Area area = kvt::Area::D;
    if (areaOfRead(frame, &area))
        return ACK + frame.mid(1, 2) + values_.digitsFor(area, request) + CR;
    require(frame.size() == 10 || frame.size() == 12, "a host asks for its own tags");
    writes_.insert(frame);
    return ACK + frame.mid(1, 4) + CR;
}

void HostileSlave::commit(SlaveFault fault, const QByteArray &frame, qint64 now_ns, int request)
{
    const qint64 begin_ns = start_ns(frame, now_ns);
    switch (fault) {
    case SlaveFault::RequestLost:
        break;
    case SlaveFault::Refused:
        line_.send(begin_ns, refusalOf(frame));
        break;
    case SlaveFault::RefusedAhead:
        line_.send(begin_ns, refusalOf(frame));
        line_.send(begin_ns + time_ns(), carryOut(frame, request));
        break;
    case SlaveFault::LineBreak:
        break_ns_ = 1 + std::min(time_ns(), kvt::seconds(2));
        break;
    default:
        commitToReply(fault, carryOut(frame, request), begin_ns, request);
        break;
    }
}

void HostileSlave::commitToReply(SlaveFault fault, const QByteArray &reply, qint64 begin_ns,
                                 int request)
{
    switch (fault) {
    case SlaveFault::ReplyLost:
        break;
    case SlaveFault::Late:
        line_.send(begin_ns + time_ns(), reply);
        break;
    case SlaveFault::Twice:
        line_.send(begin_ns, reply);
        line_.send(begin_ns + time_ns(), reply);
        break;
    case SlaveFault::NoiseAhead: {
        const QByteArray bytes = noise();
        line_.send(begin_ns, bytes);
        line_.send(begin_ns + time_ns(), reply);
        if (holdsReplyLike(reply, bytes))
            damaged_.insert(request);
        break;
    }
    case SlaveFault::NoiseBehind:
        line_.send(begin_ns, reply);
        line_.send(begin_ns + time_ns(), noise());
        break;
    case SlaveFault::Foreign:
        line_.send(begin_ns, foreignReply(reply));
        break;
    case SlaveFault::ForeignAhead:
        line_.send(begin_ns, foreignReply(reply));
        line_.send(begin_ns + time_ns(), reply);
        break;
    case SlaveFault::Babble:
        line_.send(begin_ns, reply);
        babble(begin_ns);
        break;
    default:
        damage(fault, reply, begin_ns, request);
        break;
    }
}

void HostileSlave::damage(SlaveFault fault, QByteArray reply, qint64 begin_ns, int request)
{
    const int at = 1 + input_.below(std::min(reply.size() - 1, 255));
    switch (fault) {
    case SlaveFault::HeadOnly:
        reply.truncate(at);
        break;
    case SlaveFault::TailOnly:
        reply.remove(0, at);
        break;
    case SlaveFault::NoiseWithin: {
        const QByteArray bytes = noise();
        reply.insert(at, bytes);
        if (hasDigit(bytes))
            damaged_.insert(request);
        break;
    }
    case SlaveFault::WrongDigits:
        reply.replace(DIGITS_AT, reply.size() - DIGITS_AT - 1,
                      values_.digitsFor(areaOfReply(reply), request));
        break;
    case SlaveFault::NoDigits:
        reply.replace(std::max(std::min(at, reply.size() - 2), DIGITS_AT), 1, disguised(request));
        break;
    default: // NoEnd
        reply.replace(reply.size() - 1, 1, disguised(request));
        break;
    }
    line_.send(begin_ns, reply);
}

// Any byte in the place of one of a reply's to this request.
QByteArray HostileSlave::disguised(int request)
{
    const QByteArray byte(1, static_cast<char>(input_.byte()));
    if (hasDigit(byte))
        damaged_.insert(request);
    return byte;
}

void HostileSlave::babble(qint64 begin_ns)
{
    const QByteArray bytes = noise();
    const qint64 gap_ns = kvt::milliseconds(1 + input_.below(40));
    qint64 at_ns = begin_ns;
    for (int left = 1 + input_.below(100); left > 0; --left, at_ns += gap_ns)
        line_.send(at_ns, bytes);
}

QByteArray HostileSlave::foreignReply(const QByteArray &reply)
{
    QByteArray foreign = reply;
    foreign.replace(1, 2, stationOf(reply) == 1 ? "02" : "01");
    return foreign.replace(DIGITS_AT, reply.size() - DIGITS_AT - 1,
                           values_.digitsFor(areaOfReply(reply), OF_NO_REQUEST));
}

QByteArray HostileSlave::noise()
{
    const QByteArray bytes = input_.bytes(1 + input_.below(8));
    return bytes.isEmpty() ? QByteArray(1, NAK) : bytes;
}

// Most of them short; the square reaches from 8 us to half a second, and seldom to two seconds.
qint64 HostileSlave::time_ns()
{
    const qint64 root = input_.byte();
    return root * root * 8000 * (input_.once(8) ? 4 : 1);
}

qint64 HostileSlave::start_ns(const QByteArray &frame, qint64 now_ns) const
{
    return now_ns + turnaround_ns_[stationOf(frame) == 2 ? 1 : 0];
}

qint64 HostileSlave::takeBreak_ns()
{
    return std::exchange(break_ns_, 0);
}

bool HostileSlave::takeFaultHappened()
{
    return std::exchange(faultHappened_, false);
}
