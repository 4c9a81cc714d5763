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
constexpr int LONG_VALUE_WIDTH = 24; // more only where nothing else wants it
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
    case Column::Quality:
        return QUALITY_WIDTH;
    case Column::Alarm:
        return ALARM_WIDTH;
    case Column::Age:
        return AGE_WIDTH;
    case Column::Value: // as its caller says
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

// The columns that a terminal has room for, each as narrow as is of use.
QVector<PlacedColumn> narrowest(const QVector<TableRow> &rows, int width, int valueWidth)
{
    QVector<PlacedColumn> columns;
    for (int i = 0; i < COLUMNS; ++i) {
        const auto column = static_cast<Column>(i);
        if (isShown(rows, column))
            columns.append(
                {column, column == Column::Value ? valueWidth : leastWidth(rows, column)});
    }
    for (const Column least : LEAST_IMPORTANT_FIRST) {
        if (totalOf(columns) <= width)
            break;
        columns.erase(
            std::remove_if(columns.begin(), columns.end(),
                           [&](const PlacedColumn &placed) { return placed.column == least; }),
            columns.end());
    }
    return columns;
}

PlacedColumn *find(QVector<PlacedColumn> *columns, Column column)
{
    auto *const found =
        std::find_if(columns->begin(), columns->end(),
                     [column](const PlacedColumn &placed) { return placed.column == column; });
    return found == columns->end() ? nullptr : found;
}

// Widens a column that is shown, up to `wanted` and to what there is room for.
void widen(QVector<PlacedColumn> *columns, Column column, int wanted, int width)
{
    PlacedColumn *const placed = find(columns, column);
    if (placed == nullptr)
        return;
    const int rest = width - totalOf(*columns);
    placed->width = std::max(placed->width + std::min(rest, wanted - placed->width), 0);
}

// Values are shown whole first, then the names of tags; the result gets whatever is left.
void spread(const QVector<TableRow> &rows, int width, int widestValue,
            QVector<PlacedColumn> *columns)
{
    widen(columns, Column::Value, std::max(widestValue, VALUE_WIDTH), width);
    widen(columns, Column::Tag, widestOf(rows, Column::Tag), width);
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

int widestValueOf(const QVector<TableRow> &rows)
{
    return widestOf(rows, Column::Value);
}

QVector<PlacedColumn> layOut(const QVector<TableRow> &rows, int width, int widestValue)
{
    const int wanted = std::min(std::max(widestValue, VALUE_WIDTH), LONG_VALUE_WIDTH);
    QVector<PlacedColumn> columns = narrowest(rows, width, wanted);
    if (find(&columns, Column::Quality) == nullptr ||
        (isShown(rows, Column::Alarm) && find(&columns, Column::Alarm) == nullptr))
        columns = narrowest(rows, width, VALUE_WIDTH);
    spread(rows, width, widestValue, &columns);
    return columns;
}

Qt::Alignment alignmentOf(Column column)
{
    return column == Column::Value || column == Column::Age ? Qt::AlignRight : Qt::AlignLeft;
}

} // namespace kvt
