// Values of several cells: when they are taken, and what is read again for it.
#include "host/value_assembly.h"

#include "tests/support/draw.h"

#include <QtTest>

#include <array>

using namespace kvt;

namespace
{

Tag tag(const char *name, Area area, const char *address, ValueType type)
{
    Tag made;
    made.name = QLatin1String(name);
    made.area = area;
    made.address = QLatin1String(address);
    made.station = 1;
    made.form = type;
    return made;
}

const Tag PAIR = tag("pair", Area::D, "5.2.0", ValueType::U32);
const Tag FOUR = tag("four", Area::D, "5.2.0", ValueType::U64);

// An assembly that is fed cell by cell; each reading comes in a reply of its own, a second behind
// the one before.
class Bench
{
public:
    explicit Bench(const QVector<Tag> &list) : tags(list), index(tags), assembly(tags, index) {}

    /// A reading of a tag's element. Returns which of its elements are wanted then.
    QVector<int> read(int ofTag, int element, quint16 raw, bool doubtful = false)
    {
        assembly.clear();
        ++replies;
        Reading reading;
        reading.raw = raw;
        reading.readAt_ns = seconds(replies);
        reading.reply = replies;
        reading.doubtful = doubtful;
        assembly.read(index.cellsOf(ofTag).at(element), reading);
        QVector<int> wanted;
        for (const int cell : assembly.wanted())
            wanted.append(index.cellsOf(ofTag).indexOf(cell));
        return wanted;
    }

    TagValue value(int ofTag = 0) const { return assembly.value(ofTag, seconds(replies), NEVER); }
    bool isGood(int ofTag = 0) const { return value(ofTag).quality == Quality::Good; }

    QVector<Tag> tags;
    TagIndex index;
    ValueAssembly assembly;
    qint64 replies = 0;
};

const QVector<int> NOTHING;

} // namespace

class TestValueAssembly : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void twoWordsAreTakenOnceTheFirstHasStayed();
    void aWordThatChangedIsGoneOnFrom();
    void wordsThatKeepChangingAreTorn();
    void aTornValueIsTriedAgain();
    void allButTheLastOfFourAreReadAgain();
    void theFirstAloneWouldNotDoForFour();
    void aCyclicReadingIsAsGoodAsOneAskedFor();
    void tornWordsAreAcceptedWhereTheListSaysSo();
    void bytesOfOneReplyAreTakenAtOnce();
    void aBoolIsOneOrNone();
    void theAgeIsThatOfTheOldestReading();
    void oneDoubtfulReadingMakesTheValueDoubtful();
    void aFailureEndsThePassAndTheValueIsKept();
    void aReadingThatIsWithdrawnTakesTheValueWithIt();
    void aPassDoesNotOutliveAReadingThatIsLost();
    void whatIsAskedForIsReadWordByWord();
    void valuesShareTheirWords();
    void noValueIsShownThatNeverWas();
};

void TestValueAssembly::twoWordsAreTakenOnceTheFirstHasStayed()
{
    Bench bench({PAIR});
    QCOMPARE(bench.read(0, 0, 0x1234), NOTHING);
    QCOMPARE(bench.read(0, 1, 0x5678), QVector<int>({0}));
    QVERIFY(!bench.value().isKnown);
    QCOMPARE(bench.read(0, 0, 0x1234), NOTHING);
    QVERIFY(bench.isGood());
    QCOMPARE(bench.value().raw, quint64(0x12345678));
    QCOMPARE(bench.assembly.events().size(), size_t(1));
    QVERIFY(bench.assembly.events()[0].outcome == ValueAssembly::Outcome::Assembled);
}

void TestValueAssembly::aWordThatChangedIsGoneOnFrom()
{
    Bench bench({PAIR});
    bench.read(0, 0, 1);
    bench.read(0, 1, 0xFFFF);
    QCOMPARE(bench.read(0, 0, 2), QVector<int>({1})); // it changed: is the other still so?
    QCOMPARE(bench.read(0, 1, 0), QVector<int>({0})); // it is not
    QCOMPARE(bench.read(0, 0, 2), NOTHING);
    QCOMPARE(bench.value().raw, quint64(0x20000));
}

void TestValueAssembly::wordsThatKeepChangingAreTorn()
{
    Bench bench({PAIR});
    bench.read(0, 0, 1);
    quint16 changing = 1;
    int again = 0;
    for (QVector<int> wanted = bench.read(0, 1, 1); !wanted.isEmpty(); ++again)
        wanted = bench.read(0, wanted.first(), ++changing);
    QCOMPARE(again, int(ValueAssembly::MOST_TRIES));
    QCOMPARE(bench.value().quality, Quality::Torn);
    QVERIFY(!bench.value().isKnown);
    QVERIFY(bench.assembly.events().back().outcome == ValueAssembly::Outcome::Torn);
}

void TestValueAssembly::aTornValueIsTriedAgain()
{
    Bench bench({PAIR});
    bench.read(0, 0, 0);
    bench.read(0, 1, 7);
    bench.read(0, 0, 0);
    QVERIFY(bench.isGood());
    bench.read(0, 0, 1);
    quint16 changing = 1;
    QVector<int> wanted = bench.read(0, 1, 1);
    while (!wanted.isEmpty())
        wanted = bench.read(0, wanted.first(), ++changing);
    QCOMPARE(bench.value().quality, Quality::Torn);
    QCOMPARE(bench.value().raw, quint64(7)); // as with a failure, the one before
    bench.read(0, 0, 3);
    bench.read(0, 1, 4);
    bench.read(0, 0, 3);
    QVERIFY(bench.isGood());
    QCOMPARE(bench.value().raw, quint64(0x30004));
}

void TestValueAssembly::allButTheLastOfFourAreReadAgain()
{
    Bench bench({FOUR});
    bench.read(0, 0, 1);
    bench.read(0, 1, 2);
    bench.read(0, 2, 3);
    QCOMPARE(bench.read(0, 3, 4), QVector<int>({0}));
    QCOMPARE(bench.read(0, 0, 1), QVector<int>({1}));
    QCOMPARE(bench.read(0, 1, 2), QVector<int>({2}));
    QVERIFY(!bench.value().isKnown);
    QCOMPARE(bench.read(0, 2, 3), NOTHING);
    QCOMPARE(bench.value().raw, quint64(0x0001000200030004));
}

// 1 2 3 4 becomes 1 9 9 4 behind the reading of the second word: the first, the last and their
// order say nothing of it, and 1 2 9 4 was never there.
void TestValueAssembly::theFirstAloneWouldNotDoForFour()
{
    Bench bench({FOUR});
    bench.read(0, 0, 1);
    bench.read(0, 1, 2);
    bench.read(0, 2, 9);
    bench.read(0, 3, 4);
    bench.read(0, 0, 1);
    QVERIFY(!bench.value().isKnown); // the first has stayed
    QVector<int> wanted = bench.read(0, 1, 9);
    QVERIFY(!bench.value().isKnown);
    const std::array<quint16, 4> now = {1, 9, 9, 4};
    while (!wanted.isEmpty())
        wanted = bench.read(0, wanted.first(), now[static_cast<size_t>(wanted.first())]);
    QVERIFY(bench.isGood());
    QCOMPARE(bench.value().raw, quint64(0x0001000900090004));
}

void TestValueAssembly::aCyclicReadingIsAsGoodAsOneAskedFor()
{
    Bench bench({PAIR});
    bench.read(0, 0, 1);
    bench.read(0, 1, 2);
    QCOMPARE(bench.read(0, 1, 2), NOTHING); // that of the first is on its way
    QVERIFY(!bench.value().isKnown);
    bench.read(0, 0, 1);
    QVERIFY(bench.isGood());
}

void TestValueAssembly::tornWordsAreAcceptedWhereTheListSaysSo()
{
    Tag accepting = PAIR;
    accepting.acceptsTorn = true;
    Bench bench({accepting});
    bench.read(0, 0, 1);
    QVERIFY(!bench.value().isKnown);
    QCOMPARE(bench.read(0, 1, 0xFFFF), NOTHING);
    QVERIFY(bench.isGood());
    bench.read(0, 0, 2);
    QCOMPARE(bench.value().raw, quint64(0x1FFFF)); // never one of two scans
    bench.read(0, 1, 0);
    QCOMPARE(bench.value().raw, quint64(0x20000));
}

void TestValueAssembly::bytesOfOneReplyAreTakenAtOnce()
{
    // The second one makes the cells lie in another order than the bytes.
    Bench bench({tag("last", Area::C, "7.0.1.3", ValueType::Bool),
                 tag("all", Area::C, "7.0.1.0", ValueType::U32)});
    const std::array<quint16, 4> bytes = {0x12, 0x34, 0x56, 0x78};
    for (const int element : {3, 0, 1, 2}) {
        Reading reading;
        reading.raw = bytes[static_cast<size_t>(element)];
        reading.reply = 1;
        QVERIFY(!bench.value(1).isKnown);
        bench.assembly.read(bench.index.cellsOf(1).at(element), reading);
    }
    QCOMPARE(bench.value(1).raw, quint64(0x12345678));
    QVERIFY(bench.isGood(0));
    QVERIFY(bench.assembly.wanted().empty());
}

void TestValueAssembly::aBoolIsOneOrNone()
{
    Bench bench({tag("on", Area::D, "5.2.0", ValueType::Bool)});
    bench.read(0, 0, 0x100);
    QCOMPARE(bench.value().raw, quint64(1));
    bench.read(0, 0, 0);
    QCOMPARE(bench.value().raw, quint64(0));
}

void TestValueAssembly::theAgeIsThatOfTheOldestReading()
{
    Bench bench({PAIR});
    bench.read(0, 0, 1);
    bench.read(0, 1, 2);
    bench.read(0, 0, 1);
    QCOMPARE(bench.value().readAt_ns, seconds(2));
    QCOMPARE(bench.value().newestAt_ns, seconds(3));
    QCOMPARE(bench.assembly.value(0, seconds(7), seconds(5)).quality, Quality::Good);
    QCOMPARE(bench.assembly.value(0, seconds(7) + 1, seconds(5)).quality, Quality::Stale);
    TagValue value = bench.value();
    value.provedUntil_ns = seconds(2);
    QVERIFY(!value.isProved()); // the last reading is a part of it
    value.provedUntil_ns = seconds(3);
    QVERIFY(value.isProved());
}

void TestValueAssembly::oneDoubtfulReadingMakesTheValueDoubtful()
{
    Bench bench({PAIR});
    bench.read(0, 0, 1, true);
    bench.read(0, 1, 2);
    bench.read(0, 0, 1);
    QCOMPARE(bench.value().quality, Quality::Doubtful);
    bench.read(0, 0, 1);
    bench.read(0, 1, 2);
    bench.read(0, 0, 1);
    QCOMPARE(bench.value().quality, Quality::Good);
}

void TestValueAssembly::aFailureEndsThePassAndTheValueIsKept()
{
    Bench bench({PAIR});
    bench.read(0, 0, 1);
    bench.read(0, 1, 2);
    bench.read(0, 0, 1);
    bench.read(0, 0, 3);
    bench.assembly.readFailed(bench.index.cellsOf(0).at(1));
    QCOMPARE(bench.value().quality, Quality::Failed);
    QCOMPARE(bench.value().raw, quint64(0x10002));
    QCOMPARE(bench.read(0, 1, 4), NOTHING); // waits for the first
    QCOMPARE(bench.value().quality, Quality::Failed);
}

void TestValueAssembly::aReadingThatIsWithdrawnTakesTheValueWithIt()
{
    Bench bench({PAIR});
    bench.read(0, 0, 1);
    bench.read(0, 1, 2);
    bench.read(0, 0, 1);
    QCOMPARE(bench.assembly.withdraw(seconds(3)), NOTHING);
    QVERIFY(bench.isGood());
    QCOMPARE(bench.assembly.withdraw(seconds(2)), QVector<int>({0})); // the one read again
    QCOMPARE(bench.value().quality, Quality::Suspect);
    QVERIFY(!bench.value().provable);
}

void TestValueAssembly::aPassDoesNotOutliveAReadingThatIsLost()
{
    Bench bench({PAIR});
    bench.read(0, 0, 1);
    bench.read(0, 1, 2);
    bench.assembly.lost(bench.index.cellsOf(0).at(0));
    QVERIFY(bench.assembly.events().back().outcome == ValueAssembly::Outcome::Lost);
    QCOMPARE(bench.read(0, 1, 2), NOTHING);
    QVERIFY(!bench.value().isKnown);
    bench.read(0, 0, 3);
    bench.assembly.withdraw(seconds(100));
    QCOMPARE(bench.read(0, 1, 4), NOTHING);
    QVERIFY(!bench.value().isKnown);
}

void TestValueAssembly::whatIsAskedForIsReadWordByWord()
{
    Bench bench({FOUR});
    bench.assembly.begin(0);
    QCOMPARE(bench.assembly.wanted(), std::vector<int>({bench.index.cellsOf(0).at(0)}));
    QVector<int> order = {0};
    QVector<int> wanted = order;
    while (!wanted.isEmpty()) {
        wanted = bench.read(0, wanted.first(), 5);
        order += wanted;
    }
    QCOMPARE(order, QVector<int>({0, 1, 2, 3, 0, 1, 2}));
    QCOMPARE(bench.value().raw, quint64(0x0005000500050005));
}

void TestValueAssembly::valuesShareTheirWords()
{
    Bench bench({PAIR, tag("next", Area::D, "5.2.1", ValueType::U32)});
    bench.read(0, 0, 1);
    bench.read(0, 1, 2); // the first of the other one
    bench.read(1, 1, 3);
    bench.read(0, 0, 1);
    QCOMPARE(bench.value(0).raw, quint64(0x10002));
    QVERIFY(!bench.value(1).isKnown);
    bench.read(0, 1, 2);
    QCOMPARE(bench.value(1).raw, quint64(0x20003));
}

// Words that never come back change together at any time between two replies.
void TestValueAssembly::noValueIsShownThatNeverWas()
{
    Draw draw(20261122);
    for (const Tag &description : {PAIR, FOUR}) {
        Bench bench({description});
        const int words = bench.index.cellsOf(0).size();
        std::array<quint16, 4> now = {0, 0, 0, 0};
        quint16 changes = 0;
        int shown = 0;
        int cyclic = 0;
        QVector<int> wanted;
        QSet<quint64> existed;
        for (int i = 0; i < 20000; ++i) {
            if (draw.below(8) == 0) {
                ++changes;
                for (size_t word = 0; word < now.size(); ++word)
                    if (draw.below(3) != 0)
                        now[word] = changes;
            }
            quint64 bits = 0;
            for (int word = 0; word < words; ++word)
                bits = bits << 16 | now[static_cast<size_t>(word)];
            existed.insert(bits);
            const int element = wanted.isEmpty() ? cyclic++ % words : wanted.first();
            wanted = bench.read(0, element, now[static_cast<size_t>(element)]);
            for (const ValueAssembly::Event &event : bench.assembly.events()) {
                if (event.outcome != ValueAssembly::Outcome::Assembled)
                    continue;
                ++shown;
                QVERIFY(existed.contains(bench.value().raw));
            }
        }
        QVERIFY(shown > 1000);
    }
}

QTEST_APPLESS_MAIN(TestValueAssembly)
#include "tst_value_assembly.moc"
