#include "tags/float_text.h"

#include "tags/decimal.h"
#include "tags/number_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace kvt
{

namespace
{

/// Where the parts of an IEEE 754 number lie.
struct FloatBits {
    int size;         // bits of all
    int fractionSize; // bits of the fraction
};

constexpr FloatBits bitsOf(ValueType type)
{
    return type == ValueType::F32 ? FloatBits{32, 23} : FloatBits{64, 52};
}

constexpr quint64 signBit(ValueType type)
{
    return quint64(1) << (bitsOf(type).size - 1);
}

constexpr quint64 infinityBits(ValueType type)
{
    return signBit(type) - (quint64(1) << bitsOf(type).fractionSize);
}

constexpr quint64 quietNanBits(ValueType type)
{
    return infinityBits(type) | quint64(1) << (bitsOf(type).fractionSize - 1);
}

template <typename Number, typename Bits>
Number numberFrom(quint64 bits)
{
    const auto narrow = static_cast<Bits>(bits);
    Number number = 0;
    std::memcpy(&number, &narrow, sizeof number);
    return number;
}

template <typename Bits, typename Number>
quint64 bitsFrom(Number number)
{
    Bits bits = 0;
    std::memcpy(&bits, &number, sizeof number);
    return bits;
}

EnteredFloat floatFailure(const QString &error)
{
    EnteredFloat entered;
    entered.error = error;
    return entered;
}

/// Reads "nan(0x...)" without its sign; the bits must be those of such a value.
bool readNanBits(ValueType type, const QString &text, quint64 *bits)
{
    if (!text.startsWith(QLatin1String("nan(0x")) || !text.endsWith(QLatin1Char(')')))
        return false;
    bool good = false;
    *bits = text.mid(6, text.size() - 7).toULongLong(&good, 16);
    return good && (type == ValueType::F64 || *bits >> 32 == 0) && isNan(type, *bits);
}

/// Reads the words of values that are no numbers.
bool readWord(ValueType type, const QString &text, quint64 *bits)
{
    const QString lower = text.toLower();
    if (readNanBits(type, lower, bits))
        return true;
    const bool negative = lower.startsWith(QLatin1Char('-'));
    const QString word = negative ? lower.mid(1) : lower;
    if (word == QLatin1String("nan"))
        *bits = quietNanBits(type);
    else if (word == QLatin1String("inf") || word == QLatin1String("infinity"))
        *bits = infinityBits(type);
    else
        return false;
    *bits |= negative ? signBit(type) : 0;
    return true;
}

constexpr int LONGEST_NUMBER = 1100; // an f64 written out has up to 1,079 characters

/// Copies a text that can be a number; 0 characters when it cannot.
int copyNumber(const QString &text, char *buffer)
{
    if (text.size() > LONGEST_NUMBER)
        return 0;
    for (int i = 0; i < text.size(); ++i) {
        const ushort code = text.at(i).unicode();
        const bool fits = (code >= '0' && code <= '9') || code == '.' || code == '-' ||
                          code == '+' || code == 'e' || code == 'E';
        if (!fits)
            return 0;
        buffer[i] = static_cast<char>(code);
    }
    return text.size();
}

bool hasDigitAbove0(const char *text, const char *end)
{
    for (; text != end && *text != 'e' && *text != 'E'; ++text)
        if (*text >= '1' && *text <= '9')
            return true;
    return false;
}

template <typename Number>
Number nearestThatFits(const char *text, const char *end)
{
    const char *const exponent =
        std::find_if(text, end, [](char c) { return c == 'e' || c == 'E'; });
    const bool tiny = exponent != end && exponent + 1 != end && exponent[1] == '-';
    const Number nearest = tiny || *text == '0' || (text[0] == '-' && text[1] == '0')
                               ? Number(0)
                               : std::numeric_limits<Number>::max();
    return *text == '-' ? -nearest : nearest;
}

template <typename Number, typename Bits>
EnteredFloat readFloat(ValueType type, const QString &text)
{
    char buffer[LONGEST_NUMBER];
    const int size = copyNumber(text, buffer);
    const char *const end = buffer + size;
    Number number = 0;
    const std::from_chars_result result = std::from_chars(buffer, end, number);
    if (size == 0 || result.ptr != end || result.ec == std::errc::invalid_argument)
        return floatFailure(numberFault(NumberReading::NotANumber, text));
    const bool vanished = number == 0 && hasDigitAbove0(buffer, end);
    if (result.ec == std::errc::result_out_of_range || std::isinf(number) || vanished) {
        NumberText nearest;
        nearest.appendShortest(nearestThatFits<Number>(buffer, end));
        return floatFailure(QStringLiteral("%1 does not fit %2; the nearest is %3")
                                .arg(text, typeName(type), nearest.toString()));
    }
    EnteredFloat entered;
    entered.bits = bitsFrom<Bits>(number);
    return entered;
}

} // namespace

double floatNumber(ValueType type, quint64 bits)
{
    return type == ValueType::F32 ? static_cast<double>(numberFrom<float, quint32>(bits))
                                  : numberFrom<double, quint64>(bits);
}

quint64 floatBits(ValueType type, double number)
{
    return type == ValueType::F32 ? bitsFrom<quint32>(static_cast<float>(number))
                                  : bitsFrom<quint64>(number);
}

double floatHighest(ValueType type)
{
    return type == ValueType::F32 ? static_cast<double>(std::numeric_limits<float>::max())
                                  : std::numeric_limits<double>::max();
}

bool isNan(ValueType type, quint64 bits)
{
    return (bits & ~signBit(type)) > infinityBits(type);
}

void appendFloat(ValueType type, quint64 bits, NumberText *text)
{
    if (!isNan(type, bits)) {
        if (type == ValueType::F32)
            text->appendShortest(numberFrom<float, quint32>(bits));
        else
            text->appendShortest(numberFrom<double, quint64>(bits));
        return;
    }
    if ((bits & ~signBit(type)) == quietNanBits(type)) {
        text->append(bits == quietNanBits(type) ? "nan" : "-nan");
        return;
    }
    text->append("nan(");
    text->appendHex(bits, bitsOf(type).size / 4);
    text->append(')');
}

EnteredFloat enterFloat(ValueType type, const QString &text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return floatFailure(QStringLiteral("a value is missing"));
    EnteredFloat entered;
    const QChar first =
        trimmed.at(trimmed.startsWith(QLatin1Char('-')) && trimmed.size() > 1 ? 1 : 0);
    if (first.isLetter() && readWord(type, trimmed, &entered.bits))
        return entered;
    return type == ValueType::F32 ? readFloat<float, quint32>(type, trimmed)
                                  : readFloat<double, quint64>(type, trimmed);
}

} // namespace kvt
