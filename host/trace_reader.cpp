#include "host/trace_reader.h"

#include "host/reply_check.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace kvt
{

namespace
{

constexpr int LONGEST_LINE = 1024 * 1024;

// More than any host reads at a time. The driver makes a record for each, so a single line with a
// number out of the air would take all memory.
constexpr int MOST_ELEMENTS = 1000;

// What the words of each record are: n a number, e a number of elements, h bytes in hexadecimal, t
// a text, w any word.
// The words of "info" differ in number.
struct Form {
    const char *name;
    const char *words;
};
constexpr Form FORMS[] = {
    {trace::LOCAL, "n"},    {trace::VARIABLE, "nnt"},   {trace::LIST, "n"},
    {trace::STATION, "nn"}, {trace::WRITE, "nntnnnhn"}, {trace::ONCE, "nntnnnnn"},
    {trace::NOTHING, "n"},  {trace::ASK, "hn"},         {trace::SENT, "h"},
    {trace::RECEIVED, "h"}, {trace::DROPPED, "wn"},     {trace::JUDGED, "hnnnnn"},
    {trace::ENDED, "wn"},   {trace::VALUE, "nntenh"},   {trace::LINE, "w"},
    {trace::CONTINUED, ""}, {trace::LOST, "n"},
};

bool isBytes(const QByteArray &word)
{
    return word == trace::NO_BYTES ||
           (word.size() % 2 == 0 && std::all_of(word.begin(), word.end(), isHexDigit));
}

bool hasForm(const QByteArray &word, char form)
{
    bool good = !word.isEmpty();
    const int number = form == 'n' || form == 'e' ? word.toInt(&good) : 0;
    if (form == 'e')
        good = good && number <= MOST_ELEMENTS;
    if (form == 'h')
        good = good && isBytes(word);
    return good;
}

bool isStamp(const QByteArray &word)
{
    constexpr double LONGEST_RUN_s = 1e12; // thirty thousand years, and fits wherever it is counted
    bool isNumber = false;
    const double seconds = word.toDouble(&isNumber);
    return isNumber && seconds < LONGEST_RUN_s && std::all_of(word.begin(), word.end(), [](char c) {
               return (c >= '0' && c <= '9') || c == '.';
           });
}

bool wordsFit(const TraceRecord &record)
{
    if (record.is(trace::INFO))
        return true;
    const auto form = std::find_if(std::begin(FORMS), std::end(FORMS),
                                   [&](const Form &f) { return record.is(f.name); });
    if (form == std::end(FORMS) ||
        record.words.size() != static_cast<int>(std::strlen(form->words)))
        return false;
    for (int i = 0; i < record.words.size(); ++i)
        if (!hasForm(record.words.at(i), form->words[i]))
            return false;
    return true;
}

} // namespace

QByteArray TraceRecord::bytes(int index) const
{
    return QByteArray::fromHex(words.at(index));
}

QString TraceRecord::text(int index) const
{
    const QByteArray &word = words.at(index);
    return word == trace::NO_BYTES ? QString()
                                   : QString::fromUtf8(QByteArray::fromPercentEncoding(word));
}

bool TraceReader::open(const QString &path, QString *error)
{
    file_.setFileName(path);
    if (!file_.open(QIODevice::ReadOnly)) {
        *error = file_.errorString();
        return false;
    }
    const QByteArray head = readLine();
    const QByteArray begin = QByteArray(trace::HEAD) + ' ';
    if (head.startsWith(begin)) {
        startedAt_ = QDateTime::fromString(QString::fromLatin1(head.mid(begin.size()).trimmed()),
                                           Qt::ISODateWithMs);
        return true;
    }
    *error = QStringLiteral("line 1: this is no trace, which begins with \"%1\"")
                 .arg(QLatin1String(trace::HEAD));
    return false;
}

// Through a buffer that stays: QFile would make one of the longest line for every line.
QByteArray TraceReader::readLine()
{
    buffer_.resize(LONGEST_LINE + 1);
    const qint64 length = file_.readLine(buffer_.data(), buffer_.size());
    return QByteArray(buffer_.constData(), static_cast<int>(qMax<qint64>(length, 0)));
}

bool TraceReader::next(TraceRecord *record)
{
    const QByteArray line = readLine();
    if (!line.endsWith('\n') && file_.atEnd())
        return false;
    ++line_;
    *record = TraceRecord();
    record->line = line_;
    if (!line.endsWith('\n') || !parse(line.chopped(1), record))
        return fail(QString::fromLatin1(line.left(60).trimmed()));
    if (record->is(trace::ASK) && !exchangeOpen_) {
        ++exchange_;
        exchangeOpen_ = true;
    } else if (record->is(trace::JUDGED) && record->number(1) != 0) {
        exchangeOpen_ = false;
    }
    record->exchange = exchange_;
    ++records_;
    return true;
}

bool TraceReader::parse(const QByteArray &line, TraceRecord *record)
{
    record->words = line.split(' ');
    if (record->words.size() < 2)
        return false;
    record->stamp = record->words.takeFirst();
    record->name = record->words.takeFirst();
    return isStamp(record->stamp) && wordsFit(*record);
}

bool TraceReader::fail(const QString &text)
{
    error_ = QStringLiteral("line %1 (exchange %2): \"%3\" is no record of a trace")
                 .arg(line_)
                 .arg(exchange_)
                 .arg(text);
    return false;
}

} // namespace kvt
