#include "rig/answer_book.h"

#include "tags/tag_address.h"

#include <algorithm>

namespace kvt
{

namespace
{

constexpr int FIRST_DIGIT = 3;
constexpr int REMEMBERED = 64;

int placeOf(const Tag &tag)
{
    TagAddress address;
    if (tag.area == Area::C && parseTagAddress(tag.area, tag.address, &address).isEmpty())
        return FIRST_DIGIT + 2 * address.d;
    return FIRST_DIGIT;
}

// -1 where there are no digits.
int valueAt(const QByteArray &reply, int place, int bytes)
{
    bool isNumber = false;
    const int value = reply.mid(place, 2 * bytes).toInt(&isNumber, 16);
    return isNumber ? value : -1;
}

} // namespace

AnswerBook::AnswerBook(const QVector<Tag> &tags) : tags_(tags)
{
    for (const Tag &tag : tags)
        places_.append(placeOf(tag));
}

void AnswerBook::answered(const QByteArray &request, const QByteArray &reply, qint64 now_ns)
{
    // Writes have as many frames as values, and nothing to look up.
    if (request.startsWith('\x05') && request.size() != 8)
        return;
    QVector<Answer> &answers = answers_[request];
    if (answers.size() >= REMEMBERED)
        answers.removeFirst();
    answers.append({now_ns, reply});
}

void AnswerBook::attemptEnded(const Attempt &attempt)
{
    if (attempt.number == 1)
        current_ = {attempt.request->frame, attempt.sentAt_ns};
    if (!attempt.isSuccess())
        return;
    asked_.insert(attempt.endedAt_ns, current_);
    if (asked_.size() > REMEMBERED)
        asked_.erase(asked_.begin());
}

bool AnswerBook::isTrue(int tag, const Reading &reading) const
{
    const auto asked = asked_.constFind(reading.readAt_ns);
    const auto answers =
        asked == asked_.constEnd() ? answers_.constEnd() : answers_.constFind(asked->frame);
    if (answers == answers_.constEnd())
        return false;
    const int bytes = valueSize(tags_.at(tag).area);
    return std::any_of(answers->crbegin(), answers->crend(), [&](const Answer &answer) {
        return answer.at_ns >= asked->since_ns &&
               valueAt(answer.reply, places_.at(tag), bytes) == static_cast<int>(reading.raw);
    });
}

} // namespace kvt
