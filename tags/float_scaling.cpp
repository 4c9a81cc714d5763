#include "tags/float_scaling.h"

#include "tags/number_text.h"

#include <charconv>
#include <cmath>

namespace kvt
{

namespace
{

// From here on a double is whole, and longer with decimals than without.
constexpr double LARGEST_FIXED = 1e15;

// Tell any two values of f32 apart.
constexpr int DIGITS_OF_F32 = 9;

} // namespace

FloatScaling::FloatScaling(ValueType type, const ValueRatio &ratio, std::optional<int> decimals)
    : type_(type), factor_(static_cast<double>(ratio.factor)),
      offset_(static_cast<double>(ratio.offset)), divisor_(static_cast<double>(ratio.divisor)),
      isPlain_(ratio.factor == 1 && ratio.offset == 0 && ratio.divisor == 1), decimals_(decimals)
{
}

// Multiplied and then divided by whole numbers, 3 times 0.1 is 0.3, which it is not with the double
// that is nearest to 0.1.
double FloatScaling::forward(double raw) const
{
    if (isPlain_)
        return raw;
    double product = raw * factor_;
    if (std::isinf(product) && std::isfinite(raw))
        return raw * (factor_ / divisor_) + offset_ / divisor_;
    if (offset_ != 0)
        product += offset_;
    return product / divisor_;
}

double FloatScaling::backward(double value) const
{
    const double product = value * divisor_;
    if (std::isinf(product) && std::isfinite(value))
        return value / factor_ * divisor_;
    return (offset_ == 0 ? product : product - offset_) / factor_;
}

bool FloatScaling::comesBack(quint64 bits, const NumberText &text) const
{
    double value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return floatBits(type_, backward(value)) == bits;
}

/// Tries short texts before long ones.
void FloatScaling::appendScaled(quint64 bits, NumberText *text) const
{
    const double value = forward(floatNumber(type_, bits));
    const NumberText before = *text;
    if (type_ == ValueType::F32) {
        text->appendShortest(static_cast<float>(value));
        if (comesBack(bits, *text))
            return;
        *text = before;
        text->appendRounded(value, DIGITS_OF_F32);
        if (comesBack(bits, *text))
            return;
        *text = before;
    }
    text->appendShortest(value);
}

void FloatScaling::append(quint64 bits, NumberText *text) const
{
    if (isNan(type_, bits) || (isPlain_ && !decimals_)) {
        appendFloat(type_, bits, text);
        return;
    }
    const double value = forward(floatNumber(type_, bits));
    if (decimals_ && std::abs(value) < LARGEST_FIXED)
        text->appendFixed(value, *decimals_);
    else if (isPlain_)
        appendFloat(type_, bits, text);
    else
        appendScaled(bits, text);
}

EnteredFloat FloatScaling::enter(const QString &text) const
{
    if (isPlain_ || text.contains(QLatin1String("nan"), Qt::CaseInsensitive))
        return enterFloat(type_, text);
    EnteredFloat entered = enterFloat(ValueType::F64, text);
    if (!entered.error.isEmpty())
        return entered;
    const double value = floatNumber(ValueType::F64, entered.bits);
    entered.bits = floatBits(type_, backward(value));
    if (std::isinf(floatNumber(type_, entered.bits)) && std::isfinite(value)) {
        NumberText nearest;
        const bool negative = (value < 0) != (factor_ < 0);
        append(floatBits(type_, negative ? -floatHighest(type_) : floatHighest(type_)), &nearest);
        entered.error = QStringLiteral("%1 does not fit %2; the nearest is %3")
                            .arg(text.trimmed(), typeName(type_), nearest.toString());
    }
    return entered;
}

} // namespace kvt
