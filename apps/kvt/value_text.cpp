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

/// Returns the number that a text stands for, NaN where it is none.
double numberOf(const QString &text)
{
    bool isNumber = false;
    const double number = text.startsWith(QLatin1String("0x"))
                              ? static_cast<double>(text.midRef(2).toULongLong(&isNumber, 16))
                              : text.toDouble(&isNumber);
    return isNumber ? number : std::nan("");
}

/// A number, or its text where a number would not be the same.
QJsonValue numberOrText(double number, const QString &text)
{
    return std::isfinite(number) && std::abs(number) <= LARGEST_EXACT ? QJsonValue(number)
                                                                      : QJsonValue(text);
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
    if (!converter(tag).unit().isEmpty())
        text += QLatin1Char(' ') + converter(tag).unit();
    return differs ? QStringLiteral("%1 (%2)").arg(text, raw) : text;
}

void ValueTexts::insertInto(int tag, const TagValue &value, QJsonObject *object) const
{
    if (!value.isKnown)
        return;
    const ValueConverter &shows = converter(tag);
    const ValueForm &form = shows.form();
    const QString text = shown(tag, value);
    const QString raw = rawText(tag, value);
    object->insert(QStringLiteral("text"), text);
    if (!shows.unit().isEmpty())
        object->insert(QStringLiteral("unit"), shows.unit());
    if (form.type == ValueType::String) {
        object->insert(QStringLiteral("value"), text);
        object->insert(QStringLiteral("raw"), raw);
        return;
    }
    NumberText number;
    const bool isNumber = shows.appendNumber(value.raw, &number);
    const QString numberText = isNumber ? number.toString() : raw;
    object->insert(QStringLiteral("value"), numberOrText(numberOf(numberText), numberText));
    object->insert(QStringLiteral("raw"), numberOrText(numberOf(raw), raw));
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
