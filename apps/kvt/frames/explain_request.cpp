// Requests of the ASCII link.
#include "apps/kvt/common/counted.h"
#include "apps/kvt/frames/explainers.h"
#include "apps/kvt/frames/field_reader.h"
#include "apps/kvt/frames/frame_text.h"
#include "apps/kvt/frames/request_parts.h"

namespace kvt
{

namespace
{

constexpr int FRAME_AROUND_VALUE_bytes = 8;

// The address text that asks with this address byte through its nibble; empty when none does.
QString nibbleText(const RequestParts &parts)
{
    const bool usesWriteForm = parts.isWrite() || parts.isCommand();
    const int selector = (parts.addressByte & 0x0F) - (usesWriteForm ? 1 : 0);
    if (selector != 0 && selector != 8)
        return QString();
    return QStringLiteral("%1.%2.%3")
        .arg(parts.command)
        .arg(parts.addressByte >> 4)
        .arg(selector / 8);
}

// The address text whose third part is the address byte itself; empty when there is none.
QString selectorText(const RequestParts &parts)
{
    if (parts.addressByte < 2 || parts.isCommand())
        return QString();
    return QStringLiteral("%1.b.%2").arg(parts.command).arg(parts.addressByte);
}

QString addressText(const RequestParts &parts)
{
    const QString nibble = nibbleText(parts);
    const QString selector = selectorText(parts);
    if (nibble.isEmpty() && selector.isEmpty())
        return QStringLiteral("no known address");
    if (nibble.isEmpty() || selector.isEmpty())
        return nibble + selector;
    return QStringLiteral("%1 (or %2 with any b)").arg(nibble, selector);
}

QString actionText(const RequestParts &parts)
{
    if (parts.isCommand())
        return QStringLiteral("command without a value (or read of address byte 0x%1), D %2")
            .arg(parts.addressByte, 2, 16, QLatin1Char('0'))
            .arg(nibbleText(parts));
    if (!parts.isWrite())
        return QStringLiteral("read of %1, in area X or D or a block of C").arg(addressText(parts));
    return QStringLiteral("write of %1 to %2 %3")
        .arg(numberText(parts.value, parts.valueDigits),
             parts.valueDigits == 2 ? QStringLiteral("X") : QStringLiteral("D"),
             addressText(parts));
}

QString tagNames(const RequestParts &parts, const QVector<Tag> &tags)
{
    QStringList names;
    for (const TagPart &part : partsMeant(parts, tags)) {
        const Tag &tag = tags.at(part.tag);
        const bool isWhole = part.elements == 1 || tag.area == Area::C;
        const QString word =
            isWhole ? QString()
                    : QStringLiteral(", word %1 of %2").arg(part.element + 1).arg(part.elements);
        names.append(QStringLiteral("%1 (%2%3)").arg(tag.name, areaName(tag.area), word));
    }
    return names.join(QStringLiteral(", "));
}

void takeValue(FieldReader *reader, RequestParts *parts)
{
    const int digits = reader->left() - 1;
    if (digits <= 0)
        return;
    if (digits != 2 && digits != 4) {
        reader->take(digits, QStringLiteral("value"));
        reader->addProblem(QStringLiteral("a value has 2 digits (X) or 4 (D); ") +
                           counted(digits, "byte stands between address and end",
                                   "bytes stand between address and end"));
        return;
    }
    parts->valueDigits = digits;
    parts->value = reader->takeDigits(digits, QStringLiteral("value"));
}

} // namespace

void explainRequest(const QByteArray &frame, const QVector<Tag> &tags, FrameExplanation *out)
{
    FieldReader reader(frame, out);
    RequestParts parts;
    out->kind = FrameKind::Request;
    reader.take(1, QStringLiteral("ENQ"), QStringLiteral("a request begins"));
    parts.station = reader.takeDigits(2, QStringLiteral("station"));
    parts.command = reader.takeDigits(2, QStringLiteral("command"));
    parts.addressByte = reader.takeDigits(2, QStringLiteral("address"));
    const bool isWhole = parts.isWhole();
    const int addressField = out->fields.size() - 1;
    if (frame.size() >= FRAME_AROUND_VALUE_bytes)
        takeValue(&reader, &parts);
    reader.takeEnd();
    out->station = parts.station;
    if (!isWhole || (parts.isWrite() && parts.value < 0)) {
        out->summary = QStringLiteral("a damaged request");
        return;
    }
    out->fields[addressField].meaning += QStringLiteral(": ") + addressText(parts);
    out->summary = QStringLiteral("%1 at station %2").arg(actionText(parts)).arg(parts.station);
    const QString names = tagNames(parts, tags);
    if (!names.isEmpty())
        out->summary += QStringLiteral(": ") + names;
}

} // namespace kvt
