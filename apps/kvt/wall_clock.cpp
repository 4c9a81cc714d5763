#include "apps/kvt/wall_clock.h"

namespace kvt
{

QString isoTime(const QDateTime &moment)
{
    const QDateTime local = moment.toLocalTime();
    const int offset_min = local.offsetFromUtc() / 60;
    const int size_min = qAbs(offset_min);
    return QStringLiteral("%1%2%3:%4")
        .arg(local.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss.zzz")))
        .arg(QLatin1Char(offset_min < 0 ? '-' : '+'))
        .arg(size_min / 60, 2, 10, QLatin1Char('0'))
        .arg(size_min % 60, 2, 10, QLatin1Char('0'));
}

QString isoNow()
{
    return isoTime(QDateTime::currentDateTime());
}

QString isoTimeBefore(qint64 age_ns)
{
    return isoTime(QDateTime::currentDateTime().addMSecs(-age_ns / 1000000));
}

} // namespace kvt
