// Serial numbers that prove to which cell a value belongs.
#include "simulator/serial_ledger.h"

#include <QtTest>

using namespace kvt;

class TestSerialLedger : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cellsTakeTurnsWithTheValues()
    {
        SerialLedger ledger(256);
        QCOMPARE(ledger.addCell(), 0);
        QCOMPARE(ledger.addCell(), 1);
        QCOMPARE(ledger.addCell(), 2);
        QCOMPARE(ledger.issue(1, 0), 1);
        QCOMPARE(ledger.issue(1, 0), 4);
        QCOMPARE(ledger.issue(2, 0), 2);
        QCOMPARE(ledger.issue(1, 0), 7);
        QCOMPARE(ledger.ownerOf(7), 1);
        QCOMPARE(ledger.ownerOf(254), 2);
    }

    void noTwoCellsShareAValue()
    {
        SerialLedger ledger(256);
        for (int i = 0; i < 100; ++i)
            ledger.addCell();
        QVector<int> owner(256, -1);
        for (int cell = 0; cell < 100; ++cell) {
            for (int round = 0; round < 300; ++round) {
                const int value = ledger.issue(cell, 0);
                QVERIFY(value >= 0 && value < 256);
                QVERIFY(owner[value] < 0 || owner[value] == cell);
                owner[value] = cell;
                QCOMPARE(ledger.ownerOf(value), cell);
            }
        }
    }

    void aValueRunsOutAndStartsAgain()
    {
        SerialLedger ledger(256);
        ledger.addCell();
        for (int i = 0; i < 256; ++i)
            QCOMPARE(ledger.issue(0, 0), i);
        QCOMPARE(ledger.issue(0, 0), 0);
    }

    void whatWasIssuedIsKnownWithItsTime()
    {
        SerialLedger ledger(65536);
        ledger.addCell();
        ledger.addCell();
        QVERIFY(!ledger.wasIssued(0, 0, 0));
        QCOMPARE(ledger.issue(0, 100), 0);
        QCOMPARE(ledger.issue(0, 200), 2);
        QVERIFY(ledger.wasIssued(0, 0, 100));
        QVERIFY(!ledger.wasIssued(0, 0, 101));
        QVERIFY(ledger.wasIssued(0, 2, 101));
        QVERIFY(!ledger.wasIssued(0, 4, 0));
        QVERIFY(!ledger.wasIssued(0, 1, 0));
        QVERIFY(!ledger.wasIssued(1, 0, 0));
        QVERIFY(!ledger.wasIssued(0, 65535, 0));
        QVERIFY(!ledger.wasIssued(0, 70000, 0));
    }

    void moreCellsThanValuesShareThem()
    {
        SerialLedger ledger(256);
        for (int i = 0; i < 300; ++i)
            ledger.addCell();
        QCOMPARE(ledger.issue(260, 5), 4);
        QCOMPARE(ledger.issue(260, 6), 4);
        QCOMPARE(ledger.ownerOf(4), 4);
        QVERIFY(ledger.wasIssued(260, 4, 6));
        QVERIFY(!ledger.wasIssued(4, 4, 0));
    }

    void withoutCellsNothingIsOwned() { QCOMPARE(SerialLedger(256).ownerOf(0), -1); }
};

QTEST_GUILESS_MAIN(TestSerialLedger)
#include "tst_serial_ledger.moc"
