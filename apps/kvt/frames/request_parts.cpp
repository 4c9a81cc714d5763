#include "apps/kvt/frames/request_parts.h"

#include "apps/kvt/frames/frame_text.h"
#include "driver/records.h"
#include "tags/tag_address.h"
#include "tags/tag_elements.h"

#include <algorithm>

namespace kvt
{

namespace
{

constexpr int FRAME_AROUND_VALUE_bytes = 8;
constexpr int NO_VALUE_COMMAND = 18; // together with the address nibble 1

bool concerns(const RequestParts &parts, const Tag &tag, const QString &addressText)
{
    TagAddress address;
    if (tag.station != parts.station ||
        !parseTagAddress(tag.area, addressText, &address).isEmpty() || address.a != parts.command)
        return false;
    if (!parts.isWrite() && !parts.isCommand())
        return readAddressByte(address) == parts.addressByte;
    const Area area = parts.valueDigits == 2 ? Area::X : Area::D;
    return tag.area == area && writeAddressByte(address) == parts.addressByte;
}

} // namespace

bool RequestParts::isCommand() const
{
    return !isWrite() && command == NO_VALUE_COMMAND &&
           (addressByte == 0x11 || addressByte == 0x19);
}

RequestParts requestParts(const QByteArray &frame)
{
    RequestParts parts;
    if (!frame.startsWith(FRAME_ENQ))
        return parts;
    parts.station = hexNumber(frame.mid(1, 2));
    parts.command = hexNumber(frame.mid(3, 2));
    parts.addressByte = hexNumber(frame.mid(5, 2));
    const int digits = frame.size() - FRAME_AROUND_VALUE_bytes;
    if (digits == 2 || digits == 4) {
        parts.valueDigits = digits;
        parts.value = hexNumber(frame.mid(FRAME_AROUND_VALUE_bytes - 1, digits));
    }
    return parts;
}

QVector<TagPart> partsMeant(const RequestParts &parts, const QVector<Tag> &tags)
{
    QVector<TagPart> meant;
    for (int tag = 0; tag < tags.size(); ++tag) {
        if (tags.at(tag).station != parts.station)
            continue;
        const QStringList texts = elementTexts(tags.at(tag));
        const auto found = std::find_if(texts.begin(), texts.end(), [&](const QString &text) {
            return concerns(parts, tags.at(tag), text);
        });
        if (found != texts.end())
            meant.append({tag, static_cast<int>(found - texts.begin()), texts.size()});
    }
    return meant;
}

} // namespace kvt
