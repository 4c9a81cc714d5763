#include "tags/watch_texts.h"

namespace kvt
{

QString watchColumnName(WatchColumn column)
{
    static const char *const names[] = {"interval", "deadband",  "alarm",    "lolo",
                                        "lo",       "hi",        "hihi",     "hysteresis",
                                        "on_delay", "off_delay", "priority", "alarm_text"};
    return QLatin1String(names[static_cast<int>(column)]);
}

bool isNumberColumn(WatchColumn column)
{
    return column != WatchColumn::Alarm && column != WatchColumn::Priority &&
           column != WatchColumn::AlarmText;
}

} // namespace kvt
