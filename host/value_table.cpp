#include "host/value_table.h"

namespace kvt
{

namespace
{

bool isFresh(Quality quality)
{
    return quality == Quality::Good || quality == Quality::Doubtful;
}

} // namespace

QString qualityName(Quality quality)
{
    switch (quality) {
    case Quality::NeverRead:
        return QStringLiteral("never read");
    case Quality::Good:
        return QStringLiteral("good");
    case Quality::Doubtful:
        return QStringLiteral("doubtful");
    case Quality::Suspect:
        return QStringLiteral("suspect");
    case Quality::Stale:
        return QStringLiteral("stale");
    case Quality::Torn:
        return QStringLiteral("torn");
    case Quality::Failed:
        return QStringLiteral("failed");
    }
    return QString();
}

ValueTable::ValueTable(int cells) : cells_(cells) {}

bool ValueTable::read(int cell, const Reading &reading)
{
    Cell &entry = cells_[cell];
    if (entry.pendingWrites > 0)
        return false;
    entry.raw = static_cast<quint16>(reading.raw);
    entry.quality = reading.doubtful ? Quality::Doubtful : Quality::Good;
    entry.readAt_ns = reading.readAt_ns;
    entry.provable = true;
    return true;
}

QVector<int> ValueTable::withdraw(qint64 provedUntil_ns)
{
    QVector<int> withdrawn;
    for (int cell = 0; cell < cells_.size(); ++cell) {
        Cell &entry = cells_[cell];
        if (entry.readAt_ns <= provedUntil_ns)
            continue;
        entry.provable = false;
        if (!isFresh(entry.quality))
            continue;
        entry.quality = Quality::Suspect;
        withdrawn.append(cell);
    }
    return withdrawn;
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
    ++cells_[cell].writes;
}

void ValueTable::writeEnded(int cell)
{
    --cells_[cell].pendingWrites;
}

TagValue ValueTable::value(int cell, qint64 now_ns, qint64 staleAfter_ns) const
{
    const Cell &entry = cells_.at(cell);
    TagValue value;
    value.raw = entry.raw;
    value.quality = entry.quality;
    value.isKnown = entry.quality != Quality::NeverRead;
    value.readAt_ns = entry.readAt_ns;
    value.newestAt_ns = entry.readAt_ns;
    value.provable = entry.provable;
    if (isFresh(value.quality) && now_ns - entry.readAt_ns > staleAfter_ns)
        value.quality = Quality::Stale;
    return value;
}

} // namespace kvt
