#include "simulator/plc_memory.h"

#include "tags/tag_elements.h"
#include "tags/tag_span.h"

#include <algorithm>

namespace kvt
{

namespace
{

constexpr int BLOCK_STRIDE = 80; ///< numbers from one block to the next

quint64 frameKey(int length, int station, int command, int addressByte)
{
    const int key = ((length * 256 + station) * 256 + command) * 256 + addressByte;
    return static_cast<quint64>(key);
}

quint64 readKey(int station, int command, int addressByte)
{
    return frameKey(8, station, command, addressByte);
}

/// A write of a byte and one of a word differ in their length alone.
quint64 writeKey(Area area, int station, int command, int addressByte)
{
    return frameKey(area == Area::X ? 10 : 12, station, command, addressByte);
}

quint64 numberKey(Area area, int station, int number)
{
    return (static_cast<quint64>(area) * 256 + static_cast<quint64>(station)) << 32 |
           static_cast<quint32>(number);
}

SignalKind kindOf(const SignalPlan &plan, const QString &tag, int index)
{
    const auto rule = plan.byTag.constFind(tag);
    const SignalKind kind = rule == plan.byTag.constEnd() ? plan.all : rule->kind;
    return kind == SignalKind::Mixed ? static_cast<SignalKind>(index % 5) : kind;
}

SignalRange rangeOf(const Tag &tag)
{
    if (tag.form.type == ValueType::Bool)
        return {0, 1};
    if (tag.form.type == ValueType::S16)
        return {-32768, 32767};
    return {0, tag.area == Area::D ? 65535 : 255};
}

bool takesSeveral(const Tag &tag)
{
    return formMisfit(tag.form, tag.area).isEmpty() && elementCount(tag.form, tag.area) > 1;
}

/// True when not every content of the cells is a value, or would be one only by chance.
bool isMadeAsAValue(const Tag &tag)
{
    return takesSeveral(tag) || tag.form.type == ValueType::Bcd16;
}

/// Returns the good addresses of a tag's elements; none when it is bad.
QVector<TagAddress> addressesOf(const Tag &tag)
{
    QVector<TagAddress> addresses;
    const QStringList texts = takesSeveral(tag) ? elementTexts(tag) : QStringList(tag.address);
    for (const QString &text : texts) {
        TagAddress address;
        if (parseTagAddress(tag.area, text, &address).isEmpty())
            addresses.append(address);
    }
    return addresses;
}

std::optional<PlcTarget> found(const QHash<quint64, PlcTarget> &map, quint64 key)
{
    const auto entry = map.constFind(key);
    if (entry == map.constEnd())
        return std::nullopt;
    return *entry;
}

} // namespace

PlcMemory::PlcMemory(const QVector<Tag> &tags, const SignalPlan &plan, quint64 seed)
{
    Random random(seed);
    QVector<quint64> seeds;
    for (const Tag &tag : tags)
        seeds.append(addressesOf(tag).isEmpty() ? 0 : random.next());
    // Those that move together first: a tag that takes one of their cells moves with them.
    for (const bool together : {true, false}) {
        for (int i = 0; i < tags.size(); ++i) {
            const auto rule = plan.byTag.constFind(tags[i].name);
            const bool hasRule = rule != plan.byTag.constEnd();
            if ((hasRule || isMadeAsAValue(tags[i])) == together)
                addTag(tags[i], kindOf(plan, tags[i].name, i), hasRule ? &*rule : nullptr,
                       seeds.at(i));
        }
    }
}

void PlcMemory::addTag(const Tag &tag, SignalKind kind, const SignalRule *rule, quint64 seed)
{
    const QVector<TagAddress> addresses = addressesOf(tag);
    if (addresses.isEmpty())
        return;
    stations_.insert(tag.station);
    Origin origin{kind, seed, -1};
    const bool moves = kind != SignalKind::Serial && (rule != nullptr || isMadeAsAValue(tag));
    if (moves && !haveCells(tag, addresses)) {
        SignalRule used = rule != nullptr ? *rule : SignalRule();
        used.kind = kind;
        origin.group = groups_.size();
        groups_.append(TagSignal(tag, used, static_cast<quint32>(cells_.size() + 1), seed));
    }
    for (int i = 0; i < addresses.size(); ++i) {
        const int cell = addElement(tag, addresses.at(i), origin);
        if (origin.group >= 0)
            cells_[cell].element = i;
    }
}

/// True when one of the cells is there already.
bool PlcMemory::haveCells(const Tag &tag, const QVector<TagAddress> &addresses) const
{
    return std::any_of(addresses.begin(), addresses.end(), [&](const TagAddress &address) {
        return cellAt(tag.station, tag.area, addressText(tag.area, address)) >= 0;
    });
}

/// Returns the cell of an element, a new one if there is none.
int PlcMemory::addElement(const Tag &tag, const TagAddress &address, const Origin &origin)
{
    if (tag.area == Area::C) {
        int &cell = blocks_[blockOf(tag, address)].cells[static_cast<size_t>(address.d)];
        if (cell < 0)
            cell = addCell(tag, origin);
        return cell;
    }
    const quint64 key = readKey(tag.station, address.a, readAddressByte(address));
    if (!byRead_.contains(key))
        addTarget(key, {tag.area, addCell(tag, origin), 0});
    const PlcTarget target = byRead_.value(key);
    byWrite_.insert(writeKey(tag.area, tag.station, address.a, writeAddressByte(address)), target);
    byNumber_.insert(numberKey(tag.area, tag.station, numericAddress(tag.area, address)), target);
    return target.index;
}

void PlcMemory::addTarget(quint64 key, PlcTarget target)
{
    byRead_.insert(key, target);
    targets_.append(target);
}

int PlcMemory::addCell(const Tag &tag, const Origin &origin)
{
    const SignalKind kind = origin.kind;
    const int index = cells_.size();
    const bool serial = kind == SignalKind::Serial;
    const int serialCell = serial ? ledger(tag.area).addCell() : -1;
    if (serial)
        (tag.area == Area::D ? serialWords_ : serialBytes_).append(index);
    cells_.append({tag.name, tag.station, tag.area, serial, serialCell, false, 0,
                   Signal(kind, rangeOf(tag), static_cast<quint32>(index + 1), origin.seed),
                   origin.group, 0});
    return index;
}

int PlcMemory::blockOf(const Tag &tag, const TagAddress &address)
{
    const quint64 key = readKey(tag.station, address.a, readAddressByte(address));
    const auto known = byRead_.constFind(key);
    if (known != byRead_.constEnd())
        return known->index;
    Block block;
    block.station = tag.station;
    block.cells.fill(-1);
    blocks_.append(block);
    const PlcTarget target{Area::C, blocks_.size() - 1, 0};
    addTarget(key, target);
    byNumber_.insert(numberKey(Area::C, tag.station, readListAddress(Area::C, address)), target);
    return target.index;
}

std::optional<PlcTarget> PlcMemory::findRead(int station, int command, int addressByte) const
{
    return found(byRead_, readKey(station, command, addressByte));
}

std::optional<PlcTarget> PlcMemory::findWrite(Area area, int station, int command,
                                              int addressByte) const
{
    return found(byWrite_, writeKey(area, station, command, addressByte));
}

std::optional<PlcTarget> PlcMemory::findNumber(Area area, int station, int number) const
{
    const int element = area == Area::C && number >= 0 ? number % BLOCK_STRIDE : 0;
    auto target = found(byNumber_, numberKey(area, station, number - element));
    if (!target || element >= BLOCK_SIZE)
        return std::nullopt;
    target->element = element;
    return target;
}

int PlcMemory::readCell(int cell, qint64 time_ns)
{
    if (cell < 0)
        return 0;
    Cell &entry = cells_[cell];
    if (entry.written)
        return entry.value;
    if (entry.group >= 0) {
        entry.value = groups_[entry.group].elements(time_ns).at(entry.element);
        return entry.value;
    }
    const int next =
        entry.serial ? ledger(entry.area).issue(entry.serialCell, time_ns) : entry.signal.next();
    entry.value = next & 0xFFFF;
    return entry.value;
}

QByteArray PlcMemory::read(PlcTarget target, qint64 time_ns)
{
    QByteArray bytes;
    if (target.area == Area::C) {
        const auto &cells = blocks_[target.index].cells;
        for (int i = target.element; i < BLOCK_SIZE; ++i)
            bytes.append(static_cast<char>(readCell(cells[static_cast<size_t>(i)], time_ns)));
        return bytes.append(target.element, '\0');
    }
    const int word = readCell(target.index, time_ns);
    if (target.area == Area::D)
        bytes.append(static_cast<char>(word >> 8));
    bytes.append(static_cast<char>(word));
    return bytes;
}

// The other cells of a value keep what they hold.
void PlcMemory::freeze(int group)
{
    for (Cell &cell : cells_) {
        if (cell.group != group || cell.written)
            continue;
        cell.written = true;
        cell.value = groups_.at(group).elements().at(cell.element);
    }
}

void PlcMemory::write(PlcTarget target, int value)
{
    if (cells_[target.index].group >= 0)
        freeze(cells_[target.index].group);
    Cell &cell = cells_[target.index];
    cell.written = true;
    cell.value = value & (target.area == Area::D ? 0xFFFF : 0xFF);
}

int PlcMemory::cellAt(int station, Area area, const QString &address) const
{
    TagAddress parts;
    if (!parseTagAddress(area, address, &parts).isEmpty())
        return -1;
    const auto target = findRead(station, parts.a, readAddressByte(parts));
    if (!target || target->area != area)
        return -1;
    return area == Area::C ? blocks_[target->index].cells[static_cast<size_t>(parts.d)]
                           : target->index;
}

std::optional<int> PlcMemory::value(int station, Area area, const QString &address) const
{
    const int cell = cellAt(station, area, address);
    if (cell < 0)
        return std::nullopt;
    return cells_[cell].value;
}

bool PlcMemory::setValue(int station, Area area, const QString &address, int value)
{
    const int cell = cellAt(station, area, address);
    if (cell >= 0)
        write({area, cell, 0}, value);
    return cell >= 0;
}

bool PlcMemory::wasSentTo(int station, Area area, const QString &address, int value,
                          qint64 since_ns) const
{
    const int cell = cellAt(station, area, address);
    return cell >= 0 && cells_[cell].serial &&
           ledger(area).wasIssued(cells_[cell].serialCell, value, since_ns);
}

QString PlcMemory::serialOwner(Area area, int value) const
{
    const int owner = ledger(area).ownerOf(value);
    return owner < 0 ? QString()
                     : cells_[(area == Area::D ? serialWords_ : serialBytes_)[owner]].tag;
}

int PlcMemory::stationOf(PlcTarget target) const
{
    return target.area == Area::C ? blocks_[target.index].station : cells_[target.index].station;
}

std::optional<PlcTarget> PlcMemory::elsewhere(PlcTarget target, quint32 choice) const
{
    const int station = stationOf(target);
    QVector<PlcTarget> others;
    for (const PlcTarget &other : targets_) {
        if (other.area == target.area && stationOf(other) != station)
            others.append(other);
    }
    if (others.isEmpty())
        return std::nullopt;
    return others[static_cast<int>(choice % static_cast<quint32>(others.size()))];
}

} // namespace kvt
