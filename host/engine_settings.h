// What an exchange engine is told about its line and its stations.
#ifndef KVT_HOST_ENGINE_SETTINGS_H
#define KVT_HOST_ENGINE_SETTINGS_H

#include "host/host_time.h"

#include <QHash>

namespace kvt
{

class LineTap;

/// What is done about a reply that does not look like one to the request: its first byte is
/// neither ACK nor NAK, the two station digits after it are not the station's, or what should be
/// data digits are none.
enum class ReplyChecking {
    Off,   ///< not looked at
    Count, ///< taken as doubtful
    Auto,  ///< as Refuse with a station that has sent a good reply which looks like one; until then
           ///< as Count
    Refuse ///< the attempt fails
};

/// Timing of one station; times in nanoseconds, not negative.
struct StationTiming {
    qint64 turnaround_ns = milliseconds(50); ///< longest time it takes before it starts to answer
    qint64 gapAfterReply_ns = 0; ///< silence it needs after its reply before the next request
    qint64 replyTimeout_ns = 0;  ///< from the request's last byte to the reply's first; 0: computed
    qint64 quietTime_ns = 0;     ///< silence after a failed attempt; 0: as long as the time-out
};

/// Settings of an exchange engine; times in nanoseconds, not negative.
struct EngineSettings {
    /// Time that one character takes at the speed of the line; 0 when it has none (TCP). Goes into
    /// the time-outs and the line's utilisation.
    qint64 characterTime_ns = 0;

    /// The bytes come at the pace of `characterTime_ns`, so that bytes cannot have been sent
    /// sooner than their number takes. False for a line that hands them over at once.
    bool paced = false;

    /// Longest time that the interface holds back received bytes. USB adapters make packets of up
    /// to 16 ms; part of the reply time-out and the longest gap inside a reply.
    qint64 latency_ns = milliseconds(20);

    qint64 idlePoll_ns = milliseconds(10); ///< how often the driver is asked while it has nothing
    qint64 longestQuiet_ns = seconds(1);   ///< how long bytes that go on arriving extend a silence
    ReplyChecking replyChecking = ReplyChecking::Auto;

    /// The part of the line's time, 0 to 1, that pauses between exchanges may take, in which a
    /// reply would be heard that is one too many. 0: there are none; such a reply is noticed only
    /// where it disturbs an exchange.
    double checkpointShare = 0.01;

    /// Each reply is followed by a pause, whatever their share, and its value counts only if
    /// nothing was heard there.
    bool confirm = false;

    bool remoteMode = false; ///< binary envelopes: CR ends no reply

    LineTap *tap = nullptr; ///< sees what passes on the line; outlives the engine; may be null

    StationTiming defaultTiming;        ///< of every station that has none of its own
    QHash<int, StationTiming> stations; ///< by station number

    const StationTiming &timingOf(int station) const;

    /// Longest silence inside a reply before it counts as broken off.
    qint64 characterGap_ns() const;

    /// Time from the last byte of a request until its reply must have begun to arrive, if it is
    /// expected to have `expectedLength` bytes (-1: unknown). The interface may hand over a reply
    /// only when it is complete, hence the length.
    qint64 replyTimeout_ns(int station, int expectedLength) const;

    /// Time for which a line that was just opened is listened to. A former user's time-out is not
    /// known: what the stations and the line should need must do, unless a quiet time is set.
    qint64 listeningTime_ns(int station, int expectedLength) const;

    /// Time for which the line is kept silent after an attempt that did not end with one good
    /// reply, from the time on that its reply was due at the latest.
    ///
    /// It equals the time-out unless set: a station that kept us waiting is allowed twice the time
    /// it should need, and the silence costs no more than the time-out itself did.
    qint64 quietTime_ns(int station, int expectedLength) const;

private:
    qint64 computedTimeout_ns(int station, int expectedLength) const;
};

} // namespace kvt

#endif
