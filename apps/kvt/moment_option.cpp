#include "apps/kvt/moment_option.h"

#include "apps/kvt/console.h"

#include <QRegularExpression>

namespace kvt
{

namespace
{

// "03:00", "03:00:30", "03:00:30.250".
QTime timeOf(const QString &text)
{
    static const QRegularExpression form(
        QStringLiteral("\\A[0-9]{2}:[0-9]{2}(:[0-9]{2}(\\.[0-9]{1,3})?)?\\z"));
    return form.match(text).hasMatch() ? QTime::fromString(text, Qt::ISODateWithMs) : QTime();
}

QDateTime momentOf(const QString &text)
{
    static const QRegularExpression form(
        QStringLiteral("\\A[0-9]{4}-[0-9]{2}-[0-9]{2}T([0-9:.]+)(Z|[+-][0-9]{2}:[0-9]{2})?\\z"));
    const QRegularExpressionMatch match = form.match(text);
    return match.hasMatch() && timeOf(match.captured(1)).isValid()
               ? QDateTime::fromString(text, Qt::ISODateWithMs)
               : QDateTime();
}

} // namespace

QDateTime Moment::from(const QDateTime &earliest) const
{
    if (moment.isValid())
        return moment;
    const QDate date = earliest.toLocalTime().date();
    const QDateTime sameDay(date, timeOfDay);
    return sameDay < earliest ? QDateTime(date.addDays(1), timeOfDay) : sameDay;
}

bool readMoment(const QCommandLineParser &parser, const QString &option, Moment *moment)
{
    if (!parser.isSet(option))
        return true;
    const QString text = parser.value(option);
    moment->timeOfDay = timeOf(text);
    moment->moment = momentOf(text);
    if (!moment->isGiven())
        printError(QStringLiteral("--%1: \"%2\" is no time of day, as 03:00 or 03:00:30, and no "
                                  "moment, as 2026-11-21T03:00")
                       .arg(option, text));
    return moment->isGiven();
}

} // namespace kvt
