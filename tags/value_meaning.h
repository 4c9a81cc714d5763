// What the bits of a value mean to people, as the columns of a list say it.
#ifndef KVT_TAGS_VALUE_MEANING_H
#define KVT_TAGS_VALUE_MEANING_H

#include "tags/value_labels.h"
#include "tags/value_ratio.h"

#include <array>

namespace kvt
{

/// The columns about a value's meaning.
enum class MeaningColumn {
    Scale,
    Offset,
    RawLow,
    RawHigh,
    Low,
    High,
    Unit,
    Decimals,
    Min,
    Max,
    Labels,
    Bits
};

constexpr int MEANING_COLUMNS = 12;

/// Returns "scale", "offset", "raw_low" and so on.
QString meaningColumnName(MeaningColumn column);

/// The texts of these columns; an empty one says nothing.
struct MeaningTexts {
    std::array<QString, MEANING_COLUMNS> texts;

    QString &operator[](MeaningColumn column) { return texts[static_cast<size_t>(column)]; }
    const QString &operator[](MeaningColumn column) const
    {
        return texts[static_cast<size_t>(column)];
    }
};

/// True when all texts are equal.
inline bool operator==(const MeaningTexts &a, const MeaningTexts &b)
{
    return a.texts == b.texts;
}

/// What is wrong with one of the texts, or only doubtful.
struct MeaningProblem {
    MeaningColumn column;
    QString text;
    bool isWarning = false;
};

/// The same, read.
struct ValueMeaning {
    std::optional<ValueRatio> ratio; ///< none: values are raw
    std::optional<int> decimals;     ///< none: as many as the ratio asks for
    std::optional<Decimal> min;      ///< of what may be entered
    std::optional<Decimal> max;
    QString unit;
    ValueLabels labels;
    BitNames bits;
};

/// Reads the texts for values of a form that fits `area`. Everything wrong is appended to
/// `*problems`, not null; what is wrong is left out of the result.
ValueMeaning readMeaning(const MeaningTexts &texts, const ValueForm &form, Area area,
                         QVector<MeaningProblem> *problems);

} // namespace kvt

#endif
