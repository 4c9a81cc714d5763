#include "apps/kvt/frame_values.h"

#include "apps/kvt/frames/frame_text.h"
#include "driver/records.h"
#include "tags/tag_address.h"
#include "tags/value_elements.h"

#include <QJsonArray>

#include <algorithm>

namespace kvt
{

namespace
{

constexpr int BYTES_BEFORE_DATA = 3;  // of a reply
constexpr int BYTES_BEFORE_VALUE = 7; // of a write
constexpr int NOT_SEEN = -1;

Area areaOf(const QByteArray &digits)
{
    return digits.size() == 4 ? Area::D : digits.size() == 2 ? Area::X : Area::C;
}

/// Returns the place of a tag's first element among the data of its reply.
int placeOf(const Tag &tag)
{
    TagAddress address;
    return tag.area == Area::C && parseTagAddress(tag.area, tag.address, &address).isEmpty()
               ? address.d
               : 0;
}

QString partText(const Tag &tag, const TagPart &part)
{
    return QStringLiteral("%1, word %2 of %3")
        .arg(tag.name)
        .arg(part.element + 1)
        .arg(part.elements);
}

} // namespace

FrameValues::FrameValues(const QVector<Tag> &tags) : tags_(tags), texts_(tags)
{
    for (const Tag &tag : tags)
        read_.emplace_back(static_cast<size_t>(elementCount(tag.form, tag.area)), NOT_SEEN);
    written_ = read_;
}

void FrameValues::addTo(const QByteArray &frame, const QByteArray &request,
                        FrameExplanation *explanation)
{
    const bool isReply = explanation->kind == FrameKind::Reply;
    const RequestParts parts = requestParts(isReply ? request : frame);
    if (!explanation->problems.isEmpty() || !parts.isWhole() || isReply == parts.isWrite())
        return;
    const QByteArray digits = isReply ? frame.mid(BYTES_BEFORE_DATA).chopped(1)
                                      : frame.mid(BYTES_BEFORE_VALUE).chopped(1);
    QStringList texts;
    for (const TagPart &part : partsMeant(parts, tags_)) {
        const Tag &tag = tags_.at(part.tag);
        if (tag.area != areaOf(digits))
            continue;
        Elements &seen = (isReply ? read_ : written_)[static_cast<size_t>(part.tag)];
        // Readings of several words begin with the first, writes with that of either end.
        if (isReply && part.element == 0)
            std::fill(seen.begin(), seen.end(), NOT_SEEN);
        if (!take(part, digits, &seen)) {
            if (isReply)
                texts.append(partText(tag, part));
            continue;
        }
        const TagValue value = valueOf(part.tag, seen);
        texts.append(QStringLiteral("%1 = %2").arg(tag.name, texts_.text(part.tag, value)));
        QJsonObject object = tagToJson(tag);
        texts_.insertInto(part.tag, value, &object);
        explanation->values.append(object);
        if (!isReply)
            std::fill(seen.begin(), seen.end(), NOT_SEEN);
    }
    if (!texts.isEmpty())
        explanation->summary += QStringLiteral(": ") + texts.join(QStringLiteral(", "));
}

/// Returns whether all elements of the tag are known then.
bool FrameValues::take(const TagPart &part, const QByteArray &digits, Elements *seen) const
{
    const Tag &tag = tags_.at(part.tag);
    const int width = 2 * valueSize(tag.area);
    const int end = part.element + (tag.area == Area::C ? part.elements : 1);
    for (int element = part.element; element < end; ++element)
        (*seen)[static_cast<size_t>(element)] =
            hexNumber(digits.mid((placeOf(tag) + element - part.element) * width, width));
    return std::find(seen->begin(), seen->end(), NOT_SEEN) == seen->end();
}

TagValue FrameValues::valueOf(int tag, const Elements &seen) const
{
    QVector<quint16> elements;
    for (const int element : seen)
        elements.append(static_cast<quint16>(element));
    TagValue value;
    value.isKnown = true;
    const Tag &of = tags_.at(tag);
    if (of.form.type == ValueType::String)
        value.elements = elements;
    else
        value.raw = joinElements(of.form, of.area, elements.constData());
    return value;
}

} // namespace kvt
