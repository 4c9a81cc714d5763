// The time of day, as it stands beside whatever happened.
#ifndef KVT_APPS_KVT_WALL_CLOCK_H
#define KVT_APPS_KVT_WALL_CLOCK_H

#include <QDateTime>
#include <QString>

namespace kvt
{

/// Returns a moment as ISO 8601: local time with its offset from UTC, to the millisecond. The
/// clock on the wall reads the same, and yet it names one moment alone.
QString isoTime(const QDateTime &moment);

/// Returns the present moment in that form.
QString isoNow();

/// Returns the moment that was `age_ns` ago, in nanoseconds.
QString isoTimeBefore(qint64 age_ns);

} // namespace kvt

#endif
