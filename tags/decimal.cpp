#include "tags/decimal.h"

#include "tags/number_text.h"

#include <charconv>
#include <cmath>

namespace kvt
{

namespace
{

constexpr int MOST_DIGITS = 36;
constexpr int MOST_PLACES = 30;
constexpr int LARGEST_EXPONENT = 9999;

bool isDigit(QChar character)
{
    return character >= QLatin1Char('0') && character <= QLatin1Char('9');
}

/// Reads a decimal number from the left.
class DecimalReader
{
public:
    explicit DecimalReader(const QString &text) : next_(text.cbegin()), end_(text.cend()) {}
    NumberReading read(Decimal *number);

private:
    bool skip(char character);
    void readDigits(bool behindPoint);
    bool readExponent();
    NumberReading settle(Decimal *number) const;

    QString::const_iterator next_;
    QString::const_iterator end_;
    Int128 mantissa_ = 0;
    int digits_ = 0;      // seen
    int significant_ = 0; // behind leading zeros, without trailing ones
    int zeros_ = 0;       // seen but not yet part of the mantissa
    int exponent_ = 0;    // of ten, of the mantissa
};

bool DecimalReader::skip(char character)
{
    if (next_ == end_ || *next_ != QLatin1Char(character))
        return false;
    ++next_;
    return true;
}

// A zero is taken up only when another digit follows it: "1.500" is as short as "1.5".
void DecimalReader::readDigits(bool behindPoint)
{
    for (; next_ != end_ && isDigit(*next_); ++next_, ++digits_) {
        const int digit = next_->unicode() - '0';
        if (behindPoint)
            --exponent_;
        if (digit == 0) {
            zeros_ += mantissa_ != 0 ? 1 : 0;
            continue;
        }
        significant_ += zeros_ + 1;
        if (significant_ <= MOST_DIGITS) {
            for (; zeros_ > 0; --zeros_)
                mantissa_ *= 10;
            mantissa_ = mantissa_ * 10 + digit;
        }
        zeros_ = 0;
    }
}

bool DecimalReader::readExponent()
{
    if (!skip('e') && !skip('E'))
        return true;
    const bool negative = skip('-');
    if (!negative)
        skip('+');
    int exponent = 0;
    const QString::const_iterator first = next_;
    for (; next_ != end_ && isDigit(*next_); ++next_)
        exponent = qMin(exponent * 10 + next_->unicode() - '0', LARGEST_EXPONENT);
    exponent_ += negative ? -exponent : exponent;
    return next_ != first;
}

NumberReading DecimalReader::settle(Decimal *number) const
{
    const int exponent = exponent_ + zeros_;
    if (mantissa_ == 0) {
        *number = Decimal();
        return NumberReading::Good;
    }
    if (significant_ > MOST_DIGITS || exponent < -MOST_PLACES ||
        significant_ + exponent > MOST_DIGITS)
        return NumberReading::TooManyDigits;
    Int128 mantissa = mantissa_;
    multiplyByTens(&mantissa, qMax(exponent, 0));
    *number = Decimal{mantissa, qMax(-exponent, 0)};
    return NumberReading::Good;
}

NumberReading DecimalReader::read(Decimal *number)
{
    const bool negative = skip('-');
    readDigits(false);
    if (skip('.')) {
        const int ahead = digits_;
        readDigits(true);
        if (digits_ == ahead)
            return NumberReading::NotANumber; // "1." looks cut off
    }
    if (digits_ == 0 || !readExponent() || next_ != end_)
        return NumberReading::NotANumber;
    const NumberReading reading = settle(number);
    if (negative)
        number->mantissa = -number->mantissa;
    return reading;
}

} // namespace

NumberReading readDecimal(const QString &text, Decimal *number)
{
    Decimal read;
    const NumberReading reading = DecimalReader(text).read(&read);
    if (reading == NumberReading::Good)
        *number = read;
    return reading;
}

int compare(const Decimal &a, const Decimal &b)
{
    Int128 left = a.mantissa;
    Int128 right = b.mantissa;
    // What has no room any more is further from 0 than anything that has.
    if (!multiplyByTens(&left, qMax(b.places - a.places, 0)))
        return left < 0 ? -1 : 1;
    if (!multiplyByTens(&right, qMax(a.places - b.places, 0)))
        return right < 0 ? 1 : -1;
    return left < right ? -1 : left > right ? 1 : 0;
}

double toDouble(const Decimal &number)
{
    static constexpr qint64 TENS[] = {1,
                                      10,
                                      100,
                                      1000,
                                      10000,
                                      100000,
                                      1000000,
                                      10000000,
                                      100000000,
                                      1000000000,
                                      10000000000,
                                      100000000000,
                                      1000000000000,
                                      10000000000000,
                                      100000000000000,
                                      1000000000000000};
    constexpr UInt128 LARGEST_EXACT = UInt128(1) << 53;
    constexpr int ROOM = 63; // bits that a number of 64 has beside it
    const UInt128 size = magnitude(number.mantissa);
    if (number.places < 16 && size >> 64 == 0) {
        const qint64 divisor = TENS[number.places];
        // Both exact as doubles: one division rounds once.
        if (size < LARGEST_EXACT)
            return static_cast<double>(number.mantissa) / static_cast<double>(divisor);
        // More bits of the quotient than a double has, the last of them for all that follow: they
        // are rounded once.
        const UInt128 wide = size << ROOM;
        const UInt128 quotient = wide / static_cast<UInt128>(divisor);
        const bool isExact = quotient * static_cast<UInt128>(divisor) == wide;
        const double result =
            std::ldexp(static_cast<double>(quotient | (isExact ? 0U : 1U)), -ROOM);
        return number.mantissa < 0 ? -result : result;
    }
    NumberText text;
    text.appendDecimal(number.mantissa, number.places);
    double result = 0;
    std::from_chars(text.data(), text.data() + text.size(), result);
    return result;
}

QString decimalText(const Decimal &number)
{
    NumberText text;
    text.appendDecimal(number.mantissa, number.places);
    return text.toString();
}

bool hasDecimalComma(const QString &text)
{
    QString pointed = text;
    Decimal ignored;
    return text.count(QLatin1Char(',')) == 1 &&
           readDecimal(pointed.replace(QLatin1Char(','), QLatin1Char('.')), &ignored) ==
               NumberReading::Good;
}

QString numberFault(NumberReading reading, const QString &text)
{
    if (reading == NumberReading::TooManyDigits)
        return QStringLiteral(
                   "%1 has more digits than can be reckoned with (36, 30 of them decimals)")
            .arg(text);
    if (hasDecimalComma(text))
        return QStringLiteral("\"%1\" has a comma where a point is needed").arg(text);
    return QStringLiteral("\"%1\" is not a number").arg(text);
}

} // namespace kvt
