// Tag lists in CSV: whatever the bytes of the file. What is read without an error is written so
// that it reads back equal, and can be polled unless it is said why not.
#include "host/host_session.h"
#include "tags/tag_address.h"
#include "tags/tag_list.h"
#include "tags/value_converter.h"
#include "tags/value_elements.h"
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

// What is shown for a value is read as the same value, unless something was rounded or cut away.
void checkValues(const kvt::Tag &tag, quint32 raw)
{
    QVector<kvt::MeaningProblem> problems;
    const auto converter = kvt::ValueConverter::make(tag.form, tag.area, tag.meaning, &problems);
    require(converter.has_value(), "the columns of a good list are good");
    QVector<quint16> elements(kvt::elementCount(tag.form, tag.area));
    for (quint16 &element : elements) {
        element = static_cast<quint16>(tag.area == kvt::Area::D ? raw : raw & 0xFF);
        raw = raw * 257U + 0x9BU;
    }
    const QString text = converter->textOf(elements.constData());
    const bool isWhole = !kvt::isFloat(tag.form.type) && tag.form.type != kvt::ValueType::String &&
                         tag.form.type != kvt::ValueType::Bool;
    const bool isLimited = !tag.meaning[kvt::MeaningColumn::Min].isEmpty() ||
                           !tag.meaning[kvt::MeaningColumn::Max].isEmpty();
    QVector<quint16> back = elements;
    const QString error = converter->enterInto(text, back.data());
    if (isWhole && !isLimited && problems.isEmpty() && !text.isNull())
        require(error.isEmpty() && back == elements, "a value's text reads as the value");
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
        checkValues(tag, raw);
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
