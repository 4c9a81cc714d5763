// Holds every reading that the host shows against the request that its value was given to.
#ifndef KVT_TESTS_FUZZ_SUPPORT_SLAVE_WITNESS_H
#define KVT_TESTS_FUZZ_SUPPORT_SLAVE_WITNESS_H

#include "tests/fuzz/support/hostile_slave.h"
#include "tests/fuzz/support/request_ends.h"
#include "tests/fuzz/support/story.h"

#include <QHash>

#include <algorithm>
#include <array>

class SlaveWitness final : public RequestEnds
{
public:
    /// `slave` outlives it.
    SlaveWitness(const QVector<kvt::Tag> &tags, const HostileSlave *slave)
        : tags_(tags), slave_(slave), wrongSince_ns_(tags.size(), kvt::NEVER)
    {
    }

    /// The number of the request that is under way, or comes next.
    int request() const { return request_; }

    /// Since when the tag has shown a value that was not given to its own request; NEVER while it
    /// shows none.
    qint64 wrongSince_ns(int tag) const { return wrongSince_ns_.at(tag); }

    /// The first byte behind the latest request has come.
    void replyBegan(qint64 now_ns) { replyBegan_ns_ = now_ns; }

    /// The longest that a good reply took to begin.
    qint64 longestReply_ns() const { return longestReply_ns_; }

    /// Whether a pause or the end of the hope for one has decided about what was unproven, since
    /// this was asked last.
    bool takeProofEnded() { return std::exchange(proofEnded_, false); }

    /// The stations that are switched off.
    QSet<int> stationsOff() const { return off_; }

    /// Whether no request waits, and no tag shows a value that is not its own.
    bool isQuiet() const
    {
        return allEnded() && std::all_of(wrongSince_ns_.cbegin(), wrongSince_ns_.cend(),
                                         [](qint64 since_ns) { return since_ns == kvt::NEVER; });
    }

    void setFrameOf(int id, const QByteArray &frame) { frames_.insert(id, frame); }

    /// Whether an acknowledgement was for a write that no station has carried out.
    bool hasAcknowledgedNothing() const { return acknowledgedNothing_; }

    void attemptEnded(const kvt::Attempt &attempt) override
    {
        tell(attempt.endedAt_ns, "attempt has ended, result", attempt.resultCode);
        if (attempt.isSuccess()) {
            successes_.at(static_cast<size_t>(request_) % successes_.size()) = {attempt.endedAt_ns,
                                                                                request_};
            longestReply_ns_ = qMax(longestReply_ns_, replyBegan_ns_ - attempt.sentAt_ns);
        }
        request_ += attempt.isFinal() ? 1 : 0;
    }

    void tagRead(int tag, const kvt::Reading &reading) override
    {
        const bool own = reading.doubtful || isOwn(tags_.at(tag).area, reading);
        if (reading.doubtful || !own)
            tell(reading.readAt_ns, own ? "reading in doubt of tag" : "WRONG reading of tag", tag);
        wrongSince_ns_[tag] = own ? kvt::NEVER : reading.readAt_ns;
    }

    void tagSuspect(int tag) override
    {
        if (wrongSince_ns_[tag] != kvt::NEVER)
            tell(wrongSince_ns_[tag], "WRONG reading withdrawn, of tag", tag);
        wrongSince_ns_[tag] = kvt::NEVER;
    }
    void proofEnded() override { proofEnded_ = true; }

    void writeChanged(const kvt::WriteReport &report) override
    {
        RequestEnds::writeChanged(report);
        if (report.state == kvt::WriteState::Acknowledged)
            acknowledgedNothing_ =
                acknowledgedNothing_ || !slave_->hasCarriedOut(frames_.value(report.id));
    }

    void stationSwitched(int station, bool on) override
    {
        if (on)
            off_.remove(station);
        else
            off_.insert(station);
    }

private:
    struct Success {
        qint64 endedAt_ns = 0;
        int request = -1;
    };

    // Readings that wait for a proof are shown a few requests later.
    bool isOwn(kvt::Area area, const kvt::Reading &reading) const
    {
        for (const Success &success : successes_)
            if (success.endedAt_ns == reading.readAt_ns)
                return slave_->requestOf(area, static_cast<int>(reading.raw)) == success.request ||
                       slave_->hasDamagedDigits(success.request);
        return false;
    }

    QVector<kvt::Tag> tags_;
    const HostileSlave *slave_;
    QVector<qint64> wrongSince_ns_;
    std::array<Success, 64> successes_;
    int request_ = 0;
    qint64 replyBegan_ns_ = 0;
    qint64 longestReply_ns_ = 0;
    bool proofEnded_ = false;
    bool acknowledgedNothing_ = false;
    QHash<int, QByteArray> frames_;
    QSet<int> off_;
};

#endif
