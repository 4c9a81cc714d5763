// What a list says in a group of its columns, as it stands there.
#ifndef KVT_TAGS_COLUMN_TEXTS_H
#define KVT_TAGS_COLUMN_TEXTS_H

#include "tags/decimal.h"

#include <QVector>

#include <array>
#include <optional>

namespace kvt
{

/// The texts of the COUNT columns that an enumeration names; an empty one says nothing.
template <typename Column, int COUNT>
struct ColumnTexts {
    std::array<QString, COUNT> texts;

    QString &operator[](Column column) { return texts[static_cast<size_t>(column)]; }
    const QString &operator[](Column column) const { return texts[static_cast<size_t>(column)]; }
};

/// True when all texts are equal.
template <typename Column, int COUNT>
bool operator==(const ColumnTexts<Column, COUNT> &a, const ColumnTexts<Column, COUNT> &b)
{
    return a.texts == b.texts;
}

/// What is wrong with one of the texts, or only doubtful.
template <typename Column>
struct ColumnProblem {
    Column column;
    QString text;
    bool isWarning = false;
};

/// Reads a column that holds a number; none when it says nothing, or something else, which is
/// appended to `*problems`, not null.
template <typename Column, int COUNT>
std::optional<Decimal> numberIn(const ColumnTexts<Column, COUNT> &texts, Column column,
                                QVector<ColumnProblem<Column>> *problems)
{
    if (texts[column].isEmpty())
        return std::nullopt;
    Decimal number;
    const NumberReading reading = readDecimal(texts[column], &number);
    if (reading == NumberReading::Good)
        return number;
    problems->append({column, numberFault(reading, texts[column]), false});
    return std::nullopt;
}

} // namespace kvt

#endif
