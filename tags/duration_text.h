// Durations as a list has them: "100ms", "1.5s", "1min".
#ifndef KVT_TAGS_DURATION_TEXT_H
#define KVT_TAGS_DURATION_TEXT_H

#include <QString>

#include <optional>

namespace kvt
{

/// Returns the nanoseconds of a text: a number that is not negative, with a point if any, and one
/// of the units ms, s, min and h behind it, in any case and with or without a blank; "0" needs
/// none. None when it is anything else or above a day. Any thread.
std::optional<qint64> parseDuration_ns(const QString &text);

/// Returns "100 ms", "5 s", "1.5 s", "1 min" or "2 h": the largest unit that leaves a whole number,
/// below a minute with up to three decimals.
QString durationText(qint64 duration_ns);

} // namespace kvt

#endif
