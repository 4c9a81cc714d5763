// Settings of serial ports and TCP lines.
#include "host/serial_line.h"
#include "host/tcp_line.h"

#include <QtTest>

using namespace kvt;

class TestLineSettings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aCharacterTakesAllItsBits_data()
    {
        QTest::addColumn<int>("baud");
        QTest::addColumn<int>("dataBits");
        QTest::addColumn<int>("parity");
        QTest::addColumn<int>("stopBits");
        QTest::addColumn<qint64>("time_ns");
        QTest::newRow("9600 8N1") << 9600 << 8 << int(Parity::None) << 1 << qint64(1041666);
        QTest::newRow("9600 7E1") << 9600 << 7 << int(Parity::Even) << 1 << qint64(1041666);
        QTest::newRow("9600 8O2") << 9600 << 8 << int(Parity::Odd) << 2 << qint64(1250000);
        QTest::newRow("115200 8N1") << 115200 << 8 << int(Parity::None) << 1 << qint64(86805);
        QTest::newRow("0 8N1") << 0 << 8 << int(Parity::None) << 1 << qint64(0);
        QTest::newRow("4000000 7N1") << 4000000 << 7 << int(Parity::None) << 1 << qint64(2250);
    }

    void aCharacterTakesAllItsBits()
    {
        QFETCH(int, baud);
        QFETCH(int, dataBits);
        QFETCH(int, parity);
        QFETCH(int, stopBits);
        QFETCH(qint64, time_ns);
        SerialSettings settings;
        settings.path = QStringLiteral("/dev/ttyS0");
        settings.baud = baud;
        settings.dataBits = dataBits;
        settings.parity = Parity(parity);
        settings.stopBits = stopBits;
        QCOMPARE(settings.error().isEmpty(), time_ns > 0);
        QCOMPARE(settings.characterTime_ns(), time_ns);
    }

    void wrongSerialSettingsAreNamed()
    {
        SerialSettings settings;
        QVERIFY(settings.error().contains(QLatin1String("port")));
        settings.path = QStringLiteral("/dev/ttyS0");
        QCOMPARE(settings.error(), QString());
        settings.baud = 12345;
        QVERIFY(settings.error().contains(QLatin1String("12345")));
        settings.baud = 9600;
        settings.dataBits = 9;
        QVERIFY(settings.error().contains(QLatin1String("9 data bits")));
        settings.dataBits = 7;
        settings.stopBits = 0;
        QVERIFY(settings.error().contains(QLatin1String("0 stop bits")));
    }

    void wrongTcpSettingsAreNamed()
    {
        TcpSettings settings;
        QVERIFY(settings.error().contains(QLatin1String("host")));
        settings.host = QStringLiteral("127.0.0.1");
        for (const int port : {0, -1, 65536}) {
            settings.port = port;
            QVERIFY(settings.error().contains(QString::number(port)));
        }
        settings.port = 65535;
        QCOMPARE(settings.error(), QString());
        QCOMPARE(TcpLine(settings).name(), QStringLiteral("127.0.0.1:65535"));
    }

    void wrongSettingsDoNotOpen()
    {
        QString error;
        SerialSettings serial;
        serial.path = QStringLiteral("/dev/ptmx");
        serial.baud = 0;
        SerialLine serialLine(serial);
        QCOMPARE(serialLine.open(&error), Opening::Failed);
        QVERIFY(!error.isEmpty());
        TcpLine tcpLine{TcpSettings()};
        QCOMPARE(tcpLine.open(&error), Opening::Failed);
        QVERIFY(error.contains(QLatin1String("host")));
    }

    void whatIsNoPortDoesNotOpen()
    {
        QString error;
        SerialSettings settings;
        for (const char *path : {"/dev/null", "/nowhere/ttyS0"}) {
            settings.path = QLatin1String(path);
            SerialLine line(settings);
            QCOMPARE(line.open(&error), Opening::Failed);
            QVERIFY(!error.isEmpty());
            QCOMPARE(line.descriptor(), -1);
        }
    }
};

QTEST_APPLESS_MAIN(TestLineSettings)
#include "tst_line_settings.moc"
