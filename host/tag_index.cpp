#include "host/tag_index.h"

#include "tags/tag_address.h"
#include "tags/tag_elements.h"

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

bool TagIndex::takesSeveralRequests(int tag) const
{
    const QVector<int> &cells = cellsOf(tag);
    return !(readKeyOf(cells.first()) == readKeyOf(cells.last()));
}

void TagIndex::add(int tag, const Tag &description)
{
    const bool assembled = !isOneElement(description.form, description.area);
    QVector<int> cells;
    for (const QString &text : elementTexts(description)) {
        cells.append(cellAt(description, text));
        TagCell &cell = cells_[cells.last()];
        (assembled ? cell.assembled : cell.tags).append(tag);
    }
    cellsOf_.append(cells);
    isAssembled_.append(assembled);
}

/// Returns the cell at an address of the tag's area and station; a new one if there is none.
int TagIndex::cellAt(const Tag &tag, const QString &addressText)
{
    const int area = static_cast<int>(tag.area);
    TagAddress parts;
    parseTagAddress(tag.area, addressText, &parts);
    const int address = numericAddress(tag.area, parts);
    const ReadKey cellKey{tag.station, area, address};
    const auto known = cellByAddress_.constFind(cellKey);
    if (known != cellByAddress_.constEnd())
        return *known;
    const int cell = cells_.size();
    const ReadKey readKey{tag.station, area, readListAddress(tag.area, parts)};
    cells_.append({tag.station, area, address, addressText, {}, {}});
    keyOfCell_.append(readKey);
    cellByAddress_.insert(cellKey, cell);
    byKey_[readKey].append(cell);
    byStation_[tag.station].append(cell);
    return cell;
}

} // namespace kvt
