#include "rig/fault_kinds.h"

#include "host/host_time.h"

namespace kvt
{

namespace
{

using Faults = QVector<FaultOfLine>;

constexpr qint64 ADAPTER_ns = milliseconds(16);
constexpr int LOCKSTEP = 40;
constexpr const char *TOO_LATE = "later than every limit: it may meet a request of its own station "
                                 "whose own reply is as late";
constexpr int MEGABYTE = 1000000;

void addLate(Faults *faults)
{
    *faults += {
        {"lost", "reply lost", FaultLimit::Kept, "", nothing()},
        {"late-0.5", "reply half a time-out late", FaultLimit::Kept, "", late(0.5)},
        {"late-1", "reply when its time-out ends", FaultLimit::Kept, "", late(1)},
        {"late-1.5", "reply after 1.5 time-outs", FaultLimit::Kept, "", late(1.5)},
        {"late-2", "reply after 2 time-outs, the end of the silence", FaultLimit::Kept, "",
         late(2)},
        {"late-3", "reply after 3 time-outs", FaultLimit::Bounded, TOO_LATE, late(3)},
        {"late-5", "reply after 5 time-outs", FaultLimit::Bounded, TOO_LATE, late(5)},
    };
}

void addBroken(Faults *faults)
{
    FaultOfLine cut = {"cut", "cut behind each byte in turn", FaultLimit::Kept, "", cutShort()};
    cut.oneByOne = true;
    FaultOfLine within = {"swollen-within", "1 to 4 bytes more, at each place in turn",
                          FaultLimit::Kept, "", swollen(false)};
    within.oneByOne = true;
    *faults += {
        cut,
        within,
        {"swollen-end", "1 to 4 bytes more before CR", FaultLimit::Kept, "", swollen(true)},
        {"no-cr", "CR lost", FaultLimit::Kept, "", lostEnd()},
        {"wrong-end", "another byte for CR", FaultLimit::Kept, "", wrongEnd()},
        {"wrong-digits", "digits zz", FaultLimit::Kept, "", wrongDigits()},
        {"changed-digit", "one valid digit for another", FaultLimit::Physics,
         "a reply has no check of its digits", changedDigit()},
    };
}

void addDoubled(Faults *faults)
{
    *faults += {
        {"doubled", "reply doubled at once", FaultLimit::Kept, "", doubled(0, 0)},
        {"doubled-1ms", "reply doubled 1 ms later", FaultLimit::Bounded, "",
         doubled(0, milliseconds(1))},
        {"doubled-0.5", "reply doubled half a time-out later", FaultLimit::Bounded, "",
         doubled(0.5, 0)},
        {"doubled-1.5", "reply doubled 1.5 time-outs later", FaultLimit::Bounded, "",
         doubled(1.5, 0)},
    };
}

void addForeign(Faults *faults)
{
    *faults += {
        {"foreign", "another station's reply", FaultLimit::Kept, "", foreign()},
        {"foreign-true", "another station's reply, then the true one", FaultLimit::Kept, "",
         foreignThenTrue(0)},
        {"foreign-true-5ms", "another station's reply, the true one 5 ms later", FaultLimit::Kept,
         "", foreignThenTrue(milliseconds(5))},
        {"other-master", "another master's request and its reply, then the true one",
         FaultLimit::Kept, "", otherMaster()},
    };
}

void addNoise(Faults *faults)
{
    using P = NoisePlace;
    using K = NoiseKind;
    *faults += {
        {"noise-early", "noise, later the reply", FaultLimit::Kept, "", noise(P::Early, K::Plain)},
        {"noise-early-cr", "noise with CR, later the reply", FaultLimit::Kept, "",
         noise(P::Early, K::WithCr)},
        {"noise-early-nak", "noise with NAK (15 0D), later the reply", FaultLimit::Kept, "",
         noise(P::Early, K::WithNak)},
        {"noise-early-refusal", "15 31 31 0D, later the reply", FaultLimit::Kept, "",
         noise(P::Early, K::Refusal)},
        {"noise-before", "noise directly before the reply", FaultLimit::Kept, "",
         noise(P::Before, K::Plain)},
        {"noise-before-cr", "noise with CR directly before the reply", FaultLimit::Kept, "",
         noise(P::Before, K::WithCr)},
        {"noise-before-nak", "noise with NAK directly before the reply", FaultLimit::Kept, "",
         noise(P::Before, K::WithNak)},
        {"noise-before-refusal", "15 31 31 0D directly before the reply", FaultLimit::Kept, "",
         noise(P::Before, K::Refusal)},
        {"noise-within", "a byte within the reply is noise", FaultLimit::Kept, "",
         noise(P::Within, K::Plain)},
        {"noise-within-cr", "a byte within the reply is CR", FaultLimit::Kept, "",
         noise(P::Within, K::WithCr)},
        {"noise-within-nak", "a byte within the reply is NAK", FaultLimit::Kept, "",
         noise(P::Within, K::WithNak)},
        {"noise-within-refusal", "15 31 31 0D within the reply", FaultLimit::Kept, "",
         noise(P::Within, K::Refusal)},
        {"noise-behind", "noise directly behind the reply", FaultLimit::Kept, "",
         noise(P::Behind, K::Plain)},
        {"noise-behind-cr", "noise with CR directly behind the reply", FaultLimit::Kept, "",
         noise(P::Behind, K::WithCr)},
        {"noise-behind-nak", "noise with NAK directly behind the reply", FaultLimit::Kept, "",
         noise(P::Behind, K::WithNak)},
        {"noise-later", "noise within 20 ms of the reply", FaultLimit::Kept, "",
         noise(P::Later, K::Plain)},
        {"noise-later-cr", "noise with CR within 20 ms of the reply", FaultLimit::Kept, "",
         noise(P::Later, K::WithCr)},
        {"noise-later-nak", "noise with NAK within 20 ms of the reply", FaultLimit::Kept, "",
         noise(P::Later, K::WithNak)},
        {"noise-alone", "noise for a reply", FaultLimit::Kept, "", noise(P::Alone, K::Plain)},
        {"noise-alone-cr", "noise with CR for a reply", FaultLimit::Kept, "",
         noise(P::Alone, K::WithCr)},
        {"noise-alone-nak", "noise with NAK for a reply", FaultLimit::Kept, "",
         noise(P::Alone, K::WithNak)},
    };
}

void addRefusals(Faults *faults)
{
    FaultOfLine refusal = {"refusal", "refused", FaultLimit::Kept, "", refused(false)};
    refusal.requestLost = true;
    FaultOfLine byForeign = {"refusal-foreign", "refused by another station", FaultLimit::Kept, "",
                             refused(true)};
    byForeign.requestLost = true;
    *faults += {
        refusal,
        byForeign,
        {"refusal-reply", "a refusal, and the reply at once, 5 ms later or too late",
         FaultLimit::Kept, "", refusedThenReply(false)},
        {"refusal-foreign-reply", "another station's refusal, then the reply", FaultLimit::Kept, "",
         refusedThenReply(true)},
        {"half-refusal", "a part of a refusal for a reply", FaultLimit::Kept, "",
         halfRefusal(false)},
        {"half-refusal-reply", "a part of a refusal before the reply", FaultLimit::Kept, "",
         halfRefusal(true)},
    };
}

void addFloods(Faults *faults)
{
    FaultOfLine endless = {"stream", "bytes for 5 s", FaultLimit::Kept, "", stream(seconds(5))};
    endless.strikes = 2;
    FaultOfLine flood = {"garbage", "1 MB of garbage, then the reply", FaultLimit::Kept, "",
                         garbage(MEGABYTE)};
    flood.strikes = 1;
    *faults += {endless, flood};
}

void addTimes(Faults *faults)
{
    *faults += {
        {"gap-0.9", "byte by byte, 0.9 of the longest gap between", FaultLimit::Kept, "",
         byteByByte(0.9)},
        {"gap-1", "byte by byte, the longest gap between", FaultLimit::Kept, "", byteByByte(1)},
        {"gap-1.1", "byte by byte, 1.1 of the longest gap between", FaultLimit::Kept, "",
         byteByByte(1.1)},
        {"held-back", "an adapter hands the reply over 16 ms later", FaultLimit::Kept, "",
         heldBack(ADAPTER_ns)},
        {"in-pieces", "an adapter hands over what it has, each 16 ms", FaultLimit::Kept, "",
         inPieces(ADAPTER_ns)},
    };
}

void addEchoes(Faults *faults)
{
    *faults += {
        {"echo", "the request comes back, then the reply", FaultLimit::Kept, "",
         echoed(true, false)},
        {"echo-damaged", "the request comes back damaged, then the reply", FaultLimit::Kept, "",
         echoed(true, true)},
        {"echo-alone", "the request comes back for a reply", FaultLimit::Kept, "",
         echoed(false, false)},
    };
}

void addLineFaults(Faults *faults)
{
    FaultOfLine lost = {"request-lost", "request lost", FaultLimit::Kept, "", nothing()};
    lost.requestLost = true;
    FaultOfLine behind = {
        "lockstep", "40 replies, each kept back until the next request", FaultLimit::Bounded,
        "no pause hears anything; it shows when neighbouring requests differ", nothing()};
    behind.lockstep = LOCKSTEP;
    behind.strikes = 4;
    FaultOfLine uniform = {"lockstep-uniform", "the same with one station and one length",
                           FaultLimit::Physics,
                           "no byte, length or pause tells a reply from the one before", nothing()};
    uniform.lockstep = LOCKSTEP;
    uniform.strikes = 4;
    uniform.uniform = true;
    *faults += {
        lost,
        behind,
        uniform,
        {"break-50ms", "line down for 50 ms", FaultLimit::Kept, "", lineDown(milliseconds(50))},
        {"break-2s", "line down for 2 s", FaultLimit::Kept, "", lineDown(seconds(2))},
    };
}

Faults allFaults()
{
    Faults faults;
    addLate(&faults);
    addBroken(&faults);
    addDoubled(&faults);
    addForeign(&faults);
    addNoise(&faults);
    addRefusals(&faults);
    addFloods(&faults);
    addTimes(&faults);
    addEchoes(&faults);
    addLineFaults(&faults);
    return faults;
}

} // namespace

const QVector<FaultOfLine> &faultsOfLine()
{
    static const Faults FAULTS = allFaults();
    return FAULTS;
}

} // namespace kvt
