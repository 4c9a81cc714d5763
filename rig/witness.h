// What every witness of a run knows: what the PLC answered, and which values are shown and wrong.
#ifndef KVT_RIG_WITNESS_H
#define KVT_RIG_WITNESS_H

#include "rig/answer_book.h"
#include "rig/reply_begin.h"
#include "rig/rig.h"
#include "rig/wrong_values.h"

namespace kvt
{

/// Base of those who judge what a host shows and says. One thread.
class Witness : public HostEvents
{
public:
    explicit Witness(const QVector<Tag> &tags);

    /// The tap that the host's line must have.
    LineTap *tap() { return &begin_; }

    /// The parts of the run, which outlive the witness' use; again after the host has been started
    /// anew.
    void watch(HostSession *session, VirtualLine *line);

    /// The PLC has answered `request` with `reply`, whatever becomes of that.
    void answered(const QByteArray &request, const QByteArray &reply);

    /// To be called after each step of the line.
    void look();

    void tagSuspect(int tag) override;

protected:
    /// True of a write that was acknowledged, and not carried out, or a command more than once.
    static bool isBelied(const WriteReport &end, int carriedOut, bool isCommand);

    HostSession *session_ = nullptr;
    VirtualLine *line_ = nullptr;
    AnswerBook answers_;
    ReplyBegin begin_;
    WrongValues wrong_;
    QHash<QByteArray, int> carriedOut_; // by request on its way
};

} // namespace kvt

#endif
