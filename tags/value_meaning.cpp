#include "tags/value_meaning.h"

namespace kvt
{

namespace
{

using Column = MeaningColumn;

/// Reads the texts of one value.
class MeaningReader
{
public:
    MeaningReader(const MeaningTexts &texts, const ValueForm &form, Area area,
                  QVector<MeaningProblem> *problems)
        : texts_(texts), form_(form), area_(area), problems_(problems)
    {
    }

    ValueMeaning read();

private:
    bool has(Column column) const { return !texts_[column].isEmpty(); }
    void fail(Column column, const QString &text) { problems_->append({column, text, false}); }
    void refuse(Column column, bool fits);
    void refuseMisfits();
    std::optional<Decimal> number(Column column) { return numberIn(texts_, column, problems_); }
    void readRatio();
    void readScale();
    void readRange();
    void readDecimals();
    void readLimits();
    void readNames();

    const MeaningTexts &texts_;
    const ValueForm &form_;
    Area area_;
    QVector<MeaningProblem> *problems_;
    ValueMeaning meaning_;
};

void MeaningReader::refuse(Column column, bool fits)
{
    if (has(column) && !fits)
        fail(column, QStringLiteral("values of type %1 have none").arg(typeName(form_.type)));
}

void MeaningReader::refuseMisfits()
{
    const ValueType type = form_.type;
    for (const Column column :
         {Column::Scale, Column::Offset, Column::RawLow, Column::RawHigh, Column::Low, Column::High,
          Column::Decimals, Column::Min, Column::Max, Column::Unit})
        refuse(column, isNumeric(type));
    refuse(Column::Labels, !isFloat(type) && type != ValueType::String);
    refuse(Column::Bits, type == ValueType::Hex || type == ValueType::U8 ||
                             type == ValueType::U16 || type == ValueType::U32 ||
                             type == ValueType::U64);
    if (has(Column::Labels) && has(Column::Bits))
        fail(Column::Bits, QStringLiteral("a value has either labels or bits"));
}

void MeaningReader::readScale()
{
    const std::optional<Decimal> scale = number(Column::Scale);
    const std::optional<Decimal> offset = number(Column::Offset);
    if ((has(Column::Scale) && !scale) || (has(Column::Offset) && !offset))
        return;
    if (scale && scale->mantissa == 0) {
        fail(Column::Scale, QStringLiteral("0 makes all values one"));
        return;
    }
    meaning_.ratio = ratioOfScale(scale.value_or(Decimal{1, 0}), offset.value_or(Decimal()));
    if (!meaning_.ratio)
        fail(has(Column::Scale) ? Column::Scale : Column::Offset,
             QStringLiteral("scale and offset have too many digits to be reckoned with exactly"));
}

void MeaningReader::readRange()
{
    const Column ends[] = {Column::RawLow, Column::RawHigh, Column::Low, Column::High};
    Decimal read[4];
    bool complete = true;
    for (int i = 0; i < 4; ++i) {
        if (!has(ends[i]))
            fail(ends[i],
                 QStringLiteral("is missing: raw_low, raw_high, low and high go together"));
        const std::optional<Decimal> end = number(ends[i]);
        complete = complete && end.has_value();
        read[i] = end.value_or(Decimal());
    }
    if (!complete)
        return;
    for (int i = 1; i < 4; i += 2) {
        if (compare(read[i - 1], read[i]) == 0) {
            fail(ends[i], QStringLiteral("is equal to %1").arg(meaningColumnName(ends[i - 1])));
            return;
        }
    }
    meaning_.ratio = ratioOfRange({read[0], read[1]}, {read[2], read[3]});
    if (!meaning_.ratio)
        fail(Column::High, QStringLiteral("the four ends have too many digits to be reckoned with "
                                          "exactly"));
}

void MeaningReader::readRatio()
{
    const bool scaled = has(Column::Scale) || has(Column::Offset);
    const bool ranged =
        has(Column::RawLow) || has(Column::RawHigh) || has(Column::Low) || has(Column::High);
    if (scaled && ranged)
        fail(has(Column::Scale) ? Column::Scale : Column::Offset,
             QStringLiteral(
                 "a value has either scale and offset or raw_low, raw_high, low and high"));
    else if (scaled)
        readScale();
    else if (ranged)
        readRange();
}

void MeaningReader::readDecimals()
{
    const std::optional<Decimal> decimals = number(Column::Decimals);
    if (!decimals)
        return;
    if (decimals->places == 0 && decimals->mantissa >= 0 && decimals->mantissa <= MOST_DECIMALS)
        meaning_.decimals = static_cast<int>(decimals->mantissa);
    else
        fail(Column::Decimals, QStringLiteral("\"%1\" is no number of decimals (0 to %2)")
                                   .arg(texts_[Column::Decimals], QString::number(MOST_DECIMALS)));
}

void MeaningReader::readLimits()
{
    meaning_.min = number(Column::Min);
    meaning_.max = number(Column::Max);
    if (meaning_.min && meaning_.max && compare(*meaning_.min, *meaning_.max) > 0)
        fail(Column::Max, QStringLiteral("%1 is below min, which is %2")
                              .arg(texts_[Column::Max], texts_[Column::Min]));
}

void MeaningReader::readNames()
{
    const QString labels =
        ValueLabels::parse(texts_[Column::Labels], form_, area_, &meaning_.labels);
    if (!labels.isEmpty())
        fail(Column::Labels, labels);
    const QString bits = BitNames::parse(texts_[Column::Bits], form_, area_, &meaning_.bits);
    if (!bits.isEmpty())
        fail(Column::Bits, bits);
}

ValueMeaning MeaningReader::read()
{
    const int before = problems_->size();
    refuseMisfits();
    if (problems_->size() > before)
        return meaning_;
    readRatio();
    readDecimals();
    readLimits();
    readNames();
    meaning_.unit = texts_[Column::Unit];
    return meaning_;
}

} // namespace

ValueMeaning readMeaning(const MeaningTexts &texts, const ValueForm &form, Area area,
                         QVector<MeaningProblem> *problems)
{
    return MeaningReader(texts, form, area, problems).read();
}

} // namespace kvt
