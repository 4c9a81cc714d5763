#include "apps/kvt/value_text.h"

#include "apps/kvt/outcome_text.h"
#include "tags/tag_value.h"

namespace kvt
{

QString rawText(const Tag &tag, quint16 raw)
{
    QByteArray bytes(1, static_cast<char>(raw & 0xFF));
    bytes.append(static_cast<char>(raw >> 8));
    return formatValue(tag.area, tag.form.type, bytes);
}

QString valueText(const Tag &tag, const TagValue &value)
{
    return value.quality == Quality::NeverRead ? QStringLiteral("-")
                                               : rawText(tag, static_cast<quint16>(value.raw));
}

QString resultText(const TagResult &result, bool stationIsOff)
{
    const bool hasFailed = result.code != 0 && result.end != AttemptEnd::Replied;
    if (stationIsOff && !hasFailed)
        return QStringLiteral("off");
    const QString text = result.code == 0 ? QString() : outcomeText(result.end, result.code);
    return stationIsOff ? QStringLiteral("off: ") + text : text;
}

int valueNumber(const Tag &tag, quint16 raw)
{
    return tag.form.type == ValueType::S16 ? static_cast<qint16>(raw) : raw;
}

QString placeText(const Tag &tag)
{
    const QString place =
        QStringLiteral("%1 %2 at station %3").arg(areaName(tag.area), tag.address).arg(tag.station);
    return tag.name.isEmpty() ? place : QStringLiteral("%1 (%2)").arg(tag.name, place);
}

} // namespace kvt
