#include "tags/tag_value.h"

namespace kvt
{

namespace
{

struct Range {
    int lowest;
    int highest;
};

Range rangeOf(Area area, ValueType type)
{
    switch (type) {
    case ValueType::Bool:
        return {0, 1};
    case ValueType::U8:
        return {0, 255};
    case ValueType::S16:
        return {-32768, 32767};
    case ValueType::U16:
        return {0, 65535};
    case ValueType::Hex:
        break;
    }
    return {0, area == Area::D ? 65535 : 255};
}

ParsedValue failure(const QString &error)
{
    ParsedValue result;
    result.error = error;
    return result;
}

QString misfit(Area area, ValueType type, const QString &text)
{
    const Range range = rangeOf(area, type);
    if (type == ValueType::Hex)
        return QStringLiteral("%1 does not fit hex (0 to 0x%2)")
            .arg(text, QString::number(range.highest, 16).toUpper());
    return QStringLiteral("%1 does not fit %2 (%3 to %4)")
        .arg(text, typeName(type), QString::number(range.lowest), QString::number(range.highest));
}

ParsedValue fromNumber(Area area, int value)
{
    ParsedValue result;
    result.bytes.append(static_cast<char>(value & 0xFF));
    if (valueSize(area) == 2)
        result.bytes.append(static_cast<char>((value >> 8) & 0xFF));
    return result;
}

/// Turns the words for a bool into its digit; anything else stays as it is.
QString boolDigit(const QString &text)
{
    const QString word = text.toLower();
    if (word == QLatin1String("true") || word == QLatin1String("on"))
        return QStringLiteral("1");
    if (word == QLatin1String("false") || word == QLatin1String("off"))
        return QStringLiteral("0");
    return text;
}

QString notAValue(ValueType type, const QString &text)
{
    const QString error = QStringLiteral("\"%1\" is not a %2 value").arg(text, typeName(type));
    return boolDigit(text) == text ? error : error + QStringLiteral(" but one of type bool");
}

bool isNumber(const QString &text, int base)
{
    const int first = base == 10 && text.startsWith(QLatin1Char('-')) ? 1 : 0;
    for (int i = first; i < text.size(); ++i) {
        const char character = text[i].toLower().toLatin1();
        const bool digit = character >= '0' && character <= '9';
        const bool letter = base == 16 && character >= 'a' && character <= 'f';
        if (!digit && !letter)
            return false;
    }
    return text.size() > first;
}

} // namespace

QString formatValue(Area area, ValueType type, const QByteArray &bytes)
{
    const int size = valueSize(area);
    if (bytes.size() < size)
        return QString();
    int value = static_cast<quint8>(bytes[0]);
    if (size == 2)
        value += static_cast<quint8>(bytes[1]) * 256;
    if (type == ValueType::Bool)
        return value != 0 ? QStringLiteral("1") : QStringLiteral("0");
    if (type == ValueType::S16)
        return QString::number(static_cast<qint16>(value));
    if (type == ValueType::Hex)
        return QStringLiteral("0x") +
               QString::number(value, 16).toUpper().rightJustified(2 * size, QLatin1Char('0'));
    return QString::number(value);
}

ParsedValue parseValue(Area area, ValueType type, const QString &text)
{
    QString digits = text.trimmed();
    if (digits.isEmpty())
        return failure(QStringLiteral("a value is missing"));
    const bool hasPrefix =
        type != ValueType::Bool && digits.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
    const int base = type == ValueType::Hex || hasPrefix ? 16 : 10;
    if (hasPrefix)
        digits = digits.mid(2);
    if (type == ValueType::Bool)
        digits = boolDigit(digits);
    if (!isNumber(digits, base))
        return failure(notAValue(type, text.trimmed()));
    bool fits = false;
    const int value = digits.toInt(&fits, base);
    const Range range = rangeOf(area, type);
    if (!fits || value < range.lowest || value > range.highest)
        return failure(misfit(area, type, text.trimmed()));
    return fromNumber(area, value);
}

} // namespace kvt
