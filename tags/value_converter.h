// Values of one tag: bits to what people read, and what they enter to bits.
//
// Numbers have a point as decimal sign, whatever the locale. What is shown can be entered again and
// gives the same bits, as long as the steps of the value are no finer than its last decimal; what
// an entered number stands for must be shown just as it was entered, or be it exactly: anything
// else is refused with the nearest number that can be had. Floats take the nearest value instead.
#ifndef KVT_TAGS_VALUE_CONVERTER_H
#define KVT_TAGS_VALUE_CONVERTER_H

#include "tags/exact_scaling.h"
#include "tags/float_scaling.h"
#include "tags/value_limits.h"
#include "tags/value_meaning.h"

namespace kvt
{

class NumberText;

/// The bits of an entered value, or what is wrong with it.
struct EnteredValue {
    quint64 bits = 0;
    QString error; ///< empty when all is well
};

/// Converts the values of one tag. Does not change once made: any thread.
class ValueConverter
{
public:
    /// Prepares values of a form that fits `area`. What is wrong with or doubtful about the texts
    /// is appended to `*problems`, not null; none when something is wrong.
    static std::optional<ValueConverter> make(const ValueForm &form, Area area,
                                              const MeaningTexts &texts,
                                              QVector<MeaningProblem> *problems);

    const ValueForm &form() const { return form_; }
    const QString &unit() const { return meaning_.unit; }

    /// Returns the lowest and the highest value, as they are shown. None for floats, which have
    /// infinities, and for types that are not scaled.
    std::optional<DecimalRange> range() const;

    /// Appends the number that the bits of a value stand for, without its unit. Returns false, and
    /// appends nothing, when they stand for none: BCD with a digit above 9. Not for strings.
    /// Nothing is allocated.
    bool appendNumber(quint64 bits, NumberText *text) const;

    /// Returns the number as the nearest double; none where `appendNumber` has none. Not for
    /// strings.
    std::optional<double> number(quint64 bits) const;

    /// Returns what is shown for the bits: the label, the names of the bits that are set, or the
    /// number. A null text when they stand for none. Not for strings.
    QString text(quint64 bits) const;

    /// True where `text` shows the number, which its unit stands behind, and no names.
    bool isShownAsNumber(quint64 bits) const;

    /// Reads what is shown, a number with or without its unit, a name in any case. Not for strings.
    EnteredValue enter(const QString &text) const;

    /// Returns what is shown for elements, as many as `elementCount` says; a null text when they
    /// are no value of the type: BCD with a digit above 9, a string that is not of its encoding.
    QString textOf(const quint16 *elements) const;

    /// Puts an entered value into elements; a bit is put into its element as it stands. Returns an
    /// empty text, or says what is wrong and leaves the elements alone.
    QString enterInto(const QString &text, quint16 *elements) const;

private:
    ValueConverter(const ValueForm &form, Area area, const ValueMeaning &meaning)
        : form_(form), area_(area), meaning_(meaning)
    {
    }

    bool prepare(const MeaningTexts &texts, QVector<MeaningProblem> *problems);
    bool prepareExact(const MeaningTexts &texts, QVector<MeaningProblem> *problems);
    void warnOfLimits(QVector<MeaningProblem> *problems) const;
    QString withoutUnit(const QString &text) const;
    std::optional<quint64> named(const QString &text) const;
    QString namesInstead(const QString &text) const;
    EnteredValue enterNumber(const QString &text) const;
    EnteredValue enterWhole(const QString &text) const;
    EnteredValue enterExact(const QString &text) const;
    EnteredValue enterDecimal(const Decimal &value, const QString &text) const;
    EnteredValue enterFloating(const QString &text) const;
    QString misfit(const QString &text, const Decimal &value, bool inRange) const;
    QString limitFault(const Decimal &value, const QString &text) const;
    QString floatLimitFault(const QString &text) const;
    QString beyond(const char *word, const QString &text, const Decimal &limit) const;
    std::optional<Decimal> nearest(const Decimal &value) const;
    QString nearestText(const Decimal &value) const;
    ExactScaling scaling() const;
    Decimal decimalOf(Int128 raw) const;

    ValueForm form_;
    Area area_;
    ValueMeaning meaning_;
    std::optional<ExactScaling> exact_; // none: raw values, floats
    std::optional<FloatScaling> float_;
};

} // namespace kvt

#endif
