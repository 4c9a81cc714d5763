// Tag lists in CSV: whatever the bytes of the file. What is read without an error is written so
// that it reads back equal, and can be polled unless it is said why not.
#include "host/host_session.h"
#include "tags/tag_address.h"
#include "tags/tag_list.h"
#include "tags/tag_value.h"
#include "tests/fuzz/support/fuzz_input.h"
#include "tests/fuzz/support/promise.h"

namespace
{

void checkErrors(const kvt::TagListResult &list, int lines)
{
    int latest = 0;
    for (const kvt::TagError &error : list.errors) {
        require(error.line >= latest && error.line <= lines, "an error names a line of the file");
        latest = error.line;
        require(error.column >= 0 && !error.text.isEmpty(), "an error says what is wrong");
        require(kvt::formatTagError(QStringLiteral("f"), error).startsWith(QLatin1String("f:")),
                "an error names the file");
    }
}

// Every bit pattern of a value has a text that is read as the same value.
void checkValues(const kvt::Tag &tag, int raw)
{
    const char bytes[] = {static_cast<char>(raw), static_cast<char>(raw >> 8)};
    QByteArray value(bytes, kvt::valueSize(tag.area));
    if (tag.type == kvt::ValueType::Bool)
        value = QByteArray(value.size(), '\0').replace(0, 1, QByteArray(1, char(raw & 1)));
    const kvt::ParsedValue parsed =
        kvt::parseValue(tag.area, tag.type, kvt::formatValue(tag.area, tag.type, value));
    require(parsed.error.isEmpty() && parsed.bytes == value, "a value's text reads as the value");
}

void checkTags(const kvt::TagListResult &list)
{
    QSet<QString> names;
    quint32 raw = 0x5A;
    for (const kvt::Tag &tag : list.tags) {
        require(!tag.name.isEmpty() && !names.contains(tag.name), "names are there and unique");
        names.insert(tag.name);
        require(kvt::numericAddress(tag) >= 0, "addresses of a good list are good");
        require(tag.station >= 0 && tag.station <= 255, "stations are 0 to 255");
        checkValues(tag, static_cast<int>(raw & 0xFFFF));
        raw = raw * 257U + 0x9BU;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray csv = FuzzInput(data, size).rest();
    const kvt::TagListResult list = kvt::parseTagList(csv);
    require(list.lines.size() == list.tags.size(), "the line of each tag is told");
    checkErrors(list, csv.count('\n') + csv.count('\r') + 1);
    if (!list.errors.isEmpty())
        return 0;
    checkTags(list);
    const kvt::TagListResult again = kvt::parseTagList(kvt::formatTagList(list.tags));
    require(again.errors.isEmpty() && again.tags == list.tags, "a list reads back equal");
    require(kvt::pollErrors(list).isEmpty() == kvt::HostSession::obstacles(list.tags).isEmpty(),
            "list and host agree whether tags can be polled together");
    return 0;
}
