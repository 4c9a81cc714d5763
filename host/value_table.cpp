#include "host/value_table.h"

namespace kvt
{

ValueTable::ValueTable(int cells) : cells_(cells) {}

bool ValueTable::read(int cell, quint16 raw, qint64 now_ns)
{
    Cell &entry = cells_[cell];
    if (entry.pendingWrites > 0)
        return false;
    entry.raw = raw;
    entry.quality = Quality::Good;
    entry.readAt_ns = now_ns;
    return true;
}

void ValueTable::readFailed(int cell)
{
    Cell &entry = cells_[cell];
    if (entry.quality != Quality::NeverRead)
        entry.quality = Quality::Failed;
}

void ValueTable::writeRequested(int cell)
{
    ++cells_[cell].pendingWrites;
}

void ValueTable::writeEnded(int cell)
{
    --cells_[cell].pendingWrites;
}

CellValue ValueTable::value(int cell, qint64 now_ns, qint64 staleAfter_ns) const
{
    const Cell &entry = cells_.at(cell);
    CellValue value;
    value.raw = entry.raw;
    value.quality = entry.quality;
    value.readAt_ns = entry.readAt_ns;
    value.writePending = entry.pendingWrites > 0;
    if (value.quality == Quality::Good && now_ns - entry.readAt_ns > staleAfter_ns)
        value.quality = Quality::Stale;
    return value;
}

} // namespace kvt
