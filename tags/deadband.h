// Which changes of a value are worth a report.
#ifndef KVT_TAGS_DEADBAND_H
#define KVT_TAGS_DEADBAND_H

#include "tags/value_meaning.h"

#include <optional>

namespace kvt
{

/// Reads a deadband: a number that is not negative, "0.5", in the units of the value, or a
/// percentage from 0 to 100, "2%", of the range low to high, or min to max where that one is not
/// given. Returns an empty text and sets `*width`, or says what is wrong.
QString parseDeadband(const QString &text, const MeaningTexts &meaning, double *width);

/// What a report says of a value.
struct ReportedValue {
    std::optional<double> number; ///< none: there is no number
    int quality = 0;              ///< any code; other codes are other qualities
};

/// Decides which values of one tag are reported: those that are farther from the one reported last
/// than the deadband is wide. The values in between move nothing, so that a slow drift is reported
/// too. Without a clock; one thread.
class DeadbandFilter
{
public:
    /// `width` is not negative; with 0 each change is reported.
    explicit DeadbandFilter(double width = 0) : width_(width) {}

    /// True when the value is to be reported; it counts as reported from then on. The first one
    /// is, and each whose quality is another or which has a number where there was none, or none
    /// where there was one.
    bool isReported(const ReportedValue &value);

private:
    bool isFar(double number) const;

    double width_;
    ReportedValue last_;
    bool hasLast_ = false;
};

} // namespace kvt

#endif
