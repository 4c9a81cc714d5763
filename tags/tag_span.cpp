#include "tags/tag_span.h"

#include <optional>

namespace kvt
{

namespace
{

constexpr int HIGHEST_PART = 255;
constexpr int ADDRESSES_PER_COMMAND = 32; // with c 0 or 1

/// Returns the address `steps` behind another; none when there is none.
std::optional<TagAddress> addressBehind(Area area, const TagAddress &first, int steps)
{
    TagAddress address = first;
    if (area == Area::C) {
        address.d += steps;
        return address.d < ELEMENTS_PER_BLOCK ? std::make_optional(address) : std::nullopt;
    }
    if (first.c > 1) {
        address.c += steps;
        return address.c <= HIGHEST_PART ? std::make_optional(address) : std::nullopt;
    }
    const int number = numericAddress(area, first) + steps;
    address.a = number / ADDRESSES_PER_COMMAND;
    address.b = number % ADDRESSES_PER_COMMAND / 2;
    address.c = number % 2;
    return address.a <= HIGHEST_PART ? std::make_optional(address) : std::nullopt;
}

QString lastAddress(Area area, const TagAddress &first)
{
    TagAddress last = first;
    if (area == Area::C)
        last.d = ELEMENTS_PER_BLOCK - 1;
    else if (first.c > 1)
        last.c = HIGHEST_PART;
    else
        last = TagAddress{HIGHEST_PART, 15, 1, 0};
    return addressText(area, last);
}

QString endFault(Area area, const TagAddress &first, const ValueForm &form)
{
    const QString end =
        area == Area::C ? QStringLiteral("the block ends") : QStringLiteral("the addresses end");
    return QStringLiteral("a value of type %1 takes %2 %3 from here on, but %4 at %5")
        .arg(formText(form), QString::number(elementCount(form, area)),
             area == Area::D ? QStringLiteral("words") : QStringLiteral("bytes"), end,
             lastAddress(area, first));
}

} // namespace

QString addressText(Area area, const TagAddress &address)
{
    const QString text = QStringLiteral("%1.%2.%3")
                             .arg(QString::number(address.a), QString::number(address.b),
                                  QString::number(address.c));
    return area == Area::C ? text + QLatin1Char('.') + QString::number(address.d) : text;
}

QString parseTagSpan(Area area, const QString &text, const ValueForm &form, TagSpan *span)
{
    TagAddress first;
    const QString fault = parseTagAddress(area, text, &first);
    if (!fault.isEmpty())
        return fault;
    TagSpan found;
    for (int i = 0; i < elementCount(form, area); ++i) {
        const std::optional<TagAddress> address = addressBehind(area, first, i);
        if (!address)
            return endFault(area, first, form);
        const QString elementText = i == 0 ? text : addressText(area, *address);
        TagAddress ignored;
        const QString elementFault = parseTagAddress(area, elementText, &ignored);
        if (!elementFault.isEmpty())
            return QStringLiteral("%1, which it takes too: %2").arg(elementText, elementFault);
        if (isCommand(area, elementText) && found.writeFault.isEmpty())
            found.writeFault =
                QStringLiteral("a write to %1 is a command without a value").arg(elementText);
        found.addresses.append(*address);
        found.texts.append(elementText);
    }
    *span = found;
    return QString();
}

} // namespace kvt
