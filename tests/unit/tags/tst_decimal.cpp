// Decimal numbers, exact as they are written.
#include "tags/decimal.h"

#include "tags/number_text.h"

#include <QtTest>

#include <cstdlib>
#include <random>

using namespace kvt;

Q_DECLARE_METATYPE(NumberReading)

class TestDecimal : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void numbersAreReadAsTheyStand_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<qint64>("mantissa");
        QTest::addColumn<int>("places");
        const auto row = [](const char *text, qint64 mantissa, int places) {
            QTest::newRow(text) << QString(text) << mantissa << places;
        };
        row("0", 0, 0);
        row("-0", 0, 0);
        row("0.000", 0, 0);
        row("0e99999999999", 0, 0);
        row("7", 7, 0);
        row("-100", -100, 0);
        row("0.1", 1, 1);
        row(".5", 5, 1);
        row("-21.40", -214, 1);
        row("100.05", 10005, 2);
        row("000.0625", 625, 4);
        row("1e3", 1000, 0);
        row("1.5E-3", 15, 4);
        row("120e-1", 12, 0);
        row("2.50e+1", 25, 0);
        row("1e-30", 1, 30);
        row("100000000000000000000000000000000000000000e-40", 10, 0);
    }

    void numbersAreReadAsTheyStand()
    {
        QFETCH(QString, text);
        Decimal number;
        QCOMPARE(readDecimal(text, &number), NumberReading::Good);
        QTEST(static_cast<qint64>(number.mantissa), "mantissa");
        QTEST(number.places, "places");
    }

    void anythingElseIsNamed_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("fault");
        for (const char *text : {"", "-", ".", "1.", "+1", "1e", "1e+", "1 2", "0x10", "1.2.3",
                                 "nan", "1,2,3", "--1", " 1"})
            QTest::newRow(text) << QString(text)
                                << QStringLiteral("\"%1\" is not a number").arg(QString(text));
        QTest::newRow("other digits")
            << QString::fromUtf8("\xD9\xA1") << QString::fromUtf8("\"\xD9\xA1\" is not a number");
        QTest::newRow("comma") << "-21,4"
                               << "\"-21,4\" has a comma where a point is needed";
        const QString digits =
            "%1 has more digits than can be reckoned with (36, 30 of them decimals)";
        for (const char *text : {"1e36", "1e-31", "1234567890123456789012345678901234567",
                                 "1e99999999999", "0.0000000000000000000000000000001"})
            QTest::newRow(text) << QString(text) << digits.arg(QString(text));
    }

    void anythingElseIsNamed()
    {
        QFETCH(QString, text);
        Decimal number{5, 0};
        const NumberReading reading = readDecimal(text, &number);
        QVERIFY(reading != NumberReading::Good);
        QCOMPARE(static_cast<int>(number.mantissa), 5);
        QTEST(numberFault(reading, text), "fault");
    }

    void numbersCompareExactly_data()
    {
        QTest::addColumn<QString>("low");
        QTest::addColumn<QString>("high");
        const auto row = [](const char *low, const char *high) {
            QTest::addRow("%s %s", low, high) << QString(low) << QString(high);
        };
        row("-1", "0");
        row("0.1", "0.11");
        row("9007199254740992.1", "9007199254740992.2");
        row("-1e35", "1e-30");
        row("1e-30", "1e35");
        row("-1e35", "-1e-30");
    }

    void numbersCompareExactly()
    {
        QFETCH(QString, low);
        QFETCH(QString, high);
        Decimal a;
        Decimal b;
        QCOMPARE(readDecimal(low, &a), NumberReading::Good);
        QCOMPARE(readDecimal(high, &b), NumberReading::Good);
        QCOMPARE(compare(a, b), -1);
        QCOMPARE(compare(b, a), 1);
        QCOMPARE(compare(a, a), 0);
    }

    void textsHaveTheirPoint_data()
    {
        QTest::addColumn<QString>("digits");
        QTest::addColumn<int>("places");
        QTest::addColumn<QString>("text");
        QTest::newRow("0") << "0" << 0 << "0";
        QTest::newRow("0.00") << "0" << 2 << "0.00";
        QTest::newRow("-0.05") << "-5" << 2 << "-0.05";
        QTest::newRow("21.4") << "214" << 1 << "21.4";
        QTest::newRow("20 digits") << "18446744073709551615" << 0 << "18446744073709551615";
        QTest::newRow("20 digits, 3 places")
            << "18446744073709551615" << 3 << "18446744073709551.615";
        QTest::newRow("30 places")
            << "10000000000000000005" << 30 << "0.000000000010000000000000000005";
        QTest::newRow("36 digits") << "-123456789012345678901234567890123456" << 0
                                   << "-123456789012345678901234567890123456";
    }

    void textsHaveTheirPoint()
    {
        QFETCH(QString, digits);
        QFETCH(int, places);
        Decimal number;
        QCOMPARE(readDecimal(digits, &number), NumberReading::Good);
        NumberText text;
        text.appendDecimal(number.mantissa, places);
        QTEST(text.toString(), "text");
    }

    void theFurthestNumbersHaveRoom()
    {
        const Int128 highest = static_cast<Int128>(~UInt128(0) >> 1);
        NumberText text;
        text.appendDecimal(-highest - 1, 0);
        QCOMPARE(text.toString(), QString("-170141183460469231731687303715884105728"));
    }

    void everyTextComesBack()
    {
        std::mt19937_64 random(1);
        for (int i = 0; i < 100000; ++i) {
            const int places = static_cast<int>(random() % 19);
            const Int128 number = static_cast<qint64>(random());
            NumberText text;
            text.appendDecimal(number, places);
            Decimal read;
            QCOMPARE(readDecimal(text.toString(), &read), NumberReading::Good);
            if (compare(read, {number, places}) != 0)
                QFAIL(text.data());
        }
    }

    void divisionRoundsHalvesAwayFromZero()
    {
        const Int128 large = Int128(1) << 100;
        QCOMPARE(static_cast<int>(divideRounded(5, 2)), 3);
        QCOMPARE(static_cast<int>(divideRounded(-5, 2)), -3);
        QCOMPARE(static_cast<int>(divideRounded(-4, 3)), -1);
        QCOMPARE(static_cast<int>(divideRounded(5 * large, 2 * large)), 3);
        QCOMPARE(static_cast<int>(divideRounded(-5 * large, 2 * large)), -3);
        QCOMPARE(static_cast<int>(divideRounded(-7 * large, 4 * large)), -2);
        QCOMPARE(static_cast<int>(divideRounded(0, 7)), 0);
    }

    // Beside the C library's reading of the digits, bit for bit.
    void theNearestDoubleIsFound()
    {
        std::mt19937_64 random(1);
        for (int i = 0; i < 300000; ++i) {
            const quint64 size = random() >> random() % 64;
            const int places = static_cast<int>(random() % 16);
            const bool isNegative = random() % 2 == 0;
            const QByteArray text = (isNegative ? "-" : "") + QByteArray::number(size) + "e-" +
                                    QByteArray::number(places);
            const Int128 mantissa = isNegative ? -Int128(size) : Int128(size);
            const double expected = std::strtod(text.constData(), nullptr);
            if (toDouble({mantissa, places}) != expected)
                QFAIL(text.constData());
        }
    }

    // In the middle of two doubles the even one is taken, and a thousandth beside it that side's.
    void whatLiesBetweenDoublesIsRoundedOnce()
    {
        QVERIFY(toDouble({Int128(9007199254740993), 0}) == 9007199254740992.0);
        QVERIFY(toDouble({Int128(9007199254740995), 0}) == 9007199254740996.0);
        QVERIFY(toDouble({Int128(9007199254740993001), 3}) == 9007199254740994.0);
        QVERIFY(toDouble({Int128(9007199254740992999), 3}) == 9007199254740992.0);
        QVERIFY(toDouble({-Int128(9007199254740993001), 3}) == -9007199254740994.0);
        QVERIFY(toDouble({Int128(18446744073709551615ULL), 0}) == 18446744073709551616.0);
    }
};

QTEST_GUILESS_MAIN(TestDecimal)
#include "tst_decimal.moc"
