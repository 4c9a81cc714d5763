#include "tags/deadband.h"

#include <cmath>

namespace kvt
{

namespace
{

std::optional<double> numberOf(const QString &text)
{
    Decimal number;
    if (text.isEmpty() || readDecimal(text, &number) != NumberReading::Good)
        return std::nullopt;
    return toDouble(number);
}

/// Returns the range of the values, as far as the list tells it.
std::optional<double> rangeOf(const MeaningTexts &meaning)
{
    const MeaningColumn ends[][2] = {{MeaningColumn::Low, MeaningColumn::High},
                                     {MeaningColumn::Min, MeaningColumn::Max}};
    for (const auto &end : ends) {
        const std::optional<double> low = numberOf(meaning[end[0]]);
        const std::optional<double> high = numberOf(meaning[end[1]]);
        if (low && high)
            return std::abs(*high - *low);
    }
    return std::nullopt;
}

} // namespace

QString parseDeadband(const QString &text, const MeaningTexts &meaning, double *width)
{
    const bool isPercentage = text.endsWith(QLatin1Char('%'));
    const QString digits = isPercentage ? text.left(text.size() - 1).trimmed() : text;
    Decimal read;
    const NumberReading reading = readDecimal(digits, &read);
    if (reading != NumberReading::Good)
        return numberFault(reading, digits);
    const double number = toDouble(read);
    if (number < 0)
        return QStringLiteral("%1 is below 0").arg(text);
    if (!isPercentage) {
        *width = number;
        return QString();
    }
    if (number > 100)
        return QStringLiteral("%1 is above 100 %").arg(text);
    const std::optional<double> range = rangeOf(meaning);
    if (!range)
        return QStringLiteral("a percentage needs a range: low and high, or min and max");
    *width = *range * number / 100;
    return QString();
}

bool DeadbandFilter::isFar(double number) const
{
    const double last = *last_.number;
    if (std::isfinite(number) && std::isfinite(last))
        return width_ > 0 ? std::abs(number - last) > width_ : number != last;
    return !(number == last || (std::isnan(number) && std::isnan(last)));
}

bool DeadbandFilter::isReported(const ReportedValue &value)
{
    const bool isSameKind = hasLast_ && value.quality == last_.quality &&
                            value.number.has_value() == last_.number.has_value();
    if (isSameKind && (!value.number || !isFar(*value.number)))
        return false;
    last_ = value;
    hasLast_ = true;
    return true;
}

} // namespace kvt
