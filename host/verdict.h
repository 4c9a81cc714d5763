// How a request has ended, in one word for text and reports alike.
#ifndef KVT_HOST_VERDICT_H
#define KVT_HOST_VERDICT_H

#include "host/statistics.h"

#include <QString>

namespace kvt
{

/// How a request ended. The driver has fewer classes and no code of its own for a refusal, so the
/// way in which the attempt ended goes first.
enum class Verdict { Ok, NoReply, Refused, BadReply, WrongLength, BrokenOff, Foreign, Disturbed };
constexpr int VERDICTS = 8;

/// Returns the verdict on an attempt with its result code; 0, which is none, is a bad reply.
Verdict verdictOf(AttemptEnd end, int resultCode);

/// Returns "ok", "no reply", "refused" and the like.
QString verdictText(Verdict verdict);

/// Returns the number of a station's exchanges that ended in each way, by Verdict.
std::array<quint64, VERDICTS> verdictCounts(const StationStatistics &station);

} // namespace kvt

#endif
