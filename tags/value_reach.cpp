#include "tags/value_reach.h"

namespace kvt
{

namespace
{

using Column = WatchColumn;

/// Whether no value is beyond a limit, or all of them are; a value at its limit is not beyond it.
QString limitDoubt(const Decimal &limit, bool isUpper, const DecimalRange &range)
{
    const bool isOut = isUpper ? compare(limit, range.high) >= 0 : compare(limit, range.low) <= 0;
    const bool isIn = isUpper ? compare(limit, range.low) < 0 : compare(limit, range.high) > 0;
    if (!isOut && !isIn)
        return QString();
    return QStringLiteral("%1 %2 %3")
        .arg(isOut ? QStringLiteral("no value is") : QStringLiteral("all values are"),
             isUpper ? QStringLiteral("above") : QStringLiteral("below"), decimalText(limit));
}

} // namespace

void warnOfReach(const Tag &tag, const ValueConverter &converter, std::optional<double> deadband,
                 QVector<WatchProblem> *problems)
{
    const std::optional<DecimalRange> range = converter.range();
    if (!range)
        return;
    const auto warn = [&](Column column, const QString &doubt) {
        problems->append({column,
                          QStringLiteral("%1; they go from %2 to %3")
                              .arg(doubt, decimalText(range->low), decimalText(range->high)),
                          true});
    };
    if (deadband && *deadband >= toDouble(range->high) - toDouble(range->low))
        warn(Column::Deadband, QStringLiteral("no value is ever farther from another than %1")
                                   .arg(tag.watch[Column::Deadband]));
    for (const Column column : {Column::LoLo, Column::Lo, Column::Hi, Column::HiHi}) {
        Decimal limit;
        if (readDecimal(tag.watch[column], &limit) != NumberReading::Good)
            continue;
        const bool isUpper = column == Column::Hi || column == Column::HiHi;
        const QString doubt = limitDoubt(limit, isUpper, *range);
        if (!doubt.isEmpty())
            warn(column, doubt);
    }
}

} // namespace kvt
