#include "apps/kvt/live_view.h"

#include "apps/kvt/alarm_texts.h"
#include "apps/kvt/outcome_text.h"
#include "apps/kvt/table/printable.h"

#include <QCoreApplication>

#include <algorithm>
#include <utility>

namespace kvt
{

namespace
{

Concern concernOf(Quality quality)
{
    switch (quality) {
    case Quality::Failed:
        return Concern::Bad;
    case Quality::Doubtful:
    case Quality::Suspect:
    case Quality::Stale:
    case Quality::Torn:
        return Concern::Stale;
    case Quality::NeverRead:
        return Concern::Unknown;
    case Quality::Good:
        break;
    }
    return Concern::None;
}

// Only what the table shows as such is acknowledged: one that is suppressed is not.
bool isUnacknowledged(const AlarmStatus &alarm)
{
    return alarm.state == AlarmState::Unacknowledged ||
           alarm.state == AlarmState::ReturnedUnacknowledged;
}

Concern concernOf(const AlarmStatus &alarm)
{
    switch (alarm.state) {
    case AlarmState::Unacknowledged:
        return Concern::Bad;
    case AlarmState::Acknowledged:
    case AlarmState::ReturnedUnacknowledged:
        return Concern::Stale;
    case AlarmState::Suppressed:
        return Concern::Unknown;
    case AlarmState::Normal:
    case AlarmState::Shelved:
        break;
    }
    return Concern::None;
}

QString ageText(const TagValue &value, qint64 now_ns)
{
    if (!value.isKnown)
        return QStringLiteral("-");
    return roughTimeText(std::max<qint64>(now_ns - value.readAt_ns, 0));
}

} // namespace

LiveView::LiveView(const QVector<Tag> &tags, const ValueTexts &texts, Acknowledge acknowledge)
    : tags_(tags), texts_(texts), acknowledge_(std::move(acknowledge)),
      screen_(std::make_unique<Screen>([this](Key key, QChar character) { press(key, character); },
                                       [this] { draw(); }))
{
}

void LiveView::press(Key key, QChar character)
{
    const TableWish wish = table_.press(key, character);
    if (wish == TableWish::End)
        QCoreApplication::quit();
    else if (wish == TableWish::Acknowledge && acknowledge_)
        acknowledge_(table_.unacknowledged());
    draw();
}

void LiveView::show(const Snapshot &snapshot, const QString &status, const QString &trouble)
{
    if (!messages_)
        messages_ = std::make_unique<HeldMessages>();
    screen_->take();
    QVector<TableRow> rows;
    for (int tag = 0; tag < tags_.size(); ++tag)
        rows.append(row(tag, snapshot));
    QStringList header(status);
    for (const QString &text : {trouble, messages_->latest()})
        if (!text.isEmpty())
            header.append(text);
    table_.setHeader(header);
    table_.setRows(rows);
    draw();
}

void LiveView::draw()
{
    table_.resize(screen_->columns(), screen_->lines());
    screen_->draw(table_.lines());
}

void LiveView::finish()
{
    if (!screen_->isTaken())
        return;
    screen_.reset();
    QString text;
    for (const TableLine &line : table_.finalLines()) {
        QString whole;
        for (const TableSpan &span : line)
            whole += span.text;
        while (whole.endsWith(QLatin1Char(' ')))
            whole.chop(1);
        text += whole + QLatin1Char('\n');
    }
    printOut(text);
    messages_.reset();
}

TableRow LiveView::row(int tag, const Snapshot &snapshot) const
{
    const Tag &description = tags_.at(tag);
    const TagValue &value = snapshot.values.at(tag);
    TableRow row;
    row.concern = concernOf(value.quality);
    row.cell(Column::Tag) = printable(description.name);
    row.cell(Column::Area) = areaName(description.area);
    row.cell(Column::Address) =
        QStringLiteral("%1:%2").arg(description.station).arg(description.address);
    row.cell(Column::Value) = texts_.text(tag, value);
    row.cell(Column::Quality) = qualityName(value.quality);
    if (const std::optional<AlarmStatus> alarm = snapshot.alarms.value(tag)) {
        row.cell(Column::Alarm) = briefText(*alarm);
        row.alarmConcern = concernOf(*alarm);
        row.isUnacknowledged = isUnacknowledged(*alarm);
    }
    row.cell(Column::Age) = ageText(value, snapshot.at_ns);
    row.cell(Column::Result) =
        resultText(snapshot.results.at(tag), snapshot.stationsOff.contains(description.station));
    return row;
}

} // namespace kvt
