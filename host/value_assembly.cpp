#include "host/value_assembly.h"

#include "tags/value_elements.h"

#include <algorithm>
#include <array>

namespace kvt
{

ValueAssembly::ValueAssembly(const QVector<Tag> &tags, const TagIndex &index)
    : index_(index), place_(tags.size(), -1)
{
    for (int tag = 0; tag < tags.size(); ++tag) {
        if (!index.isAssembled(tag))
            continue;
        Value value;
        value.tag = tag;
        value.form = tags.at(tag).form;
        value.area = tags.at(tag).area;
        value.acceptsTorn = tags.at(tag).acceptsTorn;
        value.isOneReply = !index.takesSeveralRequests(tag);
        for (const int cell : index.cellsOf(tag)) {
            Word word;
            word.cell = cell;
            value.words.push_back(word);
        }
        place_[tag] = static_cast<int>(values_.size());
        values_.push_back(value);
    }
}

void ValueAssembly::read(int cell, const Reading &reading)
{
    for (const int tag : index_.cells().at(cell).assembled)
        take(&valueOf(tag), cell, reading);
}

void ValueAssembly::start(Value *value, qint64 reply)
{
    value->pass = Pass::Collecting;
    value->passReply = reply;
    for (Word &word : value->words)
        word.to = 0;
}

void ValueAssembly::take(Value *value, int cell, const Reading &reading)
{
    const auto found = std::find_if(value->words.begin(), value->words.end(),
                                    [cell](const Word &word) { return word.cell == cell; });
    Word &word = *found;
    const auto place = static_cast<int>(found - value->words.begin());
    const bool begins = value->isOneReply
                            ? reading.reply != value->passReply || value->pass == Pass::None
                            : place == 0 && value->pass != Pass::Checking;
    if (begins)
        start(value, reading.reply);
    if (place == value->awaited)
        value->awaited = -1;
    // A reading that waited for its proof may have been overtaken.
    if (value->pass == Pass::None || reading.reply < word.to)
        return;
    if (word.to == 0 || word.value != reading.raw) {
        word.from = reading.reply;
        word.doubtful = false;
    }
    word.value = static_cast<quint16>(reading.raw);
    word.to = reading.reply;
    word.readAt_ns = reading.readAt_ns;
    word.doubtful = word.doubtful || reading.doubtful;
    judge(value);
}

void ValueAssembly::judge(Value *value)
{
    std::vector<Word> &words = value->words;
    const auto oldest = std::min_element(words.begin(), words.end(),
                                         [](const Word &a, const Word &b) { return a.to < b.to; });
    const auto changed = std::max_element(
        words.begin(), words.end(), [](const Word &a, const Word &b) { return a.from < b.from; });
    const bool haveAll = oldest->to > 0;
    // Each word is known at the moment when the oldest was read last.
    if (haveAll && (changed->from <= oldest->to || value->acceptsTorn)) {
        show(value);
        return;
    }
    if (!haveAll && value->pass == Pass::Collecting)
        return;
    if (value->pass == Pass::Collecting) {
        value->pass = Pass::Checking;
        value->triesLeft = MOST_TRIES * static_cast<int>(words.size() - 1);
    }
    if (value->awaited < 0)
        askFor(value, static_cast<size_t>(oldest - words.begin()));
}

void ValueAssembly::askFor(Value *value, size_t word)
{
    if (value->triesLeft == 0) {
        value->quality = Quality::Torn;
        end(value, Outcome::Torn);
        return;
    }
    --value->triesLeft;
    value->awaited = static_cast<int>(word);
    wanted_.push_back(value->words[word].cell);
}

void ValueAssembly::show(Value *value)
{
    std::array<quint16, ELEMENTS_PER_BLOCK> elements = {}; // no value takes more
    bool doubtful = false;
    value->oldest_ns = value->words.front().readAt_ns;
    value->newest_ns = value->oldest_ns;
    for (size_t i = 0; i < value->words.size(); ++i) {
        Word &word = value->words[i];
        word.shown = word.value;
        elements[i] = word.value;
        doubtful = doubtful || word.doubtful;
        value->oldest_ns = std::min(value->oldest_ns, word.readAt_ns);
        value->newest_ns = std::max(value->newest_ns, word.readAt_ns);
    }
    if (value->form.type != ValueType::String)
        value->raw = joinElements(value->form, value->area, elements.data());
    value->quality = doubtful ? Quality::Doubtful : Quality::Good;
    value->isKnown = true;
    value->provable = true;
    end(value, Outcome::Assembled);
}

void ValueAssembly::end(Value *value, Outcome outcome)
{
    value->pass = Pass::None;
    value->awaited = -1;
    events_.push_back({value->tag, outcome});
}

void ValueAssembly::lost(int cell)
{
    for (const int tag : index_.cells().at(cell).assembled) {
        Value &value = valueOf(tag);
        if (value.pass != Pass::None)
            end(&value, Outcome::Lost);
    }
}

void ValueAssembly::readFailed(int cell)
{
    lost(cell);
    for (const int tag : index_.cells().at(cell).assembled) {
        Value &value = valueOf(tag);
        if (value.quality != Quality::NeverRead)
            value.quality = Quality::Failed;
    }
}

QVector<int> ValueAssembly::withdraw(qint64 provedUntil_ns)
{
    QVector<int> withdrawn;
    for (Value &value : values_) {
        if (value.pass != Pass::None)
            end(&value, Outcome::Lost);
        if (value.newest_ns <= provedUntil_ns)
            continue;
        value.provable = false;
        if (value.quality != Quality::Good && value.quality != Quality::Doubtful)
            continue;
        value.quality = Quality::Suspect;
        withdrawn.append(value.tag);
    }
    return withdrawn;
}

void ValueAssembly::begin(int tag)
{
    Value &value = valueOf(tag);
    start(&value, 0);
    value.pass = Pass::Checking;
    const auto words = static_cast<int>(value.words.size());
    value.triesLeft = words + MOST_TRIES * (words - 1);
    if (value.awaited < 0)
        askFor(&value, 0);
}

void ValueAssembly::clear()
{
    events_.clear();
    wanted_.clear();
}

Reading ValueAssembly::readingOf(int tag) const
{
    const Value &value = valueOf(tag);
    Reading reading;
    reading.raw = value.raw;
    reading.readAt_ns = value.oldest_ns;
    reading.doubtful = value.quality == Quality::Doubtful;
    return reading;
}

TagValue ValueAssembly::value(int tag, qint64 now_ns, qint64 staleAfter_ns) const
{
    const Value &entry = valueOf(tag);
    TagValue value;
    value.raw = entry.raw;
    value.isKnown = entry.isKnown;
    value.quality = entry.quality;
    value.readAt_ns = entry.oldest_ns;
    value.newestAt_ns = entry.newest_ns;
    value.provable = entry.provable;
    if (entry.form.type == ValueType::String)
        for (const Word &word : entry.words)
            value.elements.append(word.shown);
    const bool isFresh = value.quality == Quality::Good || value.quality == Quality::Doubtful;
    if (isFresh && now_ns - entry.oldest_ns > staleAfter_ns)
        value.quality = Quality::Stale;
    return value;
}

} // namespace kvt
