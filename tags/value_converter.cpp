#include "tags/value_converter.h"

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

/// The ends of a range, as an entered text would lie beyond them.
QString beyond(const char *word, const QString &text, const Decimal &limit)
{
    return QStringLiteral("%1 is %2, which is %3; the nearest is %3")
        .arg(text, QLatin1String(word), decimalText(limit));
}

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
                          QStringLiteral("%1 decimals show different raw values as one; %2")
                              .arg(QString::number(exact_->decimals()),
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
    const auto warn = [&](MeaningColumn column, const std::optional<Decimal> &limit) {
        if (limit && (compare(*limit, all->low) < 0 || compare(*limit, all->high) > 0))
            problems->append(
                {column,
                 QStringLiteral("%1 is beyond all values (%2 to %3)")
                     .arg(decimalText(*limit), decimalText(all->low), decimalText(all->high)),
                 true});
    };
    warn(MeaningColumn::Min, meaning_.min);
    warn(MeaningColumn::Max, meaning_.max);
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

/// Takes the unit away from a number that is followed by it; a unit that begins with a letter or a
/// digit must stand apart.
QString ValueConverter::withoutUnit(const QString &text) const
{
    const QString &unit = meaning_.unit;
    if (unit.isEmpty() || text.size() <= unit.size() || !text.endsWith(unit))
        return text;
    const QString number = text.left(text.size() - unit.size());
    const bool apart = number.at(number.size() - 1).isSpace() || !unit.at(0).isLetterOrNumber();
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
    const QString trimmed = withoutUnit(text.trimmed());
    if (trimmed.isEmpty())
        return valueFailure(QStringLiteral("a value is missing"));
    const std::optional<quint64> bits = named(trimmed);
    if (!bits)
        return enterNumber(trimmed);
    const std::optional<Int128> raw = rawNumber(form_.type, *bits);
    EnteredValue entered;
    entered.bits = *bits;
    entered.error = raw ? limitFault(decimalOf(*raw), trimmed) : QString();
    return entered;
}

EnteredValue ValueConverter::enterNumber(const QString &text) const
{
    if (float_)
        return enterFloating(text);
    return exact_ ? enterExact(text) : enterWhole(text);
}

EnteredValue ValueConverter::enterWhole(const QString &text) const
{
    const EnteredRaw raw = enterRaw(form_.type, area_, text);
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
    if (reading != NumberReading::Good)
        return valueFailure(numberFault(reading, text));
    EnteredValue entered;
    entered.error = limitFault(value, text);
    if (!entered.error.isEmpty())
        return entered;
    const ScaledRaw scaled = exact_->enter(value);
    entered.bits = rawBits(form_.type, scaled.raw);
    entered.error = scaled.isExact ? QString() : misfit(text, scaled);
    return entered;
}

QString ValueConverter::misfit(const QString &text, const ScaledRaw &scaled) const
{
    const RawRange range = rawRange(form_.type, area_);
    const QString nearest = decimalText(decimalOf(scaled.raw));
    if (scaled.inRange)
        return QStringLiteral("%1 cannot be had exactly; the nearest is %2").arg(text, nearest);
    return QStringLiteral("%1 does not fit %2 (%3 to %4); the nearest is %5")
        .arg(text, typeName(form_.type), decimalText(decimalOf(range.lowest)),
             decimalText(decimalOf(range.highest)), nearest);
}

EnteredValue ValueConverter::enterFloating(const QString &text) const
{
    const EnteredFloat read = float_->enter(text);
    EnteredValue entered;
    entered.bits = read.bits;
    entered.error = read.error;
    if (entered.error.isEmpty() && (meaning_.min || meaning_.max)) {
        Decimal value;
        entered.error = readDecimal(text, &value) == NumberReading::Good
                            ? limitFault(value, text)
                            : floatLimitFault(float_->value(read.bits), text);
    }
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
QString ValueConverter::floatLimitFault(double value, const QString &text) const
{
    if (std::isnan(value))
        return QStringLiteral("%1 is no number, and lies in no limits").arg(text);
    if (meaning_.min && value < toDouble(*meaning_.min))
        return beyond("below min", text, *meaning_.min);
    if (meaning_.max && value > toDouble(*meaning_.max))
        return beyond("above max", text, *meaning_.max);
    return QString();
}

} // namespace kvt
