// What a list says about the meaning of a value, as it stands there.
#ifndef KVT_TAGS_MEANING_TEXTS_H
#define KVT_TAGS_MEANING_TEXTS_H

#include "tags/value_type.h"

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

} // namespace kvt

#endif
