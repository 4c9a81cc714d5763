#include "tags/tag_value.h"

#include "tags/number_text.h"
#include "tags/raw_number.h"

namespace kvt
{

QString formatValue(Area area, ValueType type, const QByteArray &bytes)
{
    const int size = valueSize(area);
    if (bytes.size() < size)
        return QString();
    quint64 bits = static_cast<quint8>(bytes[0]);
    if (size == 2)
        bits += static_cast<quint8>(bytes[1]) * 256U;
    if (type == ValueType::Bool)
        bits = bits != 0 ? 1 : 0;
    NumberText text;
    appendRaw(type, area, bits, &text);
    return text.toString();
}

ParsedValue parseValue(Area area, ValueType type, const QString &text)
{
    const EnteredRaw entered = enterRaw(type, area, text);
    ParsedValue result;
    result.error = entered.error;
    if (!entered.error.isEmpty())
        return result;
    const quint64 bits = rawBits(type, entered.number);
    result.bytes.append(static_cast<char>(bits & 0xFF));
    if (valueSize(area) == 2)
        result.bytes.append(static_cast<char>(bits >> 8 & 0xFF));
    return result;
}

} // namespace kvt
