// Engineering values of floats.
#ifndef KVT_TAGS_FLOAT_SCALING_H
#define KVT_TAGS_FLOAT_SCALING_H

#include "tags/float_text.h"
#include "tags/value_ratio.h"

namespace kvt
{

/// Converts the bits of f32 or f64 to what is shown, and back. What is no number is never scaled:
/// it keeps its bits. Infinities take the sign of the line, and -0 stays -0 where nothing is added.
/// Any thread.
class FloatScaling
{
public:
    /// Prepares a line; values are shown with `decimals` (0 to 15), or with as many digits as bring
    /// their bits back when there is none.
    FloatScaling(ValueType type, const ValueRatio &ratio, std::optional<int> decimals);

    /// Returns the engineering value of the bits.
    double value(quint64 bits) const { return forward(floatNumber(type_, bits)); }

    /// Appends what is shown for the bits. With neither a line nor decimals the text brings all
    /// bits back, of f32 also with a line to which nothing is added. Nothing is allocated.
    void append(quint64 bits, NumberText *text) const;

    /// Reads what was entered. The value nearest to the number is taken; a number that no value of
    /// the type is near to is refused.
    EnteredFloat enter(const QString &text) const;

private:
    double forward(double raw) const;
    double backward(double value) const;
    bool comesBack(quint64 bits, const NumberText &text) const;
    void appendScaled(quint64 bits, NumberText *text) const;

    ValueType type_;
    double factor_;
    double offset_;
    double divisor_;
    bool isPlain_; // the line changes nothing
    std::optional<int> decimals_;
};

} // namespace kvt

#endif
