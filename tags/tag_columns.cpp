#include "tags/tag_columns.h"

#include <QVector>

namespace kvt
{

namespace
{

/// Returns how many characters must be put in, taken out or changed to make one text the other.
int editDistance(const QString &from, const QString &to)
{
    QVector<int> row(to.size() + 1);
    for (int i = 0; i <= to.size(); ++i)
        row[i] = i;
    for (int i = 0; i < from.size(); ++i) {
        int diagonal = row[0];
        row[0] = i + 1;
        for (int k = 0; k < to.size(); ++k) {
            const int change = diagonal + (from.at(i) == to.at(k) ? 0 : 1);
            diagonal = row[k + 1];
            row[k + 1] = qMin(change, qMin(row[k], diagonal) + 1);
        }
    }
    return row.last();
}

} // namespace

QString tagColumnName(int column)
{
    static const char *const names[] = {"name", "area",        "address", "station",
                                        "type", "description", "order"};
    return column < FIRST_MEANING
               ? QString(QLatin1String(names[column]))
               : meaningColumnName(static_cast<MeaningColumn>(column - FIRST_MEANING));
}

int tagColumnOf(const QString &title)
{
    for (int column = 0; column < COLUMN_COUNT; ++column)
        if (title.compare(tagColumnName(column), Qt::CaseInsensitive) == 0)
            return column;
    return -1;
}

QString likelyColumnName(const QString &title)
{
    constexpr int LONGEST_TITLE = 40; // nothing longer is like a name
    const QString lower = title.left(LONGEST_TITLE).toLower();
    QString likely;
    int best = 1 + lower.size() / 3; // of four letters one may be wrong
    for (int column = 0; column < COLUMN_COUNT; ++column) {
        const int distance = editDistance(lower, tagColumnName(column));
        if (distance < best) {
            best = distance;
            likely = tagColumnName(column);
        }
    }
    return likely;
}

} // namespace kvt
