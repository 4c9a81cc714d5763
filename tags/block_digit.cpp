#include "tags/block_digit.h"

#include "tags/tag_address.h"

namespace kvt
{

std::optional<int> blockDigit(const Tag &tag)
{
    TagAddress address;
    if (tag.area != Area::C || !parseTagAddress(tag.area, tag.address, &address).isEmpty())
        return std::nullopt;
    return address.b;
}

QVector<BlockDigitClash> blockDigitClashes(const QVector<Tag> &tags)
{
    QVector<BlockDigitClash> clashes;
    std::optional<int> first;
    QString firstName;
    for (int i = 0; i < tags.size(); ++i) {
        const std::optional<int> digit = blockDigit(tags.at(i));
        if (!digit)
            continue;
        if (!first) {
            first = digit;
            firstName = tags.at(i).name;
        } else if (digit != first) {
            clashes.append(
                {i, QStringLiteral("field 2 is %1, but %2 in tag \"%3\": all tags of area "
                                   "C that are polled together must have the same")
                        .arg(QString::number(*digit), QString::number(*first), firstName)});
        }
    }
    return clashes;
}

} // namespace kvt
