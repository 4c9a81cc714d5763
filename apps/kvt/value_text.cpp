#include "apps/kvt/value_text.h"

#include "apps/kvt/outcome_text.h"
#include "tags/float_text.h"
#include "tags/number_text.h"
#include "tags/raw_number.h"
#include "tags/value_elements.h"

#include <cmath>

namespace kvt
{

namespace
{

constexpr double LARGEST_EXACT = 9007199254740992; // 2^53: a JSON reader may keep no more

ValueConverter converterOf(const Tag &tag)
{
    QVector<MeaningProblem> problems;
    std::optional<ValueConverter> converter =
        ValueConverter::make(tag.form, tag.area, tag.meaning, &problems);
    // A list without errors has one of each.
    return converter ? *converter
                     : *ValueConverter::make(tag.form, tag.area, MeaningTexts(), &problems);
}

bool isKept(double number)
{
    return std::isfinite(number) && std::abs(number) <= LARGEST_EXACT;
}

/// Returns the number of a float as its text has it: 21.4, and not all digits of its bits.
QJsonValue floatToJson(const QString &text)
{
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    return isNumber && isKept(number) ? QJsonValue(number) : QJsonValue(text);
}

} // namespace

ValueTexts::ValueTexts(const QVector<Tag> &tags) : tags_(tags)
{
    for (const Tag &tag : tags)
        converters_.push_back(converterOf(tag));
}

QString ValueTexts::shown(int tag, const TagValue &value) const
{
    const ValueConverter &shows = converter(tag);
    const QString text = shows.form().type == ValueType::String
                             ? shows.textOf(value.elements.constData())
                             : shows.text(value.raw);
    return text.isNull() ? QStringLiteral("?") : text;
}

QString ValueTexts::rawText(int tag, const TagValue &value) const
{
    const ValueForm &form = converter(tag).form();
    const Area area = tags_.at(tag).area;
    if (form.type == ValueType::String)
        return QLatin1String(stringBytes(form, area, value.elements.constData()).toHex(' '));
    NumberText text;
    if (isFloat(form.type))
        appendFloat(form.type, value.raw, &text);
    else if (!appendRaw(form.type, area, value.raw, &text))
        text.appendHex(value.raw, 2 * byteCount(form, area));
    return text.toString();
}

QString ValueTexts::text(int tag, const TagValue &value) const
{
    if (!value.isKnown)
        return QStringLiteral("-");
    QString text = shown(tag, value);
    const bool isText = converter(tag).form().type == ValueType::String;
    const QString raw = isText ? QString() : rawText(tag, value);
    const bool differs = !isText && raw != text;
    if (!converter(tag).unit().isEmpty() && converter(tag).isShownAsNumber(value.raw))
        text += QLatin1Char(' ') + converter(tag).unit();
    return differs ? QStringLiteral("%1 (%2)").arg(text, raw) : text;
}

QJsonValue ValueTexts::rawToJson(int tag, const TagValue &value) const
{
    const ValueType type = converter(tag).form().type;
    if (type == ValueType::String)
        return rawText(tag, value);
    if (isFloat(type))
        return floatToJson(rawText(tag, value));
    const std::optional<Int128> raw = rawNumber(type, value.raw);
    const double number = raw ? static_cast<double>(*raw) : LARGEST_EXACT * 2;
    return isKept(number) ? QJsonValue(number) : QJsonValue(rawText(tag, value));
}

QJsonValue ValueTexts::valueToJson(int tag, const TagValue &value) const
{
    const ValueConverter &shows = converter(tag);
    if (shows.form().type == ValueType::String)
        return shown(tag, value);
    const std::optional<double> number = shows.number(value.raw);
    if (number && isKept(*number) && !isFloat(shows.form().type))
        return *number;
    NumberText text;
    return shows.appendNumber(value.raw, &text) ? floatToJson(text.toString())
                                                : QJsonValue(rawText(tag, value));
}

void ValueTexts::insertInto(int tag, const TagValue &value, QJsonObject *object) const
{
    if (!value.isKnown)
        return;
    object->insert(QStringLiteral("value"), valueToJson(tag, value));
    object->insert(QStringLiteral("raw"), rawToJson(tag, value));
    object->insert(QStringLiteral("text"), shown(tag, value));
    if (!converter(tag).unit().isEmpty())
        object->insert(QStringLiteral("unit"), converter(tag).unit());
}

QJsonObject tagToJson(const Tag &tag)
{
    QJsonObject object{
        {QStringLiteral("area"), areaName(tag.area)},
        {QStringLiteral("address"), tag.address},
        {QStringLiteral("station"), tag.station},
    };
    if (!tag.name.isEmpty())
        object.insert(QStringLiteral("name"), tag.name);
    return object;
}

QString resultText(const TagResult &result, bool stationIsOff)
{
    const bool hasFailed = result.code != 0 && result.end != AttemptEnd::Replied;
    if (stationIsOff && !hasFailed)
        return QStringLiteral("off");
    const QString text = result.code == 0 ? QString() : outcomeText(result.end, result.code);
    return stationIsOff ? QStringLiteral("off: ") + text : text;
}

QString placeText(const Tag &tag)
{
    const QString place =
        QStringLiteral("%1 %2 at station %3").arg(areaName(tag.area), tag.address).arg(tag.station);
    return tag.name.isEmpty() ? place : QStringLiteral("%1 (%2)").arg(tag.name, place);
}

} // namespace kvt
