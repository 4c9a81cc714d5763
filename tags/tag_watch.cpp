#include "tags/tag_watch.h"

#include "tags/duration_text.h"
#include "tags/value_reach.h"

namespace kvt
{

namespace
{

// A day is the longest duration there is.
constexpr qint64 SHORTEST_INTERVAL_ns = 10000000;

void readInterval(const QString &text, TagWatch *watch, QVector<WatchProblem> *problems)
{
    if (text.isEmpty())
        return;
    const std::optional<qint64> interval_ns = parseDuration_ns(text);
    if (interval_ns && *interval_ns >= SHORTEST_INTERVAL_ns)
        watch->interval_ns = *interval_ns;
    else
        problems->append({WatchColumn::Interval,
                          QStringLiteral("\"%1\" is no interval: a number with ms, s, min or h, "
                                         "from 10 ms to a day")
                              .arg(text)});
}

void readDeadband(const Tag &tag, TagWatch *watch, QVector<WatchProblem> *problems)
{
    const QString &text = tag.watch[WatchColumn::Deadband];
    if (text.isEmpty())
        return;
    double width = 0;
    const QString fault =
        isNumeric(tag.form.type)
            ? parseDeadband(text, tag.meaning, &width)
            : QStringLiteral("values of type %1 have none").arg(typeName(tag.form.type));
    if (fault.isEmpty())
        watch->deadband = width;
    else
        problems->append({WatchColumn::Deadband, fault});
}

} // namespace

TagWatch readTagWatch(const Tag &tag, const std::optional<ValueConverter> &converter,
                      QVector<WatchProblem> *problems)
{
    TagWatch watch;
    readInterval(tag.watch[WatchColumn::Interval], &watch, problems);
    readDeadband(tag, &watch, problems);
    watch.alarm = readAlarmRule(tag, converter, problems);
    if (converter)
        warnOfReach(tag, *converter, watch.deadband, problems);
    return watch;
}

TagWatch watchOf(const Tag &tag)
{
    if (tag.watch == WatchTexts())
        return TagWatch();
    QVector<MeaningProblem> meaningProblems;
    QVector<WatchProblem> problems;
    std::optional<ValueConverter> converter; // reads names; doubts are not asked for
    if (!tag.watch[WatchColumn::Alarm].isEmpty())
        converter = ValueConverter::make(tag.form, tag.area, tag.meaning, &meaningProblems);
    return readTagWatch(tag, converter, &problems);
}

qint64 intervalOf_ns(const Tag &tag)
{
    TagWatch watch;
    QVector<WatchProblem> problems;
    readInterval(tag.watch[WatchColumn::Interval], &watch, &problems);
    return watch.interval_ns;
}

} // namespace kvt
