#include "tags/tag_conflicts.h"

namespace kvt
{

namespace
{

constexpr int NOT_WRITTEN = -1;

// The driver sorts its read list into groups of area * 255 + station and keeps one entry for each
// address of a group. Station 255 of one area therefore shares its group with station 0 of the
// next.
int entryKey(const Tag &tag, const TagAddress &address)
{
    const int group = static_cast<int>(tag.area) * 255 + tag.station;
    return group * 16384 + readListAddress(tag.area, address);
}

int frameKey(int length, int station, int command, int addressByte)
{
    return ((length * 256 + station) * 256 + command) * 256 + addressByte;
}

/// Only the length tells the write of a byte from that of a word. The command without a value is
/// as long as a read; no address is good whose read looks like it.
int writeKey(const Tag &tag, const TagAddress &address)
{
    if (tag.area == Area::C)
        return NOT_WRITTEN;
    const int length = isCommand(tag.area, tag.address) ? 8 : tag.area == Area::X ? 10 : 12;
    return frameKey(length, tag.station, address.a, writeAddressByte(address));
}

int readKey(const Tag &tag, const TagAddress &address)
{
    return frameKey(8, tag.station, address.a, readAddressByte(address));
}

/// How the driver numbers the addresses of an area.
QString numberRule(Area area)
{
    return area == Area::C ? QStringLiteral("b*160 + c*80 without a and d, in area C")
                           : QStringLiteral("a*32 + b*2 + c, in area ") + areaName(area);
}

} // namespace

bool TagConflicts::sameCell(const Request &one, const Request &other)
{
    return one.area == other.area && one.station == other.station && one.command == other.command &&
           one.readByte == other.readByte;
}

QString TagConflicts::entryConflict(const Request &earlier, const Request &request)
{
    const QString text =
        QStringLiteral("would replace tag \"%1\" in the driver's read list: both have the same "
                       "number (%2")
            .arg(earlier.name, numberRule(request.area));
    if (earlier.area == request.area)
        return text + QLatin1Char(')');
    return text + QStringLiteral("; station 255 of an area counts as station 0 of the next)");
}

QString TagConflicts::conflictOf(const Request &request, int entry, int written) const
{
    const int read = frameKey(8, request.station, request.command, request.readByte);
    const auto sameEntry = byEntry_.constFind(entry);
    if (sameEntry != byEntry_.constEnd() && !sameCell(*sameEntry, request))
        return entryConflict(*sameEntry, request);
    const auto sameRead = byRead_.constFind(read);
    if (sameRead != byRead_.constEnd() && sameRead->area != request.area)
        return QStringLiteral("is read with the same frame as tag \"%1\" of area %2")
            .arg(sameRead->name, areaName(sameRead->area));
    const auto sameWrite = byWrite_.constFind(written);
    if (sameWrite != byWrite_.constEnd() && !sameCell(*sameWrite, request))
        return QStringLiteral("is written with the same frame as tag \"%1\"").arg(sameWrite->name);
    return QString();
}

QString TagConflicts::add(const Tag &tag, const TagAddress &address)
{
    const Request request{tag.name, tag.area, tag.station, address.a, readAddressByte(address)};
    const int entry = entryKey(tag, address);
    const int written = writeKey(tag, address);
    QString conflict = conflictOf(request, entry, written);
    if (!conflict.isEmpty())
        return conflict;
    byEntry_.insert(entry, request);
    byRead_.insert(readKey(tag, address), request);
    if (written != NOT_WRITTEN)
        byWrite_.insert(written, request);
    return QString();
}

} // namespace kvt
