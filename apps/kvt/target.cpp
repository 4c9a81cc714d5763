#include "apps/kvt/target.h"

#include "apps/kvt/console.h"
#include "apps/kvt/options.h"
#include "host/host_session.h"
#include "tags/tag_address.h"

#include <algorithm>

namespace kvt
{

namespace
{

const QString STATION = QStringLiteral("station");
const QString TYPE = QStringLiteral("type");
const QString TAGS = QStringLiteral("tags");

ValueType usualType(Area area)
{
    return area == Area::D ? ValueType::U16 : ValueType::U8;
}

bool fits(Area area, ValueType type)
{
    if (type == ValueType::Hex || type == ValueType::Bool)
        return true;
    return (type == ValueType::U8) == (area != Area::D);
}

bool readType(const QString &text, Area area, ValueType *type)
{
    *type = usualType(area);
    if (text.isEmpty())
        return true;
    for (const ValueType one :
         {ValueType::Bool, ValueType::U8, ValueType::S16, ValueType::U16, ValueType::Hex}) {
        if (text == typeName(one) && fits(area, one)) {
            *type = one;
            return true;
        }
    }
    printError(QStringLiteral("--type: \"%1\" is no type of area %2, which has %3")
                   .arg(text, areaName(area),
                        area == Area::D ? QStringLiteral("bool, s16, u16, hex")
                                        : QStringLiteral("bool, u8, hex")));
    return false;
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
    TagAddress address;
    const QString error = parseTagAddress(form.area, word, &address);
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
    if (!readArea(words.first(), &form.area) ||
        !readType(parser.value(TYPE), form.area, &form.form.type) ||
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
    parser->addOption({TYPE, types + QStringLiteral(", s16 or u16 (area D) (default: u8 or u16)."),
                       QStringLiteral("TYPE")});
    parser->addOption({TAGS,
                       QStringLiteral("Tag list, a CSV file; names of its tags then stand for "
                                      "area, address, station and type; --station and --type "
                                      "do not go with it."),
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
    if (parser.isSet(TAGS) && (parser.isSet(STATION) || parser.isSet(TYPE))) {
        printError(QStringLiteral("--%1 does not go with --tags: the list says what it is")
                       .arg(parser.isSet(STATION) ? STATION : TYPE));
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
