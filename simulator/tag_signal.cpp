#include "simulator/tag_signal.h"

#include "tags/float_text.h"
#include "tags/raw_number.h"
#include "tags/value_converter.h"
#include "tags/value_elements.h"

#include <algorithm>
#include <cmath>

namespace kvt
{

namespace
{

constexpr int LAST_POSITION = 10000;
constexpr qint64 USUAL_PERIOD_ns = Q_INT64_C(60000000000);
constexpr qint64 MOST_STEPS = 1000; // that are caught up with when nobody has read for long
constexpr int USUAL_LIMIT = 1000000;
constexpr double USUAL_FLOAT_LIMIT = 100;

/// Of the tag without limits: a sensor may say what nobody may enter.
std::optional<ValueConverter> converterOf(const Tag &tag)
{
    MeaningTexts meaning = tag.meaning;
    meaning[MeaningColumn::Min].clear();
    meaning[MeaningColumn::Max].clear();
    QVector<MeaningProblem> problems;
    return ValueConverter::make(tag.form, tag.area, meaning, &problems);
}

/// Returns the nearest value of a number that cannot be had exactly; none where there is none.
std::optional<quint64> nearestBits(const Tag &tag, const ValueConverter &converter,
                                   const QString &text)
{
    Decimal wanted;
    if (!isNumeric(tag.form.type) || isFloat(tag.form.type) ||
        readDecimal(text, &wanted) != NumberReading::Good)
        return std::nullopt;
    const double first = *converter.number(rawBits(tag.form.type, 0));
    const double step = *converter.number(rawBits(tag.form.type, 1)) - first;
    const double raw = std::round((toDouble(wanted) - first) / step);
    const RawRange range = rawRange(tag.form.type, tag.area);
    if (!(raw >= static_cast<double>(range.lowest) && raw <= static_cast<double>(range.highest)))
        return std::nullopt;
    return rawBits(tag.form.type, std::min(static_cast<Int128>(raw), range.highest));
}

/// Reads an end of a signal's range.
EnteredValue enteredEnd(const Tag &tag, const QString &text)
{
    const std::optional<ValueConverter> converter = converterOf(tag);
    EnteredValue entered = converter->enter(text);
    const std::optional<quint64> nearest =
        entered.error.isEmpty() ? std::nullopt : nearestBits(tag, *converter, text);
    return nearest ? EnteredValue{*nearest, QString()} : entered;
}

/// Returns the ends of the range of a tag without one of its own: what may be entered, or what its
/// type holds.
quint64 usualEnd(const Tag &tag, bool high)
{
    const QString &limit = tag.meaning[high ? MeaningColumn::Max : MeaningColumn::Min];
    const EnteredValue allowed = limit.isEmpty() ? EnteredValue() : enteredEnd(tag, limit);
    if (!limit.isEmpty() && allowed.error.isEmpty())
        return allowed.bits;
    if (isFloat(tag.form.type))
        return floatBits(tag.form.type, high ? USUAL_FLOAT_LIMIT : -USUAL_FLOAT_LIMIT);
    if (tag.form.type == ValueType::String)
        return high ? LAST_POSITION : 0;
    const RawRange range = rawRange(tag.form.type, tag.area);
    const Int128 end = high ? std::min<Int128>(range.highest, USUAL_LIMIT)
                            : std::max<Int128>(range.lowest, -USUAL_LIMIT);
    return rawBits(tag.form.type, end);
}

quint64 endOf(const Tag &tag, const QString &text, bool high)
{
    return text.isEmpty() ? usualEnd(tag, high) : enteredEnd(tag, text).bits;
}

} // namespace

QString signalFault(const SignalRule &rule, const Tag &tag)
{
    if (rule.kind == SignalKind::Serial || rule.kind == SignalKind::Mixed)
        return QStringLiteral("a single tag has no such signal");
    if (rule.low.isEmpty() && rule.high.isEmpty())
        return QString();
    if (tag.form.type == ValueType::String)
        return QStringLiteral("a string has no range");
    for (const QString &text : {rule.low, rule.high}) {
        const EnteredValue entered = enteredEnd(tag, text);
        if (!entered.error.isEmpty())
            return entered.error;
    }
    return QString();
}

TagSignal::TagSignal(const Tag &tag, const SignalRule &rule, quint32 start, quint64 seed)
    : form_(tag.form), area_(tag.area), signal_(rule.kind, {0, LAST_POSITION}, start, seed),
      lowBits_(endOf(tag, rule.low, false)), highBits_(endOf(tag, rule.high, true)),
      stepTime_ns_(std::max<qint64>(
          (rule.period_ns > 0 ? rule.period_ns : USUAL_PERIOD_ns) / stepsOf(rule.kind), 1)),
      elements_(elementCount(tag.form, tag.area))
{
    show(signal_.next());
}

const QVector<quint16> &TagSignal::elements(qint64 time_ns)
{
    const qint64 step = time_ns / stepTime_ns_;
    for (qint64 left = std::min(step - step_, MOST_STEPS); left > 0; --left)
        show(signal_.next());
    step_ = std::max(step, step_);
    return elements_;
}

void TagSignal::show(int position)
{
    if (form_.type == ValueType::String) {
        putStringBytes(form_, area_, QByteArray::number(position), elements_.data());
        return;
    }
    quint64 bits = 0;
    if (isFloat(form_.type)) {
        const double low = floatNumber(form_.type, lowBits_);
        const double high = floatNumber(form_.type, highBits_);
        bits = floatBits(form_.type, low + (high - low) * position / LAST_POSITION);
    } else {
        const Int128 low = rawNumber(form_.type, lowBits_).value_or(0);
        const Int128 high = rawNumber(form_.type, highBits_).value_or(0);
        bits = rawBits(form_.type, low + (high - low) * position / LAST_POSITION);
    }
    splitElements(form_, area_, bits, elements_.data());
}

} // namespace kvt
