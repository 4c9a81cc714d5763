// Moments as options name them.
#ifndef KVT_APPS_KVT_MOMENT_OPTION_H
#define KVT_APPS_KVT_MOMENT_OPTION_H

#include <QCommandLineParser>
#include <QDateTime>

namespace kvt
{

/// A moment, or only what the clock shows at it.
struct Moment {
    QDateTime moment; ///< invalid: the time of day alone is known
    QTime timeOfDay;  ///< of no meaning where the moment is valid

    bool isGiven() const { return moment.isValid() || timeOfDay.isValid(); }

    /// Returns the moment; of a time of day the first one from `earliest` on.
    QDateTime from(const QDateTime &earliest) const;
};

/// Reads an option that may be left out: HH:MM or HH:MM:SS, or ISO 8601 with "T" between date and
/// time, in local time unless an offset or "Z" stands behind; seconds may have three decimals.
/// False, with a message that names the option, when it is neither.
bool readMoment(const QCommandLineParser &parser, const QString &option, Moment *moment);

} // namespace kvt

#endif
