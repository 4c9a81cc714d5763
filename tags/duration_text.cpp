#include "tags/duration_text.h"

#include "tags/decimal.h"

#include <cmath>

namespace kvt
{

namespace
{

constexpr qint64 MILLISECOND_ns = 1000000;
constexpr qint64 SECOND_ns = 1000 * MILLISECOND_ns;
constexpr qint64 MINUTE_ns = 60 * SECOND_ns;
constexpr qint64 HOUR_ns = 60 * MINUTE_ns;
constexpr qint64 LONGEST_ns = 24 * HOUR_ns;

struct Unit {
    const char *name;
    qint64 size_ns;
};

// "ms" and "s" both end in s, so that the longer one is tried first.
constexpr Unit UNITS[] = {
    {"ms", MILLISECOND_ns}, {"min", MINUTE_ns}, {"s", SECOND_ns}, {"h", HOUR_ns}};

std::optional<qint64> scaled(const QString &text, qint64 unit_ns)
{
    Decimal number;
    if (text.contains(QLatin1Char('e'), Qt::CaseInsensitive) ||
        readDecimal(text, &number) != NumberReading::Good || number.mantissa < 0)
        return std::nullopt;
    const double duration_ns = toDouble(number) * static_cast<double>(unit_ns);
    if (duration_ns > static_cast<double>(LONGEST_ns))
        return std::nullopt;
    return std::llround(duration_ns);
}

} // namespace

std::optional<qint64> parseDuration_ns(const QString &text)
{
    const QString trimmed = text.trimmed();
    for (const Unit &unit : UNITS) {
        const QLatin1String name(unit.name);
        if (trimmed.endsWith(name, Qt::CaseInsensitive))
            return scaled(trimmed.left(trimmed.size() - name.size()).trimmed(), unit.size_ns);
    }
    return trimmed == QLatin1String("0") ? std::make_optional<qint64>(0) : std::nullopt;
}

QString durationText(qint64 duration_ns)
{
    if (duration_ns >= HOUR_ns && duration_ns % HOUR_ns == 0)
        return QStringLiteral("%1 h").arg(duration_ns / HOUR_ns);
    if (duration_ns >= MINUTE_ns && duration_ns % MINUTE_ns == 0)
        return QStringLiteral("%1 min").arg(duration_ns / MINUTE_ns);
    const bool isShort = duration_ns < SECOND_ns;
    const qint64 unit_ns = isShort ? MILLISECOND_ns : SECOND_ns;
    // Thousandths of the unit, without zeros behind the last digit that counts.
    QString text = QString::number((duration_ns + unit_ns / 2000) / (unit_ns / 1000));
    text = text.rightJustified(4, QLatin1Char('0'));
    text.insert(text.size() - 3, QLatin1Char('.'));
    while (text.endsWith(QLatin1Char('0')))
        text.chop(1);
    if (text.endsWith(QLatin1Char('.')))
        text.chop(1);
    return text + (isShort ? QStringLiteral(" ms") : QStringLiteral(" s"));
}

} // namespace kvt
