#include "tags/tag_list.h"

#include "tags/block_digit.h"
#include "tags/csv_dialect.h"
#include "tags/csv_rows.h"
#include "tags/field_text.h"
#include "tags/row_shape.h"
#include "tags/tag_columns.h"
#include "tags/tag_conflicts.h"
#include "tags/tag_elements.h"
#include "tags/tag_header.h"
#include "tags/tag_span.h"
#include "tags/tag_watch.h"
#include "tags/thousands_point.h"

#include <algorithm>

namespace kvt
{

namespace
{

constexpr char BYTE_ORDER_MARK[] = "\xEF\xBB\xBF";

// A wrong column makes as many errors as the list has rows.
constexpr int MOST_ERRORS = 100;

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
    bool readAddress(Tag *tag, bool formGood, TagSpan *span);
    bool readStation(Tag *tag);
    bool readForm(Tag *tag);
    bool readOrder(ValueForm *form);
    void readMeaning(Tag *tag);
    void readWatch(Tag *tag, const std::optional<ValueConverter> &converter);
    template <typename Column, int COUNT>
    void readTexts(ColumnTexts<Column, COUNT> *texts);
    template <typename Column>
    QString textOf(const ColumnProblem<Column> &problem);
    template <typename Column>
    void note(const QVector<ColumnProblem<Column>> &problems);
    QString conflictOf(const Tag &tag, const TagSpan &span);
    void checkName(const QString &name);
    void sortErrors(int from);
    void fail(int column, const QString &text);
    void failIf(int column, const QString &fault);
    void failEncoding(int column);
    void failRow(const CsvRows &rows);

    TagListResult result_;
    TagHeader header_;
    char separator_ = ',';
    bool hasCommas_ = false; ///< in numbers, as decimal signs
    CsvRow row_;             ///< the row being read
    bool rowIsDecoded_ = true;
    bool encodingIsTold_ = false;
    QHash<QString, int> lineOfName_;
    TagConflicts conflicts_;
};

void ListReader::fail(int column, const QString &text)
{
    result_.errors.append(
        {row_.line, header_.fieldOf[static_cast<size_t>(column)] + 1, tagColumnName(column), text});
}

void ListReader::failIf(int column, const QString &fault)
{
    if (!fault.isEmpty())
        fail(column, fault);
}

bool ListReader::readHeader(const CsvRow &row)
{
    header_ = readTagHeader(row, separator_, &result_);
    result_.addressColumn = header_.fieldOf[ADDRESS] + 1;
    return result_.errors.isEmpty();
}

QString ListReader::field(int column)
{
    const int index = header_.fieldOf[static_cast<size_t>(column)];
    if (index < 0 || index >= row_.fields.size())
        return QString();
    bool good = false;
    QString text = decodedField(row_.fields[index], &good);
    if (!good)
        failEncoding(column);
    return text;
}

/// The whole file is in another encoding, so that once is enough.
void ListReader::failEncoding(int column)
{
    rowIsDecoded_ = false;
    if (!encodingIsTold_)
        fail(column,
             QStringLiteral("is not UTF-8 text: save the list as \"CSV UTF-8\" (told once)"));
    encodingIsTold_ = true;
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

bool ListReader::readOrder(ValueForm *form)
{
    const QString text = field(ORDER);
    const std::optional<WordOrder> order =
        text.isEmpty() ? std::make_optional(header_.order) : parseWordOrder(text);
    form->order = order.value_or(header_.order);
    if (!order)
        fail(ORDER, wordOrderFault(text));
    const bool isTurned = form->type == ValueType::String && reversesWords(form->order);
    if (isTurned && !text.isEmpty())
        fail(ORDER, QStringLiteral("the words of a string are in order: abcd or badc"));
    else if (isTurned)
        form->order = swapsBytes(header_.order) ? WordOrder::Badc : WordOrder::Abcd;
    return order.has_value();
}

bool ListReader::readForm(Tag *tag)
{
    const QString fault = parseForm(field(TYPE), &tag->form);
    failIf(TYPE, fault);
    failIf(TORN, readTorn(field(TORN), &tag->acceptsTorn));
    failIf(WRITE_ORDER, readWriteOrder(field(WRITE_ORDER), &tag->isWrittenDown));
    return readOrder(&tag->form) && fault.isEmpty();
}

/// A number may have a decimal comma where commas part no fields.
template <typename Column, int COUNT>
void ListReader::readTexts(ColumnTexts<Column, COUNT> *texts)
{
    for (int i = 0; i < COUNT; ++i) {
        const auto column = static_cast<Column>(i);
        const QString text = field(columnOf(column));
        const bool mayHaveComma = separator_ != ',' && isNumberColumn(column);
        (*texts)[column] = mayHaveComma ? withPoint(text) : text;
        const QString doubt = mayHaveComma ? thousandsDoubt(text, hasCommas_) : QString();
        if (!doubt.isEmpty())
            note(QVector<ColumnProblem<Column>>{{column, doubt, !hasCommas_}});
    }
}

/// Quotes a number as it stands in the list, and names the comma that it may not have there.
template <typename Column>
QString ListReader::textOf(const ColumnProblem<Column> &problem)
{
    if (problem.isWarning || !isNumberColumn(problem.column))
        return problem.text;
    const QString entered = field(columnOf(problem.column));
    const QString pointed = withPoint(entered);
    if (pointed != entered && separator_ == ',')
        return QStringLiteral("\"%1\" has a comma where a point is needed").arg(entered);
    QString text = problem.text;
    return text.replace(QLatin1Char('"') + pointed + QLatin1Char('"'),
                        QLatin1Char('"') + entered + QLatin1Char('"'));
}

template <typename Column>
void ListReader::note(const QVector<ColumnProblem<Column>> &problems)
{
    for (const ColumnProblem<Column> &problem : problems) {
        const int column = columnOf(problem.column);
        QVector<TagError> &list = problem.isWarning ? result_.warnings : result_.errors;
        list.append({row_.line, header_.fieldOf[static_cast<size_t>(column)] + 1,
                     tagColumnName(column), textOf(problem)});
    }
}

void ListReader::readMeaning(Tag *tag)
{
    readTexts(&tag->meaning);
    QVector<MeaningProblem> problems;
    const std::optional<ValueConverter> converter =
        ValueConverter::make(tag->form, tag->area, tag->meaning, &problems);
    note(problems);
    readWatch(tag, converter);
}

/// What is wrong about the meaning hides nothing else but whether the alarm's name is known.
void ListReader::readWatch(Tag *tag, const std::optional<ValueConverter> &converter)
{
    readTexts(&tag->watch);
    QVector<WatchProblem> problems;
    readTagWatch(*tag, converter, &problems);
    note(problems);
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

bool ListReader::readAddress(Tag *tag, bool formGood, TagSpan *span)
{
    tag->address = field(ADDRESS);
    const ValueForm form = formGood ? tag->form : ValueForm(ValueType::Bool); // one element
    const QString error = parseTagSpan(tag->area, tag->address, form, span);
    failIf(ADDRESS, error);
    return error.isEmpty();
}

/// Returns with which earlier tag one of the elements conflicts; empty when none does.
QString ListReader::conflictOf(const Tag &tag, const TagSpan &span)
{
    Tag element = tag;
    for (int i = 0; i < span.addresses.size(); ++i) {
        element.address = span.texts.at(i);
        const QString conflict = conflicts_.add(element, span.addresses.at(i));
        if (!conflict.isEmpty())
            return i == 0 ? conflict
                          : QStringLiteral("%1, which it takes too, %2")
                                .arg(element.address, conflict);
    }
    return QString();
}

void ListReader::readRow(const CsvRow &row)
{
    row_ = row;
    rowIsDecoded_ = true;
    const std::optional<TagError> shape = shapeFault(row, header_, separator_);
    if (shape) {
        result_.errors.append(*shape);
        return;
    }
    const int errorsBefore = result_.errors.size();
    Tag tag;
    TagSpan span;
    tag.name = field(NAME);
    checkName(tag.name);
    const bool areaKnown = readArea(&tag);
    const bool typeKnown = readForm(&tag);
    const bool formGood = typeKnown && areaKnown && formMisfit(tag.form, tag.area).isEmpty();
    const bool addressGood = areaKnown && readAddress(&tag, formGood, &span);
    const bool stationGood = readStation(&tag);
    if (typeKnown && areaKnown && !formGood)
        fail(TYPE, formMisfit(tag.form, tag.area));
    tag.description = field(DESCRIPTION);
    if (formGood)
        readMeaning(&tag);
    if (addressGood && stationGood && formGood) {
        const QString conflict = conflictOf(tag, span);
        failIf(ADDRESS, conflict);
    }
    sortErrors(errorsBefore);
    if (rowIsDecoded_ && result_.errors.size() == errorsBefore) {
        result_.tags.append(tag);
        result_.lines.append(row.line);
    }
}

// What is wrong in a row is told from left to right, in whatever order it was found.
void ListReader::sortErrors(int from)
{
    std::stable_sort(result_.errors.begin() + from, result_.errors.end(),
                     [](const TagError &a, const TagError &b) { return a.column < b.column; });
}

// Names the column of a malformed row, if the header could be read.
void ListReader::failRow(const CsvRows &rows)
{
    const int column = header_.columnAt(rows.errorColumn - 1);
    result_.errors.append({rows.errorLine, rows.errorColumn,
                           column >= 0 ? tagColumnName(column) : QString(), rows.errorText});
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
    if (csv.startsWith("\xFF\xFE") || csv.startsWith("\xFE\xFF")) {
        result_.errors.append({0, 0, QString(), QStringLiteral("is UTF-16 text; UTF-8 is needed")});
        return result_;
    }
    QByteArray text = csv.startsWith(BYTE_ORDER_MARK) ? csv.mid(3) : csv;
    separator_ = takeSeparator(&text, tagColumnName(NAME).toLatin1());
    const CsvRows rows = splitCsv(text, separator_);
    hasCommas_ = separator_ != ',' && haveDecimalComma(rows.rows);
    if (rows.rows.isEmpty() && rows.errorLine == 0)
        result_.errors.append({0, 0, QString(), QStringLiteral("there is no header line")});
    if (!rows.rows.isEmpty() && readHeader(rows.rows.first())) {
        readRows(rows.rows);
    }
    if (rows.errorLine != 0)
        failRow(rows);
    return result_;
}

} // namespace

TagListResult parseTagList(const QByteArray &csv)
{
    ListReader reader;
    return reader.read(csv);
}

QVector<TagError> pollErrors(const TagListResult &list)
{
    QVector<TagError> errors;
    for (const BlockDigitClash &clash : blockDigitClashes(list.tags))
        errors.append(
            {list.lines.at(clash.index), list.addressColumn, tagColumnName(ADDRESS), clash.text});
    return errors;
}

} // namespace kvt
