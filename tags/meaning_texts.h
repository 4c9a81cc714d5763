// What a list says about the meaning of a value, as it stands there.
#ifndef KVT_TAGS_MEANING_TEXTS_H
#define KVT_TAGS_MEANING_TEXTS_H

#include "tags/column_texts.h"

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

/// True for columns that hold a number, which may have a decimal comma.
bool isNumberColumn(MeaningColumn column);

using MeaningTexts = ColumnTexts<MeaningColumn, MEANING_COLUMNS>;
using MeaningProblem = ColumnProblem<MeaningColumn>;

} // namespace kvt

#endif
