// Request frames taken apart, from frames written out by hand.
#include "simulator/plc_request.h"

#include <QtTest>

using kvt::PlcRequest;
using Kind = kvt::PlcRequest::Kind;

class TestPlcRequest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aReadNamesStationCommandAndAddress();
    void aWriteCarriesItsValue_data();
    void aWriteCarriesItsValue();
    void badFramesAreBad_data();
    void badFramesAreBad();
    void anEnvelopeIsTakenApart();
    void aWriteEnvelopeCarriesItsValues_data();
    void aWriteEnvelopeCarriesItsValues();
    void strangeEnvelopesAreBad_data();
    void strangeEnvelopesAreBad();
};

void TestPlcRequest::aReadNamesStationCommandAndAddress()
{
    const PlcRequest request = kvt::parseTextFrame("\x05"
                                                   "A1052F\r");
    QCOMPARE(request.kind, Kind::Read);
    QCOMPARE(request.station, 0xA1);
    QCOMPARE(request.command, 0x05);
    QCOMPARE(request.addressByte, 0x2F);
    QCOMPARE(request.mark, 0x05);
}

void TestPlcRequest::aWriteCarriesItsValue_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<int>("area");
    QTest::addColumn<int>("value");
    QTest::newRow("05 01 01 21 FF 0D") << QByteArray("\x05"
                                                     "010121FF\r")
                                       << 0 << 0xFF;
    QTest::newRow("05 02 03 41 1234 0D") << QByteArray("\x05"
                                                       "0203411234\r")
                                         << 1 << 0x1234;
}

void TestPlcRequest::aWriteCarriesItsValue()
{
    QFETCH(QByteArray, frame);
    const PlcRequest request = kvt::parseTextFrame(frame);
    QCOMPARE(request.kind, Kind::Write);
    QTEST(request.area, "area");
    QCOMPARE(request.values.size(), 1);
    QTEST(request.values[0], "value");
}

void TestPlcRequest::badFramesAreBad_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<int>("station");
    QTest::newRow("ENQ CR") << QByteArray("\x05\r") << -1;
    QTest::newRow("half a station") << QByteArray("\x05"
                                                  "0\r")
                                    << -1;
    QTest::newRow("station alone") << QByteArray("\x05"
                                                 "01\r")
                                   << 1;
    QTest::newRow("one digit short") << QByteArray("\x05"
                                                   "01052\r")
                                     << 1;
    QTest::newRow("one digit more") << QByteArray("\x05"
                                                  "0105280\r")
                                    << 1;
    QTest::newRow("three value digits") << QByteArray("\x05"
                                                      "010121FFF\r")
                                        << 1;
    QTest::newRow("five value digits") << QByteArray("\x05"
                                                     "01012112345\r")
                                       << 1;
    QTest::newRow("six value digits") << QByteArray("\x05"
                                                    "010121123456\r")
                                      << 1;
    QTest::newRow("lower case") << QByteArray("\x05"
                                              "0105a8\r")
                                << 1;
    QTest::newRow("lower-case value") << QByteArray("\x05"
                                                    "010121ff\r")
                                      << 1;
    QTest::newRow("bad station") << QByteArray("\x05"
                                               "G10528\r")
                                 << -1;
}

void TestPlcRequest::badFramesAreBad()
{
    QFETCH(QByteArray, frame);
    const PlcRequest request = kvt::parseTextFrame(frame);
    QCOMPARE(request.kind, Kind::Bad);
    QTEST(request.station, "station");
}

void TestPlcRequest::anEnvelopeIsTakenApart()
{
    const PlcRequest request =
        kvt::parseEnvelope(QByteArray::fromHex("16070002010001000000640001000000000000000086"));
    QCOMPARE(request.kind, Kind::Read);
    QCOMPARE(request.station, 1);
    QCOMPARE(request.area, 1);
    QCOMPARE(request.number, 100);
    QCOMPARE(request.mark, 0x86);
}

void TestPlcRequest::aWriteEnvelopeCarriesItsValues_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QVector<int>>("values");
    QTest::newRow("34 12") << QByteArray("3412") << QVector<int>{0x1234};
    QTest::newRow("01, a bit of one byte") << QByteArray("01") << QVector<int>{1};
    QTest::newRow("01 00 FF FF") << QByteArray("0100FFFF") << QVector<int>{1, 0xFFFF};
}

void TestPlcRequest::aWriteEnvelopeCarriesItsValues()
{
    QFETCH(QByteArray, data);
    const PlcRequest request = kvt::parseEnvelope(
        QByteArray::fromHex("180701020100010000006400010000000000000000" + data + "CF"));
    QCOMPARE(request.kind, Kind::Write);
    QCOMPARE(request.number, 100);
    QTEST(request.values, "values");
}

void TestPlcRequest::strangeEnvelopesAreBad_data()
{
    QTest::addColumn<QByteArray>("envelope");
    QTest::newRow("kind 2") << QByteArray("16070202010001000000640001000000000000000088");
    QTest::newRow("read with data") << QByteArray("1707000201000100000064000100000000000000000188");
    QTest::newRow("write without data")
        << QByteArray("16070102010001000000640001000000000000000087");
}

void TestPlcRequest::strangeEnvelopesAreBad()
{
    QFETCH(QByteArray, envelope);
    QCOMPARE(kvt::parseEnvelope(QByteArray::fromHex(envelope)).kind, Kind::Bad);
}

QTEST_GUILESS_MAIN(TestPlcRequest)
#include "tst_plc_request.moc"
