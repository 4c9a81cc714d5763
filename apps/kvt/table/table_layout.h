// The columns of the live table, and which of them a terminal has room for.
#ifndef KVT_APPS_KVT_TABLE_TABLE_LAYOUT_H
#define KVT_APPS_KVT_TABLE_TABLE_LAYOUT_H

#include <QString>
#include <QVector>

#include <array>

namespace kvt
{

/// The columns, from left to right.
enum class Column { Tag, Area, Address, Value, Quality, Alarm, Age, Result };
constexpr int COLUMNS = 8;

/// How much a row needs a look; the first comes first where bad rows do.
enum class Concern { Bad, Stale, Unknown, None };

/// One row; the texts are printable.
struct TableRow {
    std::array<QString, COLUMNS> cells;
    Concern concern = Concern::None;      ///< about its quality
    Concern alarmConcern = Concern::None; ///< about its alarm
    bool isUnacknowledged = false;        ///< a person has to see to its alarm

    const QString &cell(Column column) const { return cells.at(static_cast<size_t>(column)); }
    QString &cell(Column column) { return cells.at(static_cast<size_t>(column)); }
};

/// A column that is shown, with its width.
struct PlacedColumn {
    Column column;
    int width;
};

/// Blanks between two columns.
constexpr int COLUMN_GAP = 2;

/// The texts above the columns.
TableRow headingRow();

/// Returns how wide the widest value of the rows is, in columns of a terminal.
int widestValueOf(const QVector<TableRow> &rows);

/// Which columns are shown in a terminal of `width` columns, and how wide: the least important are
/// left out until the others fit. From 40 columns on, tag, value and quality are always there, and
/// from 55 on the whole alarm, which is a column if any row has one. Values have room for
/// `widestValue` columns unless quality or alarm would have to make it.
QVector<PlacedColumn> layOut(const QVector<TableRow> &rows, int width, int widestValue);

/// Values and ages stand on the right of their columns.
Qt::Alignment alignmentOf(Column column);

} // namespace kvt

#endif
