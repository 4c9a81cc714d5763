// What a list says about how a value is watched, as it stands there: how often it is read, which
// changes are reported, and when it is an alarm.
#ifndef KVT_TAGS_WATCH_TEXTS_H
#define KVT_TAGS_WATCH_TEXTS_H

#include <QString>

#include <array>

namespace kvt
{

/// The columns about watching.
enum class WatchColumn {
    Interval,
    Deadband,
    Alarm,
    LoLo,
    Lo,
    Hi,
    HiHi,
    Hysteresis,
    OnDelay,
    OffDelay,
    Priority,
    AlarmText
};

constexpr int WATCH_COLUMNS = 12;

/// Returns "interval", "deadband" and so on.
QString watchColumnName(WatchColumn column);

/// True for columns that hold a number, perhaps with a unit, which may have a decimal comma.
bool isNumberColumn(WatchColumn column);

/// The texts of these columns; an empty one says nothing.
struct WatchTexts {
    std::array<QString, WATCH_COLUMNS> texts;

    QString &operator[](WatchColumn column) { return texts[static_cast<size_t>(column)]; }
    const QString &operator[](WatchColumn column) const
    {
        return texts[static_cast<size_t>(column)];
    }
};

/// True when all texts are equal.
inline bool operator==(const WatchTexts &a, const WatchTexts &b)
{
    return a.texts == b.texts;
}

/// What is wrong with one of the texts, or only doubtful.
struct WatchProblem {
    WatchColumn column;
    QString text;
    bool isWarning = false;
};

} // namespace kvt

#endif
