#include "tags/raw_number.h"

#include "tags/decimal.h"
#include "tags/number_text.h"

namespace kvt
{

namespace
{

constexpr Int128 ONE = 1;

std::optional<Int128> bcdNumber(quint64 bits, int digits)
{
    quint32 number = 0;
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) {
        const auto digit = static_cast<quint32>(bits >> shift & 0xF);
        if (digit > 9)
            return std::nullopt;
        number = number * 10 + digit;
    }
    return number;
}

quint64 bcdBits(Int128 number)
{
    quint64 bits = 0;
    auto rest = static_cast<quint64>(number);
    for (int shift = 0; rest != 0; shift += 4, rest /= 10)
        bits |= rest % 10 << shift;
    return bits;
}

bool isTruth(ValueType type)
{
    return type == ValueType::Bool || type == ValueType::Bit;
}

/// Turns the words for a truth value into its digit; anything else stays as it is.
QString truthDigit(const QString &text)
{
    for (const char *word : {"true", "on"})
        if (text.compare(QLatin1String(word), Qt::CaseInsensitive) == 0)
            return QStringLiteral("1");
    for (const char *word : {"false", "off"})
        if (text.compare(QLatin1String(word), Qt::CaseInsensitive) == 0)
            return QStringLiteral("0");
    return text;
}

QString rangeText(ValueType type, const RawRange &range)
{
    if (type == ValueType::Hex)
        return QStringLiteral("0 to 0x") +
               QString::number(static_cast<int>(range.highest), 16).toUpper();
    return QStringLiteral("%1 to %2")
        .arg(decimalText({range.lowest, 0}), decimalText({range.highest, 0}));
}

EnteredRaw rawFailure(const QString &error)
{
    EnteredRaw entered;
    entered.error = error;
    return entered;
}

EnteredRaw notARaw(ValueType type, const QString &text)
{
    const QString error = QStringLiteral("\"%1\" is not a %2 value").arg(text, typeName(type));
    if (isTruth(type))
        return rawFailure(error + QStringLiteral(" (0, 1, off, on, false or true)"));
    return rawFailure(truthDigit(text) == text ? error
                                               : error + QStringLiteral(" but one of type bool"));
}

int digitOf(QChar character)
{
    const char letter = character.toLower().toLatin1();
    if (letter >= '0' && letter <= '9')
        return letter - '0';
    return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : 16;
}

/// Reads digits of a base; none when there is none or something else. Numbers beyond every range
/// come back as 2^96.
std::optional<Int128> readDigits(QStringView text, int base)
{
    Int128 number = 0;
    for (const QChar character : text) {
        const int digit = digitOf(character);
        if (digit >= base)
            return std::nullopt;
        number = qMin(number * base + digit, ONE << 96);
    }
    return text.isEmpty() ? std::nullopt : std::make_optional(number);
}

std::optional<Int128> readWhole(ValueType type, QStringView text)
{
    const bool prefixed =
        !isTruth(type) && text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
    if (prefixed || type == ValueType::Hex)
        return readDigits(prefixed ? text.mid(2) : text, 16);
    if (!text.startsWith(QLatin1Char('-')))
        return readDigits(text, 10);
    const std::optional<Int128> number = readDigits(text.mid(1), 10);
    return number ? std::make_optional(-*number) : std::nullopt;
}

} // namespace

RawRange rawRange(ValueType type, Area area)
{
    const auto isUnsigned = [](int bits) { return RawRange{0, (ONE << bits) - 1}; };
    const auto isSigned = [](int bits) {
        return RawRange{-(ONE << (bits - 1)), (ONE << (bits - 1)) - 1};
    };
    switch (type) {
    case ValueType::Bool:
    case ValueType::Bit:
        return {0, 1};
    case ValueType::U8:
        return isUnsigned(8);
    case ValueType::S8:
        return isSigned(8);
    case ValueType::U16:
        return isUnsigned(16);
    case ValueType::S16:
        return isSigned(16);
    case ValueType::U32:
        return isUnsigned(32);
    case ValueType::S32:
        return isSigned(32);
    case ValueType::S64:
        return isSigned(64);
    case ValueType::Bcd16:
        return {0, 9999};
    case ValueType::Bcd32:
        return {0, 99999999};
    case ValueType::Hex:
        return isUnsigned(8 * valueSize(area));
    case ValueType::U64:
    case ValueType::F32:
    case ValueType::F64:
    case ValueType::String:
        break;
    }
    return isUnsigned(64);
}

std::optional<Int128> rawNumber(ValueType type, quint64 bits)
{
    switch (type) {
    case ValueType::S8:
        return static_cast<qint8>(bits);
    case ValueType::S16:
        return static_cast<qint16>(bits);
    case ValueType::S32:
        return static_cast<qint32>(bits);
    case ValueType::S64:
        return static_cast<qint64>(bits);
    case ValueType::Bcd16:
        return bcdNumber(bits, 4);
    case ValueType::Bcd32:
        return bcdNumber(bits, 8);
    default:
        return bits;
    }
}

quint64 rawBits(ValueType type, Int128 number)
{
    const auto bits = static_cast<quint64>(number);
    switch (type) {
    case ValueType::S8:
        return bits & 0xFF;
    case ValueType::S16:
        return bits & 0xFFFF;
    case ValueType::S32:
        return bits & 0xFFFFFFFF;
    case ValueType::Bcd16:
    case ValueType::Bcd32:
        return bcdBits(number);
    default:
        return bits;
    }
}

bool appendRaw(ValueType type, Area area, quint64 bits, NumberText *text)
{
    if (type == ValueType::Hex) {
        text->appendHex(bits, 2 * valueSize(area));
        return true;
    }
    const std::optional<Int128> number = rawNumber(type, bits);
    if (number)
        text->appendDecimal(*number, 0);
    return number.has_value();
}

EnteredRaw enterRaw(ValueType type, Area area, const QString &text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return rawFailure(QStringLiteral("a value is missing"));
    const std::optional<Int128> number =
        readWhole(type, isTruth(type) ? truthDigit(trimmed) : trimmed);
    if (!number)
        return notARaw(type, trimmed);
    const RawRange range = rawRange(type, area);
    if (*number < range.lowest || *number > range.highest)
        return rawFailure(QStringLiteral("%1 does not fit %2 (%3)")
                              .arg(trimmed, typeName(type), rangeText(type, range)));
    EnteredRaw entered;
    entered.number = *number;
    return entered;
}

} // namespace kvt
