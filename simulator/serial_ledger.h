// Serial numbers that prove to which cell a value belongs.
//
// The values of one width are dealt out among the serial cells of that width: with n cells, cell k
// answers k, k + n, k + 2n and so on and then starts again. A value that is delivered to another
// cell of that width is therefore told at once, not only probably. There are 65,536 values for the
// words of area D and 256 for the bytes of areas X and C together; beyond 256 cells of a byte,
// every 256th shares its one value.
#ifndef KVT_SIMULATOR_SERIAL_LEDGER_H
#define KVT_SIMULATOR_SERIAL_LEDGER_H

#include <QVector>

#include <limits>

namespace kvt
{

/// The serial numbers of all cells of one width. Times are nanoseconds. Not thread-safe.
class SerialLedger
{
public:
    /// `values` is how many values the width has (256 or 65,536).
    explicit SerialLedger(int values) : values_(values) {}

    /// Adds a cell and returns its number k. All cells must be added before the first `issue`.
    int addCell();

    /// Returns the next serial of a cell and notes that it was sent at `time_ns`.
    int issue(int cell, qint64 time_ns);

    /// True when `value` was issued to `cell` at `since_ns` or later.
    bool wasIssued(int cell, int value, qint64 since_ns) const;

    /// Returns the cell to which `value` belongs (with more cells than values, the first of them);
    /// -1 when there are no cells.
    int ownerOf(int value) const;

private:
    struct Cell {
        int issued = 0;
        QVector<qint64> lastIssued; ///< time of the last issue of each of the cell's values
    };

    int valuesPerCell() const;

    int values_;
    QVector<Cell> cells_;
};

} // namespace kvt

#endif
