// Cells of the simulated PLC.
#include "simulator/plc_memory.h"

#include "tests/unit/simulator/sample_tags.h"

#include <QtTest>

using namespace kvt;

namespace
{

SignalPlan all(SignalKind kind)
{
    SignalPlan plan;
    plan.all = kind;
    return plan;
}

} // namespace

class TestPlcMemory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void framesFindTheirCells()
    {
        const PlcMemory memory(sampleTags(), SignalPlan(), 1);
        QVERIFY(memory.hasStation(1));
        QVERIFY(memory.hasStation(2));
        QVERIFY(!memory.hasStation(3));
        QCOMPARE(memory.findRead(1, 0x05, 0x28)->area, Area::D);
        QCOMPARE(memory.findRead(1, 0x01, 0x20)->area, Area::X);
        QCOMPARE(memory.findRead(1, 0x09, 0x18)->area, Area::C);
        QVERIFY(!memory.findRead(2, 0x05, 0x28));
        QVERIFY(!memory.findRead(1, 0x05, 0x29));
        QCOMPARE(memory.findWrite(Area::D, 1, 0x05, 0x29)->area, Area::D);
        QCOMPARE(memory.findWrite(Area::X, 1, 0x01, 0x21)->area, Area::X);
        QVERIFY(!memory.findWrite(Area::D, 1, 0x05, 0x28));
        QVERIFY(!memory.findWrite(Area::X, 1, 0x05, 0x29));
        QVERIFY(!memory.findWrite(Area::D, 1, 0x09, 0x19));
    }

    void aCellIsKnownByItsNumber()
    {
        const PlcMemory memory(sampleTags(), SignalPlan(), 1);
        QCOMPARE(memory.findNumber(Area::D, 1, 165)->area, Area::D);
        QCOMPARE(memory.findNumber(Area::X, 1, 36)->area, Area::X);
        QCOMPARE(memory.findNumber(Area::C, 1, 240)->element, 0);
        QCOMPARE(memory.findNumber(Area::C, 1, 245)->element, 5);
        QVERIFY(!memory.findNumber(Area::C, 1, 310));
        QVERIFY(!memory.findNumber(Area::C, 1, 320));
        QVERIFY(!memory.findNumber(Area::C, 1, -1));
        QVERIFY(!memory.findNumber(Area::D, 2, 165));
        QVERIFY(!memory.findNumber(static_cast<Area>(7), 1, 165));
    }

    void readsMoveACellOn()
    {
        PlcMemory memory(sampleTags(), all(SignalKind::Counter), 1);
        const PlcTarget cell = *memory.findRead(1, 0x05, 0x28);
        const int first = memory.read(cell, 0).toHex().toInt(nullptr, 16);
        QCOMPARE(memory.value(1, Area::D, QStringLiteral("5.2.1")), std::optional<int>(first));
        const int second = memory.read(cell, 0).toHex().toInt(nullptr, 16);
        QCOMPARE(second, first + 1);
    }

    void aWriteStopsTheMovement()
    {
        PlcMemory memory(sampleTags(), all(SignalKind::Counter), 1);
        const PlcTarget cell = *memory.findRead(1, 0x05, 0x28);
        QVERIFY(memory.setValue(1, Area::D, QStringLiteral("5.2.1"), 0x1234));
        QCOMPARE(memory.read(cell, 0), QByteArray::fromHex("1234"));
        QCOMPARE(memory.read(cell, 0), QByteArray::fromHex("1234"));
        QVERIFY(!memory.setValue(3, Area::D, QStringLiteral("5.2.1"), 1));
    }

    void aByteCellKeepsTheLowByte()
    {
        PlcMemory memory(sampleTags(), SignalPlan(), 1);
        QVERIFY(memory.setValue(1, Area::X, QStringLiteral("1.2.0"), 0x1FF));
        QCOMPARE(memory.value(1, Area::X, QStringLiteral("1.2.0")), std::optional<int>(0xFF));
        QVERIFY(!memory.value(1, Area::D, QStringLiteral("1.2.0")));
        QVERIFY(!memory.value(1, Area::X, QStringLiteral("1.2")));
    }

    void aBlockAnswersSeventyElements()
    {
        PlcMemory memory(sampleTags(), SignalPlan(), 1);
        QVERIFY(memory.setValue(1, Area::C, QStringLiteral("9.1.1.5"), 0xAB));
        QVERIFY(!memory.setValue(1, Area::C, QStringLiteral("9.1.1.6"), 0xAB));
        QByteArray expected(70, '\0');
        expected[5] = '\xAB';
        QCOMPARE(memory.read(*memory.findRead(1, 0x09, 0x18), 0), expected);
    }

    void aBlockCanBeReadFromAnElementOn()
    {
        PlcMemory memory(sampleTags(), SignalPlan(), 1);
        memory.setValue(1, Area::C, QStringLiteral("9.1.1.5"), 0xAB);
        QByteArray expected(70, '\0');
        expected[2] = '\xAB';
        QCOMPARE(memory.read(*memory.findNumber(Area::C, 1, 243), 0), expected);
    }

    void tagsOfOneReadFrameShareACell()
    {
        const QVector<Tag> tags = {makeTag(Area::X, "5.2.0", 1), makeTag(Area::X, "5.0.32", 1)};
        PlcMemory memory(tags, all(SignalKind::Constant), 1);
        memory.setValue(1, Area::X, QStringLiteral("5.0.32"), 9);
        QCOMPARE(memory.value(1, Area::X, QStringLiteral("5.2.0")), std::optional<int>(9));
        QCOMPARE(memory.read(*memory.findNumber(Area::X, 1, 164), 0), QByteArray::fromHex("09"));
        QCOMPARE(memory.read(*memory.findNumber(Area::X, 1, 192), 0), QByteArray::fromHex("09"));
        memory.write(*memory.findWrite(Area::X, 1, 0x05, 0x20), 7);
        QCOMPARE(memory.value(1, Area::X, QStringLiteral("5.2.0")), std::optional<int>(7));
        memory.write(*memory.findWrite(Area::X, 1, 0x05, 0x21), 8);
        QCOMPARE(memory.value(1, Area::X, QStringLiteral("5.0.32")), std::optional<int>(8));
    }

    void boolCellsAreZeroOrOne()
    {
        const QVector<Tag> tags = {makeTag(Area::X, "1.0.0", 1, ValueType::Bool)};
        PlcMemory memory(tags, all(SignalKind::Counter), 1);
        const PlcTarget cell = *memory.findRead(1, 1, 0);
        const QByteArray first = memory.read(cell, 0);
        const QByteArray second = memory.read(cell, 0);
        QCOMPARE(first[0] + second[0], 1);
        QCOMPARE(memory.read(cell, 0), first);
    }

    void tagsChooseTheirMovement()
    {
        SignalPlan plan = all(SignalKind::Counter);
        plan.byTag.insert(QStringLiteral("D5.2.1@1"), SignalRule{SignalKind::Constant, {}, {}, 0});
        PlcMemory memory(sampleTags(), plan, 1);
        const PlcTarget still = *memory.findRead(1, 0x05, 0x28);
        const PlcTarget moving = *memory.findRead(2, 0x03, 0x40);
        QCOMPARE(memory.read(still, 0), memory.read(still, 0));
        QVERIFY(memory.read(moving, 0) != memory.read(moving, 0));
    }

    // Both words of the value are of one time, whenever they are read.
    void theWordsOfAValueMoveTogether()
    {
        Tag tag = makeTag(Area::D, "5.2.0", 1, ValueType::U32);
        const SignalRule rule{SignalKind::Step, QStringLiteral("65535"), QStringLiteral("65536"),
                              100};
        SignalPlan plan;
        plan.byTag.insert(tag.name, rule);
        QCOMPARE(signalFault(rule, tag), QString());
        PlcMemory memory({makeTag(Area::D, "5.2.1", 1, ValueType::U16), tag}, plan, 1);
        const PlcTarget high = *memory.findRead(1, 5, 0x20);
        const PlcTarget low = *memory.findRead(1, 5, 0x28);
        QByteArray values;
        for (const qint64 time : {0, 49, 50, 99, 100})
            values += memory.read(high, time) + memory.read(low, time);
        QCOMPARE(values.toHex(), QByteArray("0001000000010000"
                                            "0000ffff0000ffff"
                                            "00010000"));
        // What is written stays, and so does what it was written beside.
        memory.write(low, 7);
        QCOMPARE(memory.read(high, 1000).toHex(), QByteArray("0001"));
        QCOMPARE(memory.read(low, 1000).toHex(), QByteArray("0007"));
    }

    void aRuleIsHeldAgainstItsTag_data()
    {
        QTest::addColumn<QString>("low");
        QTest::addColumn<bool>("good");
        QTest::newRow("within") << "0.5" << true;
        QTest::newRow("too low") << "-1" << false;
        QTest::newRow("no number") << "x" << false;
        QTest::newRow("between two values") << "0.56" << true;
        QTest::newRow("below what may be entered") << "0.1" << true;
    }

    void aRuleIsHeldAgainstItsTag()
    {
        QFETCH(QString, low);
        QFETCH(bool, good);
        Tag tag = makeTag(Area::D, "5.2.0", 1, ValueType::U16);
        tag.meaning[MeaningColumn::Scale] = QStringLiteral("0.1");
        tag.meaning[MeaningColumn::Min] = QStringLiteral("0.3");
        const SignalRule rule{SignalKind::Ramp, low, QStringLiteral("20"), 0};
        QCOMPARE(signalFault(rule, tag).isEmpty(), good);
        QVERIFY(!signalFault({SignalKind::Serial, {}, {}, 0}, tag).isEmpty());
    }

    void theRangeOfASignal_data()
    {
        QTest::addColumn<QString>("min");
        QTest::addColumn<QString>("max");
        QTest::addColumn<QString>("low");
        QTest::addColumn<QByteArray>("values");
        QTest::newRow("what the type holds") << ""
                                             << ""
                                             << "" << QByteArray("ffff0000");
        QTest::newRow("what may be entered") << "1"
                                             << "2.5"
                                             << "" << QByteArray("0019000a");
        QTest::newRow("what is told") << "1"
                                      << "2.5"
                                      << "0.3" << QByteArray("00190003");
        QTest::newRow("the nearest value") << ""
                                           << ""
                                           << "0.37" << QByteArray("ffff0004");
        QTest::newRow("no more than the type") << ""
                                               << "9999"
                                               << "" << QByteArray("ffff0000");
    }

    void theRangeOfASignal()
    {
        QFETCH(QString, min);
        QFETCH(QString, max);
        QFETCH(QString, low);
        Tag tag = makeTag(Area::D, "5.2.0", 1, ValueType::U16);
        tag.meaning[MeaningColumn::Scale] = QStringLiteral("0.1");
        tag.meaning[MeaningColumn::Min] = min;
        tag.meaning[MeaningColumn::Max] = max;
        SignalPlan plan;
        plan.byTag.insert(tag.name, {SignalKind::Step, low, QString(), 100});
        PlcMemory memory({tag}, plan, 1);
        const PlcTarget word = *memory.findRead(1, 5, 0x20);
        QByteArray values = memory.read(word, 0);
        values += memory.read(word, 50);
        QTEST(values.toHex(), "values");
    }

    void serialCellsTellWhoseAValueIs()
    {
        PlcMemory memory(sampleTags(), all(SignalKind::Serial), 1);
        const QString address = QStringLiteral("3.4.0");
        const PlcTarget second = *memory.findRead(2, 0x03, 0x40);
        QCOMPARE(memory.read(second, 50), QByteArray::fromHex("0001"));
        QCOMPARE(memory.read(second, 60), QByteArray::fromHex("0003"));
        QVERIFY(memory.wasSentTo(2, Area::D, address, 3, 60));
        QVERIFY(!memory.wasSentTo(2, Area::D, address, 1, 60));
        QVERIFY(!memory.wasSentTo(1, Area::D, QStringLiteral("5.2.1"), 3, 0));
        QCOMPARE(memory.serialOwner(Area::D, 3), QString("D3.4.0@2"));
        QCOMPARE(memory.serialOwner(Area::D, 4), QString("D5.2.1@1"));
        QCOMPARE(memory.serialOwner(Area::X, 1), QString("C9.1.1.5@1"));
        PlcMemory plain(sampleTags(), all(SignalKind::Counter), 1);
        QCOMPARE(plain.serialOwner(Area::D, 3), QString());
        QVERIFY(!plain.wasSentTo(2, Area::D, address, 0, 0));
    }

    void badAddressesArePassedOver()
    {
        const PlcMemory memory({makeTag(Area::D, "5.2", 1)}, SignalPlan(), 1);
        QVERIFY(!memory.hasStation(1));
    }

    void elsewhereIsAnotherStation()
    {
        const PlcMemory memory(sampleTags(), SignalPlan(), 1);
        const auto other = memory.elsewhere(*memory.findRead(1, 0x05, 0x28), 12345);
        QVERIFY(other.has_value());
        QCOMPARE(memory.stationOf(*other), 2);
        QVERIFY(!memory.elsewhere(*memory.findRead(1, 0x01, 0x20), 0));
        QVERIFY(!memory.elsewhere(*memory.findRead(1, 0x09, 0x18), 0));
    }
};

QTEST_GUILESS_MAIN(TestPlcMemory)
#include "tst_plc_memory.moc"
