#include "host/tag_index.h"

#include "tags/tag_address.h"

#include <algorithm>

namespace kvt
{

bool operator==(const ReadKey &a, const ReadKey &b)
{
    return a.station == b.station && a.area == b.area && a.address == b.address;
}

uint qHash(const ReadKey &key, uint seed)
{
    // Spread by the golden ratio: tables have a little more than a power of two of buckets, and
    // stations that lie one such power apart would share theirs.
    constexpr uint SPREAD = 0x9E3779B1U;
    const uint place = static_cast<uint>(key.station) * 4U + static_cast<uint>(key.area);
    return (place * SPREAD + static_cast<uint>(key.address)) ^ seed;
}

TagIndex::TagIndex(const QVector<Tag> &tags)
{
    for (int i = 0; i < tags.size(); ++i)
        add(i, tags.at(i));
}

QVector<int> TagIndex::stations() const
{
    QVector<int> stations = byStation_.keys().toVector();
    std::sort(stations.begin(), stations.end());
    return stations;
}

void TagIndex::add(int tag, const Tag &description)
{
    const int area = static_cast<int>(description.area);
    TagAddress parts;
    parseTagAddress(description.area, description.address, &parts);
    const int address = numericAddress(description.area, parts);
    const ReadKey cellKey{description.station, area, address};
    const auto known = cellByAddress_.constFind(cellKey);
    if (known != cellByAddress_.constEnd()) {
        cells_[*known].tags.append(tag);
        cellOfTag_.append(*known);
        return;
    }
    const int cell = cells_.size();
    const ReadKey readKey{description.station, area, readListAddress(description.area, parts)};
    cells_.append({description.station, area, address, description.address, {tag}});
    cellOfTag_.append(cell);
    keyOfCell_.append(readKey);
    cellByAddress_.insert(cellKey, cell);
    byKey_[readKey].append(cell);
    byStation_[description.station].append(cell);
}

} // namespace kvt
