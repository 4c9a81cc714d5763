#include "apps/kvt/target.h"

#include "apps/kvt/console.h"
#include "apps/kvt/options.h"
#include "host/host_session.h"
#include "tags/tag_span.h"

#include <algorithm>

namespace kvt
{

namespace
{

const QString STATION = QStringLiteral("station");
const QString TYPE = QStringLiteral("type");
const QString ORDER = QStringLiteral("order");
const QString TAGS = QStringLiteral("tags");

ValueType usualType(Area area)
{
    return area == Area::D ? ValueType::U16 : ValueType::U8;
}

QString typesOf(Area area)
{
    switch (area) {
    case Area::D:
        return QStringLiteral("bool, hex, u16, s16, bcd16, u32, s32, f32, bcd32, u64, s64, f64, "
                              "string:N and bit:N");
    case Area::X:
        return QStringLiteral("bool, hex, u8, s8 and bit:N");
    case Area::C:
        break;
    }
    return QStringLiteral("all types");
}

bool readForm(const QCommandLineParser &parser, Area area, ValueForm *form)
{
    const QString text = parser.value(TYPE);
    *form = usualType(area);
    const QString fault = text.isEmpty() ? QString() : parseForm(text, form);
    if (!fault.isEmpty() || !formMisfit(*form, area).isEmpty()) {
        printError(QStringLiteral("--type: \"%1\" is no type of area %2, which has %3")
                       .arg(text, areaName(area), typesOf(area)));
        return false;
    }
    const std::optional<WordOrder> order = parseWordOrder(parser.value(ORDER));
    if (!order)
        printError(QStringLiteral("--order: ") + wordOrderFault(parser.value(ORDER)));
    form->order = order.value_or(WordOrder::Abcd);
    return order.has_value();
}

bool readAddress(const Tag &form, const QString &word, QVector<Tag> *tags)
{
    static const QStringList areas = {QStringLiteral("X"), QStringLiteral("D"),
                                      QStringLiteral("C")};
    if (areas.contains(word, Qt::CaseInsensitive)) {
        printError(QStringLiteral("\"%1\" stands where an address is expected: one area for all "
                                  "addresses, as in %2 1.2.0 3.4.0")
                       .arg(word, areaName(form.area)));
        return false;
    }
    TagSpan span;
    const QString error = parseTagSpan(form.area, word, form.form, &span);
    if (!error.isEmpty()) {
        printError(QStringLiteral("address %1: %2").arg(word, error));
        return false;
    }
    Tag tag = form;
    tag.address = word;
    tags->append(tag);
    return true;
}

bool readAddresses(const QCommandLineParser &parser, const QStringList &words, QVector<Tag> *tags)
{
    if (words.size() < 2) {
        printError(QStringLiteral("name an area (X, D or C) and an address in it"));
        return false;
    }
    Tag form;
    if (!readArea(words.first(), &form.area) || !readForm(parser, form.area, &form.form) ||
        !readNumber(parser, STATION, 0, 255, &form.station))
        return false;
    const QStringList addresses = words.mid(1);
    return std::all_of(addresses.begin(), addresses.end(),
                       [&](const QString &word) { return readAddress(form, word, tags); });
}

bool readNames(const QString &path, const QStringList &words, QVector<Tag> *tags)
{
    QVector<Tag> list;
    if (!readTags(path, &list))
        return false;
    for (const QString &word : words) {
        const auto found = std::find_if(list.begin(), list.end(),
                                        [&](const Tag &tag) { return tag.name == word; });
        if (found == list.end()) {
            printError(QStringLiteral("%1: there is no tag \"%2\"").arg(path, word));
            return false;
        }
        tags->append(*found);
    }
    if (tags->isEmpty())
        printError(QStringLiteral("name a tag of %1").arg(path));
    return !tags->isEmpty();
}

} // namespace

void addTargetOptions(QCommandLineParser *parser, const QString &types)
{
    parser->addOption({STATION, QStringLiteral("PLC station, 0 to 255 (default: 1)."),
                       QStringLiteral("N"), QStringLiteral("1")});
    parser->addOption({TYPE,
                       types + QStringLiteral(": bool, hex, u8, s8, u16, s16, bcd16, u32, s32, "
                                              "f32, bcd32, u64, s64, f64, string:N, bit:N, as far "
                                              "as the area has them (default: u8, in area D "
                                              "u16)."),
                       QStringLiteral("TYPE")});
    parser->addOption({ORDER,
                       QStringLiteral("How a value of several bytes lies at rising addresses: "
                                      "abcd, badc, cdab or dcba (default: abcd)."),
                       QStringLiteral("ORDER"), QStringLiteral("abcd")});
    parser->addOption({TAGS,
                       QStringLiteral("Tag list, a CSV file; names of its tags then stand for "
                                      "area, address, station and type; --station, --type and "
                                      "--order do not go with it."),
                       QStringLiteral("FILE")});
}

bool readArea(const QString &text, Area *area, const QString &place)
{
    for (const Area one : {Area::X, Area::D, Area::C}) {
        if (text.compare(areaName(one), Qt::CaseInsensitive) == 0) {
            *area = one;
            return true;
        }
    }
    printError(place + QStringLiteral("\"%1\" is no area; there are X, D and C").arg(text));
    return false;
}

bool readTargets(const QCommandLineParser &parser, const QStringList &words, QVector<Tag> *tags)
{
    for (const QString &option : {STATION, TYPE, ORDER}) {
        if (!parser.isSet(TAGS) || !parser.isSet(option))
            continue;
        printError(
            QStringLiteral("--%1 does not go with --tags: the list says what it is").arg(option));
        return false;
    }
    const bool read = parser.isSet(TAGS) ? readNames(parser.value(TAGS), words, tags)
                                         : readAddresses(parser, words, tags);
    if (!read)
        return false;
    if (HostSession::obstacles(*tags).isEmpty())
        return true;
    printError(QStringLiteral("addresses of area C that are read together must have the same "
                              "second part"));
    return false;
}

} // namespace kvt
