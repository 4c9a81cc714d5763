#include "apps/kvt/table/table_layout.h"

#include "apps/kvt/table/printable.h"

#include <algorithm>

namespace kvt
{

namespace
{

// The least that is of use of the two columns that may be cut.
constexpr int LEAST_TAG = 16;
constexpr int LEAST_RESULT = 13; // "no reply (41)"

// What comes and goes does not move the columns beside it: these hold all that usually occurs.
constexpr int VALUE_WIDTH = 8;
constexpr int QUALITY_WIDTH = 10;
constexpr int ALARM_WIDTH = 15; // "hihi suppressed"
constexpr int AGE_WIDTH = 8;

constexpr Column LEAST_IMPORTANT_FIRST[] = {Column::Area,   Column::Address, Column::Age,
                                            Column::Result, Column::Alarm,   Column::Quality,
                                            Column::Value};

int widestOf(const QVector<TableRow> &rows, Column column)
{
    int width = displayWidth(headingRow().cell(column));
    for (const TableRow &row : rows)
        width = std::max(width, displayWidth(row.cell(column)));
    return width;
}

int leastWidth(const QVector<TableRow> &rows, Column column)
{
    switch (column) {
    case Column::Tag:
        return std::min(widestOf(rows, column), LEAST_TAG);
    case Column::Area:
    case Column::Address:
        return widestOf(rows, column);
    case Column::Value:
        return VALUE_WIDTH;
    case Column::Quality:
        return QUALITY_WIDTH;
    case Column::Alarm:
        return ALARM_WIDTH;
    case Column::Age:
        return AGE_WIDTH;
    case Column::Result:
        break;
    }
    return LEAST_RESULT;
}

int totalOf(const QVector<PlacedColumn> &columns)
{
    int total = COLUMN_GAP * (columns.size() - 1);
    for (const PlacedColumn &placed : columns)
        total += placed.width;
    return total;
}

bool isShown(const QVector<TableRow> &rows, Column column)
{
    return column != Column::Alarm ||
           std::any_of(rows.begin(), rows.end(),
                       [](const TableRow &row) { return !row.cell(Column::Alarm).isEmpty(); });
}

// The tag gets its whole name first, the result whatever is left then.
void spread(const QVector<TableRow> &rows, int width, QVector<PlacedColumn> *columns)
{
    PlacedColumn &tag = columns->first();
    const int rest = width - totalOf(*columns);
    tag.width = std::max(tag.width + std::min(rest, widestOf(rows, Column::Tag) - tag.width), 0);
    if (columns->last().column == Column::Result)
        columns->last().width += std::max(width - totalOf(*columns), 0);
}

} // namespace

TableRow headingRow()
{
    return {{QStringLiteral("tag"), QStringLiteral("area"), QStringLiteral("address"),
             QStringLiteral("value"), QStringLiteral("quality"), QStringLiteral("alarm"),
             QStringLiteral("age"), QStringLiteral("result")},
            Concern::None};
}

QVector<PlacedColumn> layOut(const QVector<TableRow> &rows, int width)
{
    QVector<PlacedColumn> columns;
    for (int i = 0; i < COLUMNS; ++i)
        if (isShown(rows, static_cast<Column>(i)))
            columns.append({static_cast<Column>(i), leastWidth(rows, static_cast<Column>(i))});
    for (const Column least : LEAST_IMPORTANT_FIRST) {
        if (totalOf(columns) <= width)
            break;
        columns.erase(
            std::remove_if(columns.begin(), columns.end(),
                           [&](const PlacedColumn &placed) { return placed.column == least; }),
            columns.end());
    }
    spread(rows, width, &columns);
    return columns;
}

Qt::Alignment alignmentOf(Column column)
{
    return column == Column::Value || column == Column::Age ? Qt::AlignRight : Qt::AlignLeft;
}

} // namespace kvt
