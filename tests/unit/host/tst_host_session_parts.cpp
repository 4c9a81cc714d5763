// Values of several words and bits in a host session: how they are read and written.
#include "tests/support/session_bench.h"

#include <QtTest>

using namespace kvt;

namespace
{

QByteArray read(const char *addressByte)
{
    return QByteArray("\x05"
                      "0105") +
           addressByte + '\r';
}

QByteArray write(const char *addressByte, const char *digits)
{
    return QByteArray("\x05"
                      "0105") +
           addressByte + digits + '\r';
}

const QByteArray HIGH = read("20");                       // D 5.2.0, the first word
const QByteArray LOW = read("28");                        // D 5.2.1
const QByteArray VALUE = QByteArray::fromHex("22114433"); // 1122 at 5.2.0, 3344 at 5.2.1

Tag pairTag(bool down = false)
{
    Tag tag = benchTag("D1/5.2.0");
    tag.form = ValueType::U32;
    tag.isWrittenDown = down;
    return tag;
}

Tag bitTag(int number)
{
    Tag tag = benchTag("D1/5.2.0");
    tag.name = QStringLiteral("bit %1").arg(number);
    tag.form = ValueType::Bit;
    tag.form.number = number;
    tag.form.bitIsWritten = true;
    return tag;
}

void verifyEnd(const SessionBench &bench, int id, WriteState state, WriteReason reason)
{
    const WriteReport last = bench.events.events().lastOf(id);
    QCOMPARE(writeStateName(last.state), writeStateName(state));
    QCOMPARE(writeReasonText(last.reason), writeReasonText(reason));
}

} // namespace

class TestHostSessionParts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aPairIsReadWithOneRequestMore();
    void readingAgainIsNobodyElsesBusiness();
    void aPairIsReadOnceOnDemand();
    void aPairThatCannotBeReadEndsItsOnceRead();
    void aPairOfNoCyclicReadsIsProvedBeforeItIsGiven();
    void anOwnReadThatIsPurgedEndsThePass();
    void wordsAreWrittenOneByOne();
    void theListCanHaveTheLastWordWrittenFirst();
    void aFailureOfTheFirstWordIsThatOfTheWrite();
    void aFailureOfALaterWordIsSaid();
    void aWriteThatIsStoppedBetweenItsWordsIsPartlyWritten();
    void aBitIsWrittenWithTheRestOfItsElement();
    void twoBitsOfAnElementDoNotUndoEachOther();
    void anElementWaitsForTheBitThatIsBeingWritten();
    void aBitWhoseElementCannotBeReadIsNotWritten();
    void aBitIsWrittenOnlyOnceItsElementIsProved();
    void whatCannotBeWrittenIsRefused();
    void wordsShowNothingWhileTheyAreWritten();
};

void TestHostSessionParts::aPairIsReadWithOneRequestMore()
{
    SessionBench bench({"D2/6.0.0"});
    bench.tags.prepend(pairTag());
    bench.start();
    QCOMPARE(bench.exchange("1122"), HIGH);
    QCOMPARE(bench.exchange("3344"), LOW);
    QCOMPARE(bench.value(0).quality, Quality::NeverRead);
    QCOMPARE(bench.exchange("1122"), HIGH);
    QCOMPARE(bench.value(0).quality, Quality::Good);
    QCOMPARE(bench.value(0).raw, quint64(0x11223344));
    QCOMPARE(bench.events.events().readings.size(), 1);
    QCOMPARE(bench.exchange(), read("00").replace(1, 4, "0206"));
    QCOMPARE(bench.exchange("1122"), HIGH);
}

void TestHostSessionParts::readingAgainIsNobodyElsesBusiness()
{
    SessionBench bench({});
    bench.tags = {pairTag()};
    bench.start();
    for (int i = 0; i < 30; ++i)
        bench.exchange();
    QVERIFY(bench.events.events().onceReads.isEmpty());
    QCOMPARE(bench.events.events().readings.size(), 10);
}

void TestHostSessionParts::aPairIsReadOnceOnDemand()
{
    SessionBench bench({});
    bench.tags = {pairTag()};
    bench.settings.readCyclically = false;
    bench.start();
    const int id = bench.session->readOnce(0);
    bench.passDeadline();
    QCOMPARE(bench.exchange("1122"), HIGH);
    QCOMPARE(bench.exchange("3344"), LOW);
    QVERIFY(bench.events.events().onceReads.isEmpty());
    QCOMPARE(bench.exchange("1122"), HIGH);
    const RecordedEvents events = bench.events.events();
    QCOMPARE(events.onceReads.size(), 1);
    QCOMPARE(events.onceReads[0].id, id);
    QVERIFY(events.onceReads[0].good);
    QCOMPARE(bench.value(0).raw, quint64(0x11223344));
    QVERIFY(bench.send().isEmpty());
}

void TestHostSessionParts::aPairThatCannotBeReadEndsItsOnceRead()
{
    SessionBench bench({});
    bench.tags = {pairTag()};
    bench.settings.readCyclically = false;
    bench.start();
    bench.session->readOnce(0);
    bench.passDeadline();
    bench.exchange("1122");
    QCOMPARE(bench.failure(), LOW);
    QCOMPARE(bench.events.events().onceReads.size(), 1);
    QVERIFY(!bench.events.events().onceReads[0].good);
    bench.session->readOnce(0);
    bench.passDeadline();
    bench.exchange("1122");
    bench.session->stop();
    QCOMPARE(bench.events.events().onceReads.size(), 2);
    QVERIFY(!bench.events.events().onceReads[1].good);
}

void TestHostSessionParts::aPairOfNoCyclicReadsIsProvedBeforeItIsGiven()
{
    SessionBench bench({});
    bench.tags = {pairTag()};
    bench.settings.readCyclically = false;
    bench.settings.engine.confirm = true;
    bench.start();
    bench.session->readOnce(0);
    bench.passDeadline();
    for (const char *digits : {"1122", "3344", "1122"}) {
        QVERIFY(bench.events.events().onceReads.isEmpty());
        bench.exchange(digits);
        bench.passDeadline(); // the pause behind it
    }
    QCOMPARE(bench.events.events().onceReads.size(), 1);
    QVERIFY(bench.events.events().onceReads[0].good);
    QVERIFY(bench.value(0).isProved());
}

void TestHostSessionParts::anOwnReadThatIsPurgedEndsThePass()
{
    SessionBench bench({"D1/6.0.0"});
    bench.tags.prepend(pairTag());
    bench.start();
    bench.exchange("1122");
    bench.exchange("3344");
    QCOMPARE(bench.failure(), HIGH);
    QVERIFY(!bench.value(0).isKnown);
    bench.exchange();
    bench.exchange("1122");
    bench.exchange("3344");
    bench.exchange("1122");
    QCOMPARE(bench.value(0).quality, Quality::Good);
}

void TestHostSessionParts::wordsAreWrittenOneByOne()
{
    SessionBench bench({});
    bench.tags = {pairTag()};
    bench.settings.readCyclically = false;
    bench.start();
    const int id = bench.session->write(0, VALUE);
    bench.passDeadline();
    QCOMPARE(bench.exchange(), write("21", "1122"));
    QVERIFY(!bench.events.events().hasEnded(id));
    QVERIFY(bench.value(0).writePending);
    QCOMPARE(bench.exchange(), write("29", "3344"));
    QCOMPARE(bench.events.events().statesOf(id),
             QVector<WriteState>({WriteState::Queued, WriteState::Sent, WriteState::Acknowledged}));
    QVERIFY(!bench.value(0).writePending);
    QCOMPARE(bench.session->statistics().queueMismatches, quint64(0));
}

void TestHostSessionParts::theListCanHaveTheLastWordWrittenFirst()
{
    SessionBench bench({});
    bench.tags = {pairTag(true)};
    bench.settings.readCyclically = false;
    bench.start();
    bench.session->write(0, VALUE);
    bench.passDeadline();
    QCOMPARE(bench.exchange(), write("29", "3344"));
    QCOMPARE(bench.exchange(), write("21", "1122"));
}

void TestHostSessionParts::aFailureOfTheFirstWordIsThatOfTheWrite()
{
    SessionBench bench({});
    bench.tags = {pairTag()};
    bench.settings.readCyclically = false;
    bench.start();
    const int id = bench.session->write(0, VALUE);
    bench.passDeadline();
    bench.failure();
    verifyEnd(bench, id, WriteState::TimedOut, WriteReason::NoReply);
    QVERIFY(bench.send().isEmpty()); // nothing is left of it
}

void TestHostSessionParts::aFailureOfALaterWordIsSaid()
{
    SessionBench bench({});
    bench.tags = {pairTag()};
    bench.settings.readCyclically = false;
    bench.start();
    const int id = bench.session->write(0, VALUE);
    bench.passDeadline();
    bench.exchange();
    QCOMPARE(bench.failure(), write("29", "3344"));
    verifyEnd(bench, id, WriteState::PartlyWritten, WriteReason::NoReply);
    QCOMPARE(bench.session->statistics().writes[size_t(WriteState::PartlyWritten)], quint64(1));
}

void TestHostSessionParts::aWriteThatIsStoppedBetweenItsWordsIsPartlyWritten()
{
    SessionBench bench({});
    bench.tags = {pairTag()};
    bench.settings.readCyclically = false;
    bench.start();
    const int id = bench.session->write(0, VALUE);
    bench.passDeadline();
    bench.exchange();
    bench.session->stop();
    verifyEnd(bench, id, WriteState::PartlyWritten, WriteReason::HostStopped);
}

void TestHostSessionParts::aBitIsWrittenWithTheRestOfItsElement()
{
    SessionBench bench({});
    bench.tags = {bitTag(4)};
    bench.settings.readCyclically = false;
    bench.start();
    const int id = bench.session->write(0, QByteArray(1, 1));
    bench.passDeadline();
    QCOMPARE(bench.exchange("8001"), HIGH);
    QCOMPARE(bench.exchange(), write("21", "8011"));
    verifyEnd(bench, id, WriteState::Acknowledged, WriteReason::None);
    bench.session->write(0, QByteArray(1, 0));
    bench.passDeadline();
    bench.exchange("8FFF");
    QCOMPARE(bench.exchange(), write("21", "8FEF"));
}

void TestHostSessionParts::twoBitsOfAnElementDoNotUndoEachOther()
{
    SessionBench bench({});
    bench.tags = {bitTag(0), bitTag(1)};
    bench.settings.readCyclically = false;
    bench.start();
    bench.session->write(0, QByteArray(1, 1));
    const int second = bench.session->write(1, QByteArray(1, 1));
    bench.passDeadline();
    QCOMPARE(bench.exchange("0000"), HIGH);
    QCOMPARE(bench.exchange(), write("21", "0001"));
    QCOMPARE(bench.exchange("0001"), HIGH);
    QCOMPARE(bench.exchange(), write("21", "0003"));
    verifyEnd(bench, second, WriteState::Acknowledged, WriteReason::None);
}

void TestHostSessionParts::anElementWaitsForTheBitThatIsBeingWritten()
{
    SessionBench bench({"D1/5.2.0"});
    bench.tags.append(bitTag(0));
    bench.settings.readCyclically = false;
    bench.start();
    bench.session->write(1, QByteArray(1, 1));
    const int whole = bench.session->write(0, QByteArray::fromHex("0080"));
    bench.passDeadline();
    QCOMPARE(bench.exchange("4000"), HIGH);
    QCOMPARE(bench.exchange(), write("21", "4001"));
    QCOMPARE(bench.exchange(), write("21", "8000"));
    verifyEnd(bench, whole, WriteState::Acknowledged, WriteReason::None);
}

void TestHostSessionParts::aBitWhoseElementCannotBeReadIsNotWritten()
{
    SessionBench bench({});
    bench.tags = {bitTag(0)};
    bench.settings.readCyclically = false;
    bench.start();
    const int id = bench.session->write(0, QByteArray(1, 1));
    bench.passDeadline();
    QCOMPARE(bench.failure(), HIGH);
    verifyEnd(bench, id, WriteState::Dropped, WriteReason::NotRead);
    QVERIFY(bench.send().isEmpty());
    const int stopped = bench.session->write(0, QByteArray(1, 1));
    bench.passDeadline();
    QCOMPARE(bench.send(), HIGH);
    bench.session->stop();
    verifyEnd(bench, stopped, WriteState::Dropped, WriteReason::HostStopped);
}

void TestHostSessionParts::aBitIsWrittenOnlyOnceItsElementIsProved()
{
    SessionBench bench({});
    bench.tags = {bitTag(0)};
    bench.settings.readCyclically = false;
    bench.settings.engine.confirm = true;
    bench.start();
    const int id = bench.session->write(0, QByteArray(1, 1));
    bench.passDeadline();
    bench.exchange("0000");
    QVERIFY(bench.send().isEmpty());
    bench.receive("\x06"); // out of step: whose answer was it?
    verifyEnd(bench, id, WriteState::Dropped, WriteReason::NotRead);
}

void TestHostSessionParts::whatCannotBeWrittenIsRefused()
{
    SessionBench bench({});
    Tag readOnly = bitTag(0);
    readOnly.form.bitIsWritten = false;
    bench.tags = {pairTag(), readOnly};
    bench.settings.readCyclically = false;
    bench.start();
    const int tooShort = bench.session->write(0, VALUE.left(2));
    const int bit = bench.session->write(1, QByteArray(1, 1));
    bench.passDeadline();
    verifyEnd(bench, tooShort, WriteState::Refused, WriteReason::NotWritable);
    verifyEnd(bench, bit, WriteState::Refused, WriteReason::NotWritable);
    QVERIFY(bench.send().isEmpty());
}

void TestHostSessionParts::wordsShowNothingWhileTheyAreWritten()
{
    SessionBench bench({});
    bench.tags = {pairTag()};
    bench.start();
    bench.exchange("1122");
    bench.session->write(0, VALUE);
    QCOMPARE(bench.exchange("3344"), LOW); // asked for before the write
    QCOMPARE(bench.exchange(), write("21", "1122"));
    QCOMPARE(bench.exchange(), write("29", "3344"));
    QVERIFY(!bench.value(0).isKnown);
    QCOMPARE(bench.exchange("1122"), HIGH);
    QCOMPARE(bench.exchange("3344"), LOW);
    QCOMPARE(bench.exchange("1122"), HIGH);
    QCOMPARE(bench.value(0).raw, quint64(0x11223344));
}

QTEST_APPLESS_MAIN(TestHostSessionParts)
#include "tst_host_session_parts.moc"
