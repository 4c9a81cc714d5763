// Outcomes in words.
#ifndef KVT_APPS_KVT_OUTCOME_TEXT_H
#define KVT_APPS_KVT_OUTCOME_TEXT_H

#include "host/exchange_observer.h"

#include <QString>

namespace kvt
{

/// Returns how an attempt ended: "ok", "refused", "no reply" and the like.
QString outcomeWord(AttemptEnd end, int resultCode);

/// The same with the driver's result code behind a final failure: "no reply (41)".
QString outcomeText(AttemptEnd end, int resultCode);

/// Returns what is the matter with a station whose requests fail, by how the latest one ended:
/// "does not answer", "answers badly (bad reply)" and the like.
QString stationTrouble(AttemptEnd end, int resultCode);

/// Returns a time in the unit that it is best read in: "3.4 ms", "12.5 s", "4 min 10 s",
/// "2 h 5 min"; times in nanoseconds, not negative.
QString timeText(qint64 time_ns);

/// The same without fractions, in at most 8 characters: "340 ms", "12 s", "4 min", "2 h", "3 d".
QString roughTimeText(qint64 time_ns);

/// Returns a time in milliseconds, for JSON.
double millisecondsOf(qint64 time_ns);

} // namespace kvt

#endif
