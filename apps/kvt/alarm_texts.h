// Alarms as people and programs read them.
#ifndef KVT_APPS_KVT_ALARM_TEXTS_H
#define KVT_APPS_KVT_ALARM_TEXTS_H

#include "host/alarm_board.h"

#include <QJsonObject>

namespace kvt
{

/// Returns what fits a column: "normal", "hi unack", "hihi acked", "returned", "lo shelved",
/// "lolo suppressed".
QString briefText(const AlarmStatus &status);

/// Knows the names, priorities and texts of the alarms of tags. Does not change: any thread.
class AlarmTexts
{
public:
    explicit AlarmTexts(const QVector<Tag> &tags);

    /// Returns "alarm of level: unacknowledged, hi, priority high: tank too full".
    QString eventText(const AlarmEvent &event) const;

    /// Returns state, level, whether it is acknowledged, priority, and its text if it has one.
    QJsonObject toJson(int tag, const AlarmStatus &status) const;

private:
    struct Alarm {
        QString name;
        QString priority;
        QString text;
    };

    QVector<Alarm> alarms_; // by tag; those of tags without one are not looked at
};

} // namespace kvt

#endif
