#include "simulator/serial_ledger.h"

namespace kvt
{

namespace
{

constexpr qint64 LONG_AGO = std::numeric_limits<qint64>::min();

} // namespace

int SerialLedger::addCell()
{
    cells_.append(Cell());
    return cells_.size() - 1;
}

int SerialLedger::valuesPerCell() const
{
    return qMax(1, values_ / cells_.size());
}

int SerialLedger::issue(int cell, qint64 time_ns)
{
    Cell &entry = cells_[cell];
    if (entry.lastIssued.isEmpty())
        entry.lastIssued.fill(LONG_AGO, valuesPerCell());
    const int round = entry.issued;
    entry.issued = (entry.issued + 1) % valuesPerCell();
    entry.lastIssued[round] = time_ns;
    return (cell + round * cells_.size()) % values_;
}

bool SerialLedger::wasIssued(int cell, int value, qint64 since_ns) const
{
    const Cell &entry = cells_[cell];
    const int round = value / cells_.size();
    if (round >= entry.lastIssued.size() || (cell + round * cells_.size()) % values_ != value)
        return false;
    return entry.lastIssued[round] != LONG_AGO && entry.lastIssued[round] >= since_ns;
}

int SerialLedger::ownerOf(int value) const
{
    return cells_.isEmpty() ? -1 : value % cells_.size();
}

} // namespace kvt
