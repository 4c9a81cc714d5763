#include "apps/kvt/alarm_texts.h"

#include "tags/tag_watch.h"

namespace kvt
{

QString briefText(const AlarmStatus &status)
{
    QString state = alarmStateName(status.state);
    if (status.state == AlarmState::Unacknowledged)
        state = QStringLiteral("unack");
    else if (status.state == AlarmState::Acknowledged)
        state = QStringLiteral("acked");
    return status.level == AlarmLevel::None
               ? state
               : alarmLevelName(status.level) + QLatin1Char(' ') + state;
}

AlarmTexts::AlarmTexts(const QVector<Tag> &tags)
{
    for (const Tag &tag : tags) {
        const AlarmRule rule = watchOf(tag).alarm.value_or(AlarmRule());
        alarms_.append({tag.name, alarmPriorityName(rule.priority), rule.text});
    }
}

QString AlarmTexts::eventText(const AlarmEvent &event) const
{
    const Alarm &alarm = alarms_.at(event.tag);
    QString text =
        QStringLiteral("alarm of %1: %2").arg(alarm.name, alarmStateName(event.status.state));
    if (event.status.level != AlarmLevel::None)
        text += QStringLiteral(", ") + alarmLevelName(event.status.level);
    text += QStringLiteral(", priority ") + alarm.priority;
    return alarm.text.isEmpty() ? text : text + QStringLiteral(": ") + alarm.text;
}

QJsonObject AlarmTexts::toJson(int tag, const AlarmStatus &status) const
{
    const Alarm &alarm = alarms_.at(tag);
    QJsonObject object{{QStringLiteral("state"), alarmStateName(status.state)},
                       {QStringLiteral("level"), alarmLevelName(status.level)},
                       {QStringLiteral("acknowledged"), status.acknowledged},
                       {QStringLiteral("priority"), alarm.priority}};
    if (!alarm.text.isEmpty())
        object.insert(QStringLiteral("text"), alarm.text);
    return object;
}

} // namespace kvt
