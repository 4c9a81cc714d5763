// Values that are made of the readings of several cells, or not of a cell's bits as they stand.
#ifndef KVT_HOST_VALUE_ASSEMBLY_H
#define KVT_HOST_VALUE_ASSEMBLY_H

#include "host/tag_index.h"
#include "host/value_table.h"

#include <vector>

namespace kvt
{

/// Puts the values of a host's assembled tags together.
///
/// The words of one value come in replies of their own, and the PLC may change all of them between
/// two. So a value is taken only if there is a moment at which each of its words is known: it was
/// read in that moment, or read alike before and after it with nothing else between. A pass begins
/// when the first word is read; once each word has been read, those read longest ago are read again
/// until there is such a moment, which takes one request more for two words, n - 1 for n. A word
/// that has changed meanwhile begins anew and costs n - 1 more; after MOST_TRIES times n - 1 the
/// value is Torn until a later pass succeeds. Cells that one reply brings need none of it.
///
/// The value shown is that of the last pass that succeeded. No clock and no lock of its own.
class ValueAssembly
{
public:
    /// How often the words of a value are read again in one pass: a PLC that changes them faster
    /// than the line reads them is not to take the line for itself.
    static constexpr int MOST_TRIES = 4;

    /// `index` outlives the object and is that of `tags`.
    ValueAssembly(const QVector<Tag> &tags, const TagIndex &index);

    /// What has become of a pass.
    enum class Outcome {
        Assembled, ///< there is a new value
        Torn,      ///< its words did not hold still
        Lost       ///< a reading did not come, or does not count
    };
    struct Event {
        int tag;
        Outcome outcome;
    };

    /// A reading of a cell counts. What follows from it is in `events` and `wanted`.
    void read(int cell, const Reading &reading);

    /// A cell of which `wanted` told has not been read, or a reading of it does not count: it came
    /// too late for a write, or may be another cell's.
    void lost(int cell);

    /// An attempt to read the cell has failed for good. Values stay, and are not good any more.
    void readFailed(int cell);

    /// Readings after `provedUntil_ns` may be other cells'. Returns the tags that become Suspect.
    QVector<int> withdraw(qint64 provedUntil_ns);

    /// Somebody wants a tag of several requests read now: a pass begins that asks for each word.
    void begin(int tag);

    /// What the calls above have brought about, in order, until `clear`.
    const std::vector<Event> &events() const { return events_; }
    /// The cells to be read next, ahead of the others; each may be there more than once.
    const std::vector<int> &wanted() const { return wanted_; }
    void clear();

    /// When the newest of the readings that a tag's value is made of was complete.
    qint64 newestAt_ns(int tag) const { return valueOf(tag).newest_ns; }

    /// The reading that a tag's value is made of, for its event.
    Reading readingOf(int tag) const;

    /// The tag's value at `now_ns`; see ValueTable::value.
    TagValue value(int tag, qint64 now_ns, qint64 staleAfter_ns) const;

private:
    enum class Pass {
        None,       // the first word is waited for
        Collecting, // the other words are waited for
        Checking    // words are read again
    };
    struct Word {
        int cell = 0;
        quint16 value = 0;
        quint16 shown = 0;    // as it is part of the value
        qint64 from = 0;      // number of the reply since which it has not changed
        qint64 to = 0;        // number of the latest reply with it; 0: none in this pass
        qint64 readAt_ns = 0; // when that came
        bool doubtful = false;
    };
    struct Value {
        int tag = 0;
        ValueForm form;
        Area area = Area::D;
        bool acceptsTorn = false;
        bool isOneReply = false;
        Pass pass = Pass::None;
        qint64 passReply = 0; // number of the reply with which the pass began
        int triesLeft = 0;    // readings that may still be asked for
        int awaited = -1;     // index of the word that has been asked for
        std::vector<Word> words;
        quint64 raw = 0;
        Quality quality = Quality::NeverRead;
        bool isKnown = false;
        bool provable = true;
        qint64 oldest_ns = 0; // of the readings that it is made of
        qint64 newest_ns = 0;
    };

    Value &valueOf(int tag) { return values_[static_cast<size_t>(place_.at(tag))]; }
    const Value &valueOf(int tag) const { return values_[static_cast<size_t>(place_.at(tag))]; }
    static void start(Value *value, qint64 reply);
    void take(Value *value, int cell, const Reading &reading);
    void judge(Value *value);
    void askFor(Value *value, size_t word);
    void show(Value *value);
    void end(Value *value, Outcome outcome);

    const TagIndex &index_;
    std::vector<Value> values_;
    QVector<int> place_; // of each tag in values_; -1: it is none of these
    std::vector<Event> events_;
    std::vector<int> wanted_;
};

} // namespace kvt

#endif
