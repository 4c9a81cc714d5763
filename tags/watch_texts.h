// What a list says about how a value is watched, as it stands there: how often it is read, which
// changes are reported, and when it is an alarm.
#ifndef KVT_TAGS_WATCH_TEXTS_H
#define KVT_TAGS_WATCH_TEXTS_H

#include "tags/column_texts.h"

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

using WatchTexts = ColumnTexts<WatchColumn, WATCH_COLUMNS>;
using WatchProblem = ColumnProblem<WatchColumn>;

} // namespace kvt

#endif
