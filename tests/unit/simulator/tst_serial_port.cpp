// The simulated PLC on a serial port. The port is one end of a pseudo-terminal, which takes the
// same settings as a serial device.
#include "simulator/plc_runner.h"
#include "simulator/pty_port.h"
#include "simulator/serial_port.h"

#include "simulator/line_speed.h"
#include "tests/unit/simulator/line_peer.h"
#include "tests/unit/simulator/sample_plc.h"

#include <QDeadlineTimer>
#include <QTemporaryDir>
#include <QtTest>

#include <termios.h>

using namespace kvt;
using Parity = SerialPortSettings::Parity;

namespace
{

/// Sends through the terminal's other end, which does not block.
QByteArray askCable(const PtyPort &cable)
{
    FileDescriptor fd;
    fd.reset(dup(cable.dataFd()));
    return askLine(fd, READ_1, REPLY_1.size());
}

/// Asks again and again, because what is sent before the device is open is lost. Returns the first
/// answer.
QByteArray askUntilAnswered(const PtyPort &cable)
{
    FileDescriptor fd;
    fd.reset(dup(cable.dataFd()));
    pollfd polled = {fd.get(), POLLIN, 0};
    const QDeadlineTimer guard(HANG_GUARD_ms);
    while (!guard.hasExpired() && sendBytes(fd, READ_1)) {
        if (poll(&polled, 1, 50) > 0)
            return readBytes(fd, REPLY_1.size());
    }
    return QByteArray();
}

} // namespace

class TestSerialPort : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void requestsAreAnswered()
    {
        PtyPort cable;
        QString error;
        QVERIFY(cable.open(&error));
        SimulatedPlc plc = samplePlc();
        SerialPort port(cable.name(), SerialPortSettings());
        PlcRunner runner(&plc, &port);
        QVERIFY2(runner.start(&error), qPrintable(error));
        QCOMPARE(askCable(cable), REPLY_1);
    }

    void aDeviceThatGoesIsOpenedAgain()
    {
        const QTemporaryDir directory;
        PtyPort cable(directory.filePath(QStringLiteral("device")));
        QString error;
        QVERIFY(cable.open(&error));
        SimulatedPlc plc = samplePlc();
        SerialPort port(cable.name(), SerialPortSettings());
        PlcRunner runner(&plc, &port);
        QVERIFY2(runner.start(&error), qPrintable(error));
        QCOMPARE(askCable(cable), REPLY_1);
        cable.close();
        QVERIFY(cable.open(&error));
        QCOMPARE(askUntilAnswered(cable), REPLY_1);
    }

    void settingsReachTheDevice()
    {
        PtyPort cable;
        QString error;
        QVERIFY(cable.open(&error));
        SerialPortSettings settings;
        settings.baud = 38400;
        settings.dataBits = 7;
        settings.parity = Parity::Odd;
        settings.stopBits = 2;
        SerialPort port(cable.name(), settings);
        QVERIFY2(port.open(&error), qPrintable(error));
        termios actual = {};
        QCOMPARE(tcgetattr(port.dataFd(), &actual), 0);
        QCOMPARE(cfgetospeed(&actual), static_cast<speed_t>(B38400));
        // A pseudo-terminal keeps eight bits and no parity whatever it is told.
        QVERIFY((actual.c_cflag & CSTOPB) != 0);
        QVERIFY((actual.c_cflag & PARODD) != 0);
        QVERIFY((actual.c_lflag & (ICANON | ECHO)) == 0);
    }

    void badDevicesAreRefused()
    {
        const QTemporaryDir directory;
        const QString missing = directory.filePath(QStringLiteral("none"));
        QString error;
        QVERIFY(!SerialPort(missing, SerialPortSettings()).open(&error));
        QCOMPARE(error, missing + ": No such file or directory");
        QVERIFY(!SerialPort(QStringLiteral("/dev/null"), SerialPortSettings()).open(&error));
        QCOMPARE(error, QString("/dev/null is no serial port"));
        PtyPort cable;
        QVERIFY(cable.open(&error));
        SerialPortSettings odd;
        odd.baud = 12345;
        QVERIFY(!SerialPort(cable.name(), odd).open(&error));
        QCOMPARE(error, QString("12345 baud is none of the usual speeds"));
    }

    // Those of host/serial_line.h, which a simulated PLC has to keep up with.
    void allSpeedsOfHostsAreTaken()
    {
        QVector<int> refused;
        QVector<int> taken;
        PtyPort cable;
        QString error;
        QVERIFY(cable.open(&error));
        for (const int baud : {1200,    2400,    4800,    9600,    19200,   38400,   57600,
                               115200,  230400,  460800,  500000,  576000,  921600,  1000000,
                               1152000, 1500000, 2000000, 2500000, 3000000, 3500000, 4000000}) {
            SerialPortSettings settings;
            settings.baud = baud;
            (SerialPort(cable.name(), settings).open(&error) ? taken : refused).append(baud);
        }
        QCOMPARE(refused, QVector<int>());
        QCOMPARE(taken.size(), 21);
    }

    void aByteHasItsBits()
    {
        SerialPortSettings settings;
        QCOMPARE(settings.bitsPerByte(), 10);
        settings.parity = Parity::Even;
        QCOMPARE(settings.bitsPerByte(), 11);
        settings.dataBits = 7;
        settings.stopBits = 2;
        QCOMPARE(settings.bitsPerByte(), 11);
    }

    void aByteHasItsTime()
    {
        QCOMPARE(byteTime_ns(9600, 10), 1041667);
        QCOMPARE(byteTime_ns(115200, 10), 86806);
        QCOMPARE(byteTime_ns(115200, 11), 95486);
        QCOMPARE(byteTime_ns(0, 10), 0);
        QCOMPARE(byteTime_ns(-1, 10), 0);
    }
};

QTEST_GUILESS_MAIN(TestSerialPort)
#include "tst_serial_port.moc"
