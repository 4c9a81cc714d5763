// Request frames taken apart, from frames written out by hand.
#include "simulator/plc_request.h"

#include "tests/support/frames.h"

#include <QtTest>

using namespace kvt;
using Kind = PlcRequest::Kind;

class TestPlcRequest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aReadNamesStationCommandAndAddress()
    {
        const PlcRequest parsed = parseTextFrame(request("A1052F"));
        QCOMPARE(parsed.kind, Kind::Read);
        QCOMPARE(parsed.station, 0xA1);
        QCOMPARE(parsed.command, 0x05);
        QCOMPARE(parsed.addressByte, 0x2F);
        QCOMPARE(parsed.mark, 0x05);
    }

    void aWriteCarriesItsValue_data()
    {
        QTest::addColumn<QByteArray>("frame");
        QTest::addColumn<int>("area");
        QTest::addColumn<int>("value");
        QTest::newRow("05 01 01 21 FF 0D") << request("010121FF") << 0 << 0xFF;
        QTest::newRow("05 02 03 41 1234 0D") << request("0203411234") << 1 << 0x1234;
    }

    void aWriteCarriesItsValue()
    {
        QFETCH(QByteArray, frame);
        const PlcRequest request = parseTextFrame(frame);
        QCOMPARE(request.kind, Kind::Write);
        QTEST(request.area, "area");
        QCOMPARE(request.values.size(), 1);
        QTEST(request.values[0], "value");
    }

    void badFramesAreBad_data()
    {
        QTest::addColumn<QByteArray>("frame");
        QTest::addColumn<int>("station");
        QTest::newRow("ENQ CR") << QByteArray("\x05\r") << -1;
        QTest::newRow("half a station") << request("0") << -1;
        QTest::newRow("station alone") << request("01") << 1;
        QTest::newRow("one digit short") << request("01052") << 1;
        QTest::newRow("one digit more") << request("0105280") << 1;
        QTest::newRow("three value digits") << request("010121FFF") << 1;
        QTest::newRow("five value digits") << request("01012112345") << 1;
        QTest::newRow("six value digits") << request("010121123456") << 1;
        QTest::newRow("lower case") << request("0105a8") << 1;
        QTest::newRow("lower-case value") << request("010121ff") << 1;
        QTest::newRow("bad station") << request("G10528") << -1;
    }

    void badFramesAreBad()
    {
        QFETCH(QByteArray, frame);
        const PlcRequest request = parseTextFrame(frame);
        QCOMPARE(request.kind, Kind::Bad);
        QTEST(request.station, "station");
    }

    void anEnvelopeIsTakenApart()
    {
        const PlcRequest request =
            parseEnvelope(QByteArray::fromHex("16070002010001000000640001000000000000000086"));
        QCOMPARE(request.kind, Kind::Read);
        QCOMPARE(request.station, 1);
        QCOMPARE(request.area, 1);
        QCOMPARE(request.number, 100);
        QCOMPARE(request.mark, 0x86);
    }

    void aWriteEnvelopeCarriesItsValues_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QVector<int>>("values");
        QTest::newRow("34 12") << QByteArray("3412") << QVector<int>{0x1234};
        QTest::newRow("01, a bit of one byte") << QByteArray("01") << QVector<int>{1};
        QTest::newRow("01 00 FF FF") << QByteArray("0100FFFF") << QVector<int>{1, 0xFFFF};
    }

    void aWriteEnvelopeCarriesItsValues()
    {
        QFETCH(QByteArray, data);
        const PlcRequest request = parseEnvelope(
            QByteArray::fromHex("180701020100010000006400010000000000000000" + data + "CF"));
        QCOMPARE(request.kind, Kind::Write);
        QCOMPARE(request.number, 100);
        QTEST(request.values, "values");
    }

    void strangeEnvelopesAreBad_data()
    {
        QTest::addColumn<QByteArray>("envelope");
        QTest::newRow("kind 2") << QByteArray("16070202010001000000640001000000000000000088");
        QTest::newRow("read with data")
            << QByteArray("1707000201000100000064000100000000000000000188");
        QTest::newRow("write without data")
            << QByteArray("16070102010001000000640001000000000000000087");
    }

    void strangeEnvelopesAreBad()
    {
        QFETCH(QByteArray, envelope);
        QCOMPARE(parseEnvelope(QByteArray::fromHex(envelope)).kind, Kind::Bad);
    }
};

QTEST_GUILESS_MAIN(TestPlcRequest)
#include "tst_plc_request.moc"
