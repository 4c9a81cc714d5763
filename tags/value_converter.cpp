#include "tags/value_converter.h"

#include "tags/nearest_word.h"
#include "tags/number_text.h"
#include "tags/string_value.h"
#include "tags/value_elements.h"

#include <cmath>

namespace kvt
{

namespace
{

EnteredValue valueFailure(const QString &error)
{
    EnteredValue entered;
    entered.error = error;
    return entered;
}

constexpr char NO_VALUE[] = "no value lies within min and max";

} // namespace

std::optional<ValueConverter> ValueConverter::make(const ValueForm &form, Area area,
                                                   const MeaningTexts &texts,
                                                   QVector<MeaningProblem> *problems)
{
    QVector<MeaningProblem> wrong;
    ValueConverter converter(form, area, readMeaning(texts, form, area, &wrong));
    const bool good = wrong.isEmpty() && converter.prepare(texts, &wrong);
    *problems += wrong;
    return good ? std::make_optional(converter) : std::nullopt;
}

bool ValueConverter::prepare(const MeaningTexts &texts, QVector<MeaningProblem> *problems)
{
    if (isFloat(form_.type)) {
        float_.emplace(form_.type, meaning_.ratio.value_or(ValueRatio()), meaning_.decimals);
        return true;
    }
    const bool isRaw = !meaning_.ratio && !meaning_.decimals;
    if (!isRaw && !prepareExact(texts, problems))
        return false;
    warnOfLimits(problems);
    return true;
}

bool ValueConverter::prepareExact(const MeaningTexts &texts, QVector<MeaningProblem> *problems)
{
    const ValueRatio ratio = meaning_.ratio.value_or(ValueRatio());
    const int wanted = decimalsOf(ratio);
    const bool given = meaning_.decimals.has_value();
    const bool scaled = !texts[MeaningColumn::Scale].isEmpty();
    const MeaningColumn column = given    ? MeaningColumn::Decimals
                                 : scaled ? MeaningColumn::Scale
                                          : MeaningColumn::High;
    exact_ =
        ExactScaling::make(ratio, meaning_.decimals.value_or(wanted), rawRange(form_.type, area_));
    if (!exact_) {
        problems->append({column, QStringLiteral("values of type %1 would have too many digits to "
                                                 "be reckoned with exactly")
                                      .arg(typeName(form_.type))});
        return false;
    }
    if (!exact_->tellsApart())
        problems->append({column,
                          QStringLiteral("%1 different raw values as one; %2")
                              .arg(exact_->decimals() == 1
                                       ? QStringLiteral("1 decimal shows")
                                       : QStringLiteral("%1 decimals show").arg(exact_->decimals()),
                                   given ? QStringLiteral("%1 would not").arg(wanted)
                                         : QStringLiteral("more are not to be had")),
                          true});
    return true;
}

void ValueConverter::warnOfLimits(QVector<MeaningProblem> *problems) const
{
    const std::optional<DecimalRange> all = range();
    if (!all)
        return;
    const auto doubt = [&](const Decimal &limit, const char *word) {
        if (compare(limit, all->low) < 0 || compare(limit, all->high) > 0)
            return QStringLiteral("%1 is beyond all values (%2 to %3)")
                .arg(decimalText(limit), decimalText(all->low), decimalText(all->high));
        if (!scaling().tellsApart() || scaling().enter(limit).isExact)
            return QString();
        const std::optional<Decimal> taken = nearest(limit);
        return taken ? QStringLiteral("%1 is no value; the %2 that can be entered is %3")
                           .arg(decimalText(limit), QLatin1String(word), decimalText(*taken))
                     : QString::fromLatin1(NO_VALUE);
    };
    const auto warn = [&](MeaningColumn column, const std::optional<Decimal> &limit,
                          const char *word) {
        const QString text = limit ? doubt(*limit, word) : QString();
        if (!text.isEmpty())
            problems->append({column, text, true});
    };
    warn(MeaningColumn::Min, meaning_.min, "lowest");
    warn(MeaningColumn::Max, meaning_.max, "highest");
}

std::optional<DecimalRange> ValueConverter::range() const
{
    if (!isNumeric(form_.type) || isFloat(form_.type))
        return std::nullopt;
    const RawRange raw = rawRange(form_.type, area_);
    DecimalRange range{decimalOf(raw.lowest), decimalOf(raw.highest)};
    if (compare(range.low, range.high) > 0)
        std::swap(range.low, range.high);
    return range;
}

/// Returns the engineering value of a raw number, as it is shown.
Decimal ValueConverter::decimalOf(Int128 raw) const
{
    return exact_ ? Decimal{exact_->shown(raw), exact_->decimals()} : Decimal{raw, 0};
}

bool ValueConverter::isShownAsNumber(quint64 bits) const
{
    return meaning_.bits.isEmpty() && meaning_.labels.nameOf(bits) == nullptr;
}

bool ValueConverter::appendNumber(quint64 bits, NumberText *text) const
{
    if (float_) {
        float_->append(bits, text);
        return true;
    }
    if (!exact_)
        return appendRaw(form_.type, area_, bits, text);
    const std::optional<Int128> raw = rawNumber(form_.type, bits);
    if (raw)
        text->appendDecimal(exact_->shown(*raw), exact_->decimals());
    return raw.has_value();
}

std::optional<double> ValueConverter::number(quint64 bits) const
{
    if (float_)
        return float_->value(bits);
    const std::optional<Int128> raw = rawNumber(form_.type, bits);
    return raw ? std::make_optional(toDouble(decimalOf(*raw))) : std::nullopt;
}

QString ValueConverter::text(quint64 bits) const
{
    const QString *const name = meaning_.labels.nameOf(bits);
    if (name != nullptr)
        return *name;
    if (!meaning_.bits.isEmpty())
        return meaning_.bits.textOf(bits);
    NumberText text;
    return appendNumber(bits, &text) ? text.toString() : QString();
}

QString ValueConverter::textOf(const quint16 *elements) const
{
    if (form_.type == ValueType::String)
        return stringText(form_, stringBytes(form_, area_, elements)).value_or(QString());
    return text(joinElements(form_, area_, elements));
}

QString ValueConverter::enterInto(const QString &text, quint16 *elements) const
{
    if (form_.type == ValueType::String) {
        const EnteredString entered = enterString(form_, text);
        if (entered.error.isEmpty())
            putStringBytes(form_, area_, entered.bytes, elements);
        return entered.error;
    }
    const EnteredValue entered = enter(text);
    if (entered.error.isEmpty())
        splitElements(form_, area_, entered.bits, elements);
    return entered.error;
}

/// Takes the unit away from a number that is followed by it. A unit that begins with a digit must
/// stand apart, and so must a letter that could be part of the number, as in 0x1F.
QString ValueConverter::withoutUnit(const QString &text) const
{
    const QString &unit = meaning_.unit;
    if (unit.isEmpty() || text.size() <= unit.size() || !text.endsWith(unit))
        return text;
    const QString number = text.left(text.size() - unit.size());
    const QChar last = number.at(number.size() - 1);
    const bool apart = last.isSpace() || !unit.at(0).isLetterOrNumber() ||
                       (unit.at(0).isLetter() && last.isDigit() && !isNumberText(text));
    return apart ? number.trimmed() : text;
}

std::optional<quint64> ValueConverter::named(const QString &text) const
{
    if (!meaning_.labels.isEmpty())
        return meaning_.labels.bitsOf(text);
    return meaning_.bits.isEmpty() ? std::nullopt : meaning_.bits.bitsOf(text);
}

EnteredValue ValueConverter::enter(const QString &text) const
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return valueFailure(QStringLiteral("a value is missing"));
    const std::optional<quint64> bits = named(trimmed);
    EnteredValue entered;
    if (!bits) {
        const QString number = withoutUnit(trimmed);
        entered = enterNumber(number);
        if (!entered.error.isEmpty() && !isNumberText(number))
            entered.error += namesInstead(trimmed);
        return entered;
    }
    const std::optional<Int128> raw = rawNumber(form_.type, *bits);
    entered.bits = *bits;
    entered.error = raw ? limitFault(decimalOf(*raw), trimmed) : QString();
    return entered;
}

/// Says behind a refusal which names there are; empty where there are none.
QString ValueConverter::namesInstead(const QString &text) const
{
    if (!meaning_.labels.isEmpty())
        return QStringLiteral("; the labels are ") + likelyNames(text, meaning_.labels.names());
    if (meaning_.bits.isEmpty())
        return QString();
    return QStringLiteral("; the bits are ") +
           likelyNames(meaning_.bits.unknownIn(text), meaning_.bits.names());
}

EnteredValue ValueConverter::enterNumber(const QString &text) const
{
    if (float_)
        return enterFloating(text);
    return exact_ ? enterExact(text) : enterWhole(text);
}

// What is not written as a raw number, such as 1e3, may still be one.
EnteredValue ValueConverter::enterWhole(const QString &text) const
{
    const EnteredRaw raw = enterRaw(form_.type, area_, text);
    if (!raw.error.isEmpty() && isNumeric(form_.type)) {
        Decimal value;
        const NumberReading reading = readDecimal(text, &value);
        if (reading == NumberReading::Good)
            return enterDecimal(value, text);
        if (hasDecimalComma(text))
            return valueFailure(numberFault(reading, text));
    }
    if (!raw.error.isEmpty())
        return valueFailure(raw.error);
    EnteredValue entered;
    entered.bits = rawBits(form_.type, raw.number);
    entered.error = limitFault({raw.number, 0}, text);
    return entered;
}

EnteredValue ValueConverter::enterExact(const QString &text) const
{
    Decimal value;
    const NumberReading reading = readDecimal(text, &value);
    if (reading == NumberReading::Good)
        return enterDecimal(value, text);
    const bool isHex = enterRaw(ValueType::U64, area_, text).error.isEmpty();
    return valueFailure(
        numberFault(reading, text) +
        (isHex ? QStringLiteral("; hexadecimal is for values without scale and decimals")
               : QString()));
}

EnteredValue ValueConverter::enterDecimal(const Decimal &value, const QString &text) const
{
    EnteredValue entered;
    entered.error = limitFault(value, text);
    if (!entered.error.isEmpty())
        return entered;
    const ScaledRaw scaled = exact_ ? exact_->enter(value) : scaling().enter(value);
    entered.bits = rawBits(form_.type, scaled.raw);
    entered.error = scaled.isExact ? QString() : misfit(text, value, scaled.inRange);
    return entered;
}

QString ValueConverter::misfit(const QString &text, const Decimal &value, bool inRange) const
{
    if (inRange)
        return QStringLiteral("%1 cannot be had exactly; %2").arg(text, nearestText(value));
    const DecimalRange all = *range();
    return QStringLiteral("%1 does not fit %2 (%3 to %4); %5")
        .arg(text, typeName(form_.type), decimalText(all.low), decimalText(all.high),
             nearestText(value));
}

EnteredValue ValueConverter::enterFloating(const QString &text) const
{
    EnteredValue entered;
    if (meaning_.min || meaning_.max) {
        Decimal value;
        entered.error = readDecimal(text, &value) == NumberReading::Good ? limitFault(value, text)
                                                                         : floatLimitFault(text);
        if (!entered.error.isEmpty())
            return entered;
    }
    const EnteredFloat read = float_->enter(text);
    entered.bits = read.bits;
    entered.error = read.error;
    return entered;
}

QString ValueConverter::limitFault(const Decimal &value, const QString &text) const
{
    if (meaning_.min && compare(value, *meaning_.min) < 0)
        return beyond("below min", text, *meaning_.min);
    if (meaning_.max && compare(value, *meaning_.max) > 0)
        return beyond("above max", text, *meaning_.max);
    return QString();
}

/// For infinities and numbers too long or too large to be compared otherwise.
QString ValueConverter::floatLimitFault(const QString &text) const
{
    const EnteredFloat read = enterFloat(ValueType::F64, text);
    if (!read.error.isEmpty())
        return QString();
    const double value = floatNumber(ValueType::F64, read.bits);
    if (std::isnan(value))
        return QStringLiteral("%1 is no number, and lies in no limits").arg(text);
    if (meaning_.min && value < toDouble(*meaning_.min))
        return beyond("below min", text, *meaning_.min);
    if (meaning_.max && value > toDouble(*meaning_.max))
        return beyond("above max", text, *meaning_.max);
    return QString();
}

QString ValueConverter::beyond(const char *word, const QString &text, const Decimal &limit) const
{
    return QStringLiteral("%1 is %2, which is %3; %4")
        .arg(text, QLatin1String(word), decimalText(limit), nearestText(limit));
}

/// Returns the nearest value that would be taken. Floats take their limits as they are.
std::optional<Decimal> ValueConverter::nearest(const Decimal &value) const
{
    return float_ ? std::make_optional(value)
                  : nearestTaken(scaling(), {meaning_.min, meaning_.max}, value);
}

QString ValueConverter::nearestText(const Decimal &value) const
{
    const std::optional<Decimal> taken = nearest(value);
    return taken ? QStringLiteral("the nearest is %1").arg(decimalText(*taken))
                 : QString::fromLatin1(NO_VALUE);
}

/// Raw numbers are scaled by 1.
ExactScaling ValueConverter::scaling() const
{
    return exact_ ? *exact_ : *ExactScaling::make(ValueRatio(), 0, rawRange(form_.type, area_));
}

} // namespace kvt
