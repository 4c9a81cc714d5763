// Reads a trace back, record by record.
#ifndef KVT_HOST_TRACE_READER_H
#define KVT_HOST_TRACE_READER_H

#include "host/trace_format.h"

#include <QDateTime>
#include <QFile>
#include <QList>

namespace kvt
{

/// One line of a trace.
struct TraceRecord {
    int line = 0;     ///< in the file, from 1
    int exchange = 0; ///< number of the request that it belongs to; 0 before the first
    QByteArray stamp; ///< seconds since the start, as they stand
    QByteArray name;  ///< one of the names in `trace`
    QList<QByteArray> words;

    bool is(const char *what) const { return name == what; }

    /// The word `index` as a number, as bytes, as text. The reader has checked that it is one.
    int number(int index) const { return words.at(index).toInt(); }
    QByteArray bytes(int index) const;
    QString text(int index) const;
};

/// Reads a file. A last line that was cut off in the middle is passed over: the machine may have
/// gone down.
class TraceReader
{
public:
    /// False, with `*error` (not null) set, when the file cannot be read or is no trace.
    bool open(const QString &path, QString *error);

    /// Reads the next record. False at the end, and at a line that is none, which `error` names.
    bool next(TraceRecord *record);

    /// The time of day from which the stamps count; invalid when the first line does not tell.
    QDateTime startedAt() const { return startedAt_; }

    /// Number of records that `next` has read.
    int records() const { return records_; }

    /// What is wrong with the line at which `next` stopped; empty at the end of the trace.
    QString error() const { return error_; }

private:
    bool fail(const QString &text);
    bool parse(const QByteArray &line, TraceRecord *record);
    QByteArray readLine();

    QFile file_;
    QByteArray buffer_;
    QString error_;
    QDateTime startedAt_;
    int records_ = 0;
    int line_ = 1;
    int exchange_ = 0;
    bool exchangeOpen_ = false;
};

} // namespace kvt

#endif
