#include "tags/tag_list.h"

#include "tags/block_digit.h"
#include "tags/csv_rows.h"
#include "tags/tag_conflicts.h"

#include <QFile>
#include <QSaveFile>
#include <QTextCodec>

#include <algorithm>
#include <iterator>

namespace kvt
{

namespace
{

constexpr char BYTE_ORDER_MARK[] = "\xEF\xBB\xBF";

// Well above a list of 200,000 tags.
constexpr qint64 LARGEST_FILE = 32 * 1024 * 1024;

// A wrong column makes as many errors as the list has rows.
constexpr int MOST_ERRORS = 100;

enum Column { NAME, AREA, ADDRESS, STATION, TYPE, DESCRIPTION, COLUMN_COUNT };

QString columnName(int column)
{
    static const char *const names[] = {"name",    "area", "address",
                                        "station", "type", "description"};
    return QLatin1String(names[column]);
}

/// Returns the text of UTF-8 bytes; false in `*good` when they are none.
QString decoded(const QByteArray &bytes, bool *good)
{
    QTextCodec::ConverterState state;
    QString text =
        QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    *good = state.invalidChars == 0 && state.remainingChars == 0;
    return text;
}

/// Returns what parts the titles of a header line if it is not commas; else an empty text.
QString wrongSeparator(const QByteArray &header)
{
    const QString line = QString::fromUtf8(header).remove(QLatin1Char('"'));
    const auto partsBy = [&](QChar separator) {
        const QStringList titles = line.split(separator);
        return titles.size() > 1 &&
               std::any_of(titles.begin(), titles.end(), [](const QString &title) {
                   return title.trimmed().compare(columnName(NAME), Qt::CaseInsensitive) == 0;
               });
    };
    if (partsBy(QLatin1Char(';')))
        return QStringLiteral("semicolons");
    return partsBy(QLatin1Char('\t')) ? QStringLiteral("tabs") : QString();
}

/// Finds out what is wrong with the form of the file as a whole; without a text if nothing is.
TagError wrongForm(const QByteArray &csv)
{
    if (csv.startsWith("\xFF\xFE") || csv.startsWith("\xFE\xFF"))
        return {0, 0, QString(), QStringLiteral("is UTF-16 text; UTF-8 is needed")};
    int number = 0;
    for (int from = 0, to = 0; from < csv.size(); from = to + 1) {
        ++number;
        to = csv.indexOf('\n', from);
        to = to < 0 ? csv.size() : to;
        const QByteArray text = csv.mid(from, to - from).trimmed();
        if (text.isEmpty() || text.startsWith('#'))
            continue;
        const QString separator = wrongSeparator(text);
        if (separator.isEmpty())
            break;
        return {number, 0, QString(),
                QStringLiteral("the columns are parted by %1; commas are needed").arg(separator)};
    }
    return {};
}

/// Reads the rows of one file; the tags and errors collect in its result.
class ListReader
{
public:
    TagListResult read(const QByteArray &csv);

private:
    bool readHeader(const CsvRow &row);
    void readRows(const QVector<CsvRow> &rows);
    void readRow(const CsvRow &row);
    QString field(int column);
    bool readArea(Tag *tag);
    bool readAddress(Tag *tag, TagAddress *address);
    bool readStation(Tag *tag);
    bool readType(Tag *tag);
    void checkName(const QString &name);
    void checkLength();
    void fail(int column, const QString &text);
    void failRow(const CsvRows &rows);

    TagListResult result_;
    int fieldOf_[COLUMN_COUNT] = {-1, -1, -1, -1, -1, -1}; ///< index in a row; -1: no such column
    int headerFields_ = 0;
    CsvRow row_; ///< the row being read
    QHash<QString, int> lineOfName_;
    TagConflicts conflicts_;
};

void ListReader::fail(int column, const QString &text)
{
    result_.errors.append({row_.line, fieldOf_[column] + 1, columnName(column), text});
}

bool ListReader::readHeader(const CsvRow &row)
{
    row_ = row;
    headerFields_ = row.fields.size();
    for (int i = 0; i < row.fields.size(); ++i) {
        const QString title = QString::fromUtf8(row.fields[i]).trimmed();
        for (int column = 0; column < COLUMN_COUNT; ++column) {
            if (title.compare(columnName(column), Qt::CaseInsensitive) != 0)
                continue;
            if (fieldOf_[column] >= 0)
                result_.errors.append(
                    {row.line, i + 1, title, QStringLiteral("this column is there twice")});
            fieldOf_[column] = i;
        }
    }
    for (int column = 0; column < DESCRIPTION; ++column) {
        if (fieldOf_[column] < 0)
            result_.errors.append({row.line, 0, QString(),
                                   QStringLiteral("column \"%1\" is missing from the header")
                                       .arg(columnName(column))});
    }
    result_.addressColumn = fieldOf_[ADDRESS] + 1;
    return result_.errors.isEmpty();
}

QString ListReader::field(int column)
{
    const int index = fieldOf_[column];
    if (index < 0 || index >= row_.fields.size())
        return QString();
    bool good = false;
    QString text = decoded(row_.fields[index], &good);
    if (!good)
        fail(column, QStringLiteral("is not UTF-8 text"));
    return text;
}

bool ListReader::readArea(Tag *tag)
{
    const QString text = field(AREA);
    for (const Area area : {Area::X, Area::D, Area::C}) {
        if (text == areaName(area)) {
            tag->area = area;
            return true;
        }
    }
    fail(AREA, QStringLiteral("\"%1\" is no area (X, D or C)").arg(text));
    return false;
}

bool ListReader::readStation(Tag *tag)
{
    const QString text = field(STATION);
    const bool digits = std::all_of(text.cbegin(), text.cend(), [](QChar character) {
        return character >= QLatin1Char('0') && character <= QLatin1Char('9');
    });
    bool good = false;
    tag->station = text.toInt(&good);
    if (digits && good && tag->station <= 255)
        return true;
    fail(STATION, QStringLiteral("\"%1\" is no station (0 to 255)").arg(text));
    return false;
}

bool ListReader::readType(Tag *tag)
{
    const QString text = field(TYPE);
    for (const ValueType type :
         {ValueType::Bool, ValueType::U8, ValueType::S16, ValueType::U16, ValueType::Hex}) {
        if (text == typeName(type)) {
            tag->type = type;
            return true;
        }
    }
    fail(TYPE, QStringLiteral("\"%1\" is no type (bool, u8, s16, u16 or hex)").arg(text));
    return false;
}

void ListReader::checkName(const QString &name)
{
    if (name.trimmed().isEmpty()) {
        fail(NAME, QStringLiteral("a name is missing"));
        return;
    }
    if (std::any_of(name.begin(), name.end(),
                    [](QChar c) { return c.category() == QChar::Other_Control; })) {
        fail(NAME, QStringLiteral("a name may have no control characters"));
        return;
    }
    const auto known = lineOfName_.constFind(name);
    if (known != lineOfName_.constEnd())
        fail(NAME, QStringLiteral("\"%1\" is the name of line %2 already")
                       .arg(name, QString::number(*known)));
    else
        lineOfName_.insert(name, row_.line);
}

bool ListReader::readAddress(Tag *tag, TagAddress *address)
{
    tag->address = field(ADDRESS);
    const QString error = parseTagAddress(tag->area, tag->address, address);
    if (!error.isEmpty())
        fail(ADDRESS, error);
    return error.isEmpty();
}

void ListReader::checkLength()
{
    for (int i = headerFields_; i < row_.fields.size(); ++i) {
        if (row_.fields[i].isEmpty())
            continue;
        result_.errors.append({row_.line, i + 1, QString(),
                               QStringLiteral("the header has no such column; a text with a "
                                              "comma must be quoted")});
        return;
    }
}

void ListReader::readRow(const CsvRow &row)
{
    row_ = row;
    const int errorsBefore = result_.errors.size();
    Tag tag;
    TagAddress address;
    tag.name = field(NAME);
    checkName(tag.name);
    const bool areaKnown = readArea(&tag);
    const bool addressGood = areaKnown && readAddress(&tag, &address);
    const bool stationGood = readStation(&tag);
    if (readType(&tag) && areaKnown && !formMisfit({tag.type}, tag.area).isEmpty())
        fail(TYPE, formMisfit({tag.type}, tag.area));
    tag.description = field(DESCRIPTION);
    checkLength();
    if (addressGood && stationGood) {
        const QString conflict = conflicts_.add(tag, address);
        if (!conflict.isEmpty())
            fail(ADDRESS, conflict);
    }
    if (result_.errors.size() == errorsBefore) {
        result_.tags.append(tag);
        result_.lines.append(row.line);
    }
}

// Names the column of a malformed row, if the header could be read.
void ListReader::failRow(const CsvRows &rows)
{
    const int *const column =
        std::find(std::begin(fieldOf_), std::end(fieldOf_), rows.errorColumn - 1);
    const bool isNamed = column != std::end(fieldOf_);
    result_.errors.append(
        {rows.errorLine, rows.errorColumn,
         isNamed ? columnName(static_cast<int>(column - std::begin(fieldOf_))) : QString(),
         rows.errorText});
}

// All behind the header.
void ListReader::readRows(const QVector<CsvRow> &rows)
{
    for (int i = 1; i < rows.size(); ++i) {
        if (result_.errors.size() >= MOST_ERRORS) {
            result_.errors.append({rows.at(i).line, 0, QString(),
                                   QStringLiteral("there are too many errors; the list was not "
                                                  "read from here on")});
            return;
        }
        readRow(rows.at(i));
    }
}

TagListResult ListReader::read(const QByteArray &csv)
{
    const bool marked = csv.startsWith(BYTE_ORDER_MARK);
    const QByteArray text = marked ? csv.mid(3) : csv;
    const TagError form = wrongForm(text);
    if (!form.text.isEmpty()) {
        result_.errors.append(form);
        return result_;
    }
    const CsvRows rows = splitCsv(text);
    if (rows.rows.isEmpty() && rows.errorLine == 0)
        result_.errors.append({0, 0, QString(), QStringLiteral("there is no header line")});
    if (!rows.rows.isEmpty() && readHeader(rows.rows.first())) {
        readRows(rows.rows);
    }
    if (rows.errorLine != 0)
        failRow(rows);
    return result_;
}

TagListResult unusable(const QString &text)
{
    TagListResult result;
    result.errors.append({0, 0, QString(), text});
    return result;
}

} // namespace

TagListResult parseTagList(const QByteArray &csv)
{
    ListReader reader;
    return reader.read(csv);
}

TagListResult loadTagList(const QString &path)
{
    QFile file(path);
    if (file.open(QIODevice::ReadOnly)) {
        const QByteArray csv = file.read(LARGEST_FILE + 1);
        if (csv.size() > LARGEST_FILE)
            return unusable(QStringLiteral("is larger than %1 MiB").arg(LARGEST_FILE >> 20));
        if (file.error() == QFileDevice::NoError)
            return parseTagList(csv);
    }
    return unusable(QStringLiteral("cannot be read: %1").arg(file.errorString()));
}

QVector<TagError> pollErrors(const TagListResult &list)
{
    QVector<TagError> errors;
    for (const BlockDigitClash &clash : blockDigitClashes(list.tags))
        errors.append(
            {list.lines.at(clash.index), list.addressColumn, columnName(ADDRESS), clash.text});
    return errors;
}

QByteArray formatTagList(const QVector<Tag> &tags)
{
    QByteArray csv("name,area,address,station,type,description\n");
    for (const Tag &tag : tags) {
        const QString fields[COLUMN_COUNT] = {tag.name,           areaName(tag.area),
                                              tag.address,        QString::number(tag.station),
                                              typeName(tag.type), tag.description};
        for (int column = 0; column < COLUMN_COUNT; ++column) {
            if (column > 0)
                csv.append(',');
            appendCsvField(&csv, fields[column].toUtf8());
        }
        csv.append('\n');
    }
    return csv;
}

bool saveTagList(const QString &path, const QVector<Tag> &tags, QString *error)
{
    const QByteArray csv = formatTagList(tags);
    QSaveFile file(path);
    const bool saved = file.open(QIODevice::WriteOnly) && file.write(csv) == csv.size();
    if (saved && file.commit())
        return true;
    if (error != nullptr)
        *error = file.errorString();
    return false;
}

QString formatTagError(const QString &file, const TagError &error)
{
    QString text = file;
    if (error.line > 0)
        text += QLatin1Char(':') + QString::number(error.line);
    if (error.column > 0)
        text += QLatin1String(": column ") + QString::number(error.column);
    if (!error.columnName.isEmpty())
        text += QLatin1String(" \"") + error.columnName + QLatin1Char('"');
    return text + QLatin1String(": ") + error.text;
}

} // namespace kvt
