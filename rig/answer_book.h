// What the PLC has really answered, to tell right values from wrong ones.
#ifndef KVT_RIG_ANSWER_BOOK_H
#define KVT_RIG_ANSWER_BOOK_H

#include "host/exchange_observer.h"
#include "host/value_table.h"
#include "tags/tag.h"

#include <QHash>
#include <QMap>

namespace kvt
{

/// Remembers the latest answers to each read, and which request each good reply was taken for. One
/// thread.
class AnswerBook
{
public:
    explicit AnswerBook(const QVector<Tag> &tags);

    /// The PLC has answered `request`, whatever becomes of that.
    void answered(const QByteArray &request, const QByteArray &reply, qint64 now_ns);

    /// The host has ended an attempt.
    void attemptEnded(const Attempt &attempt);

    /// True when an answer to the request itself, given since its first attempt left, has this
    /// value for the tag.
    bool isTrue(int tag, const Reading &reading) const;

private:
    struct Answer {
        qint64 at_ns;
        QByteArray reply;
    };
    struct Asked {
        QByteArray frame;
        qint64 since_ns = 0;
    };

    QVector<Tag> tags_;
    QVector<int> places_;                        // of the tags' digits in a reply
    QHash<QByteArray, QVector<Answer>> answers_; // by request
    QMap<qint64, Asked> asked_;                  // by the time that the reply was complete
    Asked current_;
};

} // namespace kvt

#endif
