// What the bits of a value mean to people, as the columns of a list say it.
#ifndef KVT_TAGS_VALUE_MEANING_H
#define KVT_TAGS_VALUE_MEANING_H

#include "tags/meaning_texts.h"
#include "tags/value_labels.h"
#include "tags/value_ratio.h"

namespace kvt
{

/// What these columns say, read.
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
