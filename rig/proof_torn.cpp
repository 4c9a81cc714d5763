#include "rig/plant.h"
#include "rig/proofs.h"
#include "rig/rig.h"
#include "simulator/random.h"
#include "tags/tag_elements.h"

#include <algorithm>
#include <deque>

namespace kvt
{

namespace
{

constexpr int PAIRS = 4;
constexpr int FOURS = 4;
constexpr quint32 LONGEST_PAUSE_ms = 500; // from one change of a value to the next
constexpr size_t REMEMBERED = 1000;       // values of a tag: several seconds

QVector<Tag> valuesOfWords(bool acceptsTorn)
{
    QVector<Tag> tags;
    for (int i = 0; i < PAIRS + FOURS; ++i) {
        Tag tag = plantTag(Area::D, 1, QStringLiteral("%1.0.0").arg(32 + i));
        tag.form = i < PAIRS ? ValueType::U32 : ValueType::U64;
        tag.acceptsTorn = acceptsTorn;
        tags.append(tag);
    }
    return tags;
}

// Changes some words of a tag at once, or all, and knows which values there were. A word that
// changes is given a number that it does not get again before 65,536 changes.
class Changer : public HostEvents
{
public:
    Changer(const QVector<Tag> &tags, quint64 seed) : random_(seed)
    {
        for (const Tag &tag : tags) {
            Value value;
            value.tag = tag;
            value.texts = elementTexts(tag);
            value.words.fill(0, value.texts.size());
            values_.append(value);
        }
    }

    void start(PlcMemory *memory, VirtualLine *line)
    {
        memory_ = memory;
        line_ = line;
        for (Value &value : values_)
            change(&value);
    }

    // To be called before each step of the line.
    void look()
    {
        for (Value &value : values_)
            if (line_->now_ns() >= value.next_ns)
                change(&value);
    }

    void tagRead(int tag, const Reading &reading) override
    {
        const Value &value = values_.at(tag);
        ++readings;
        if (std::find(value.past.begin(), value.past.end(), reading.raw) == value.past.end())
            ++neverWere;
    }

    void tagTorn(int) override { ++torn; }

    qint64 readings = 0;
    qint64 neverWere = 0;
    qint64 torn = 0;
    qint64 changes = 0;

private:
    struct Value {
        Tag tag;
        QStringList texts;
        QVector<quint16> words;
        quint16 number = 0;
        qint64 next_ns = 0;
        std::deque<quint64> past; // the latest first
    };

    void change(Value *value)
    {
        ++value->number;
        const bool all = random_.below(2) == 0;
        quint64 bits = 0;
        for (int i = 0; i < value->words.size(); ++i) {
            if (all || random_.below(2) == 0)
                value->words[i] = value->number;
            memory_->setValue(value->tag.station, Area::D, value->texts.at(i), value->words.at(i));
            bits = bits << 16 | value->words.at(i);
        }
        value->past.push_front(bits);
        if (value->past.size() > REMEMBERED)
            value->past.pop_back();
        value->next_ns = line_->now_ns() + milliseconds(1 + random_.below(LONGEST_PAUSE_ms));
        ++changes;
    }

    QVector<Value> values_;
    Random random_;
    PlcMemory *memory_ = nullptr;
    VirtualLine *line_ = nullptr;
};

} // namespace

ProofResult proveNothingIsTorn(const ProofRun &run, bool acceptsTorn)
{
    ProofResult result;
    RigSettings settings;
    settings.driverPath = run.driverPath;
    settings.tags = valuesOfWords(acceptsTorn);
    settings.seed = run.seed;
    settings.plc.turnaround_ns = milliseconds(2);
    Changer changer(settings.tags, run.seed);
    const std::unique_ptr<Rig> rig = Rig::make(settings, &changer, &result.text);
    if (!rig)
        return result;
    changer.start(&rig->plc().memory(), &rig->line());
    while (changer.readings < run.count && rig->line().step())
        changer.look();
    result.text = QStringLiteral("torn values%1: seed %2, %3 values of two and four words read in "
                                 "%4 s of a line at 38,400, %5 exchanges; changed %6 times; shown "
                                 "and never there %7, said to be torn %8")
                      .arg(acceptsTorn ? QStringLiteral(" accepted") : QString())
                      .arg(run.seed)
                      .arg(changer.readings)
                      .arg(rig->line().now_ns() / seconds(1))
                      .arg(rig->plc().counters().exchanges)
                      .arg(changer.changes)
                      .arg(changer.neverWere)
                      .arg(changer.torn);
    result.held = changer.readings >= run.count && changer.neverWere == 0;
    return result;
}

} // namespace kvt
