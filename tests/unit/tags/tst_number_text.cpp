// Texts of numbers with a binary fraction: how they are rounded, and when they have an exponent.
#include "tags/number_text.h"

#include <QtTest>

#include <cmath>
#include <cstdio>
#include <random>

using namespace kvt;

namespace
{

QString fixedText(double number, int places)
{
    NumberText text;
    text.appendFixed(number, places);
    return text.toString();
}

template <typename Number>
QString shortestText(Number number)
{
    NumberText text;
    text.appendShortest(number);
    return text.toString();
}

/// The digits of `number`, all of them, cut behind `places` and rounded as one does on paper.
QString roundedOnPaper(double number, int places)
{
    char all[128] = {}; // of more decimals than any of the numbers below has
    std::snprintf(all, sizeof all, "%.80f", std::fabs(number));
    QByteArray digits(all);
    const int point = digits.indexOf('.');
    const bool up = digits.at(point + 1 + places) >= '5';
    digits = digits.left(point + 1 + places).remove(point, 1);
    for (int i = digits.size() - 1; up && i >= -1; --i) {
        if (i < 0) {
            digits.prepend('1');
        } else if (digits.at(i) == '9') {
            digits[i] = '0';
            continue;
        } else {
            digits[i] = static_cast<char>(digits.at(i) + 1);
        }
        break;
    }
    if (places > 0)
        digits.insert(digits.size() - places, '.');
    const bool isNothing = digits.count('0') + digits.count('.') == digits.size();
    return QLatin1String((number < 0 && !isNothing ? "-" : "") + digits);
}

} // namespace

class TestNumberText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void halvesAreRoundedAwayFromZero_data()
    {
        QTest::addColumn<double>("number");
        QTest::addColumn<int>("places");
        QTest::addColumn<QString>("text");
        const auto row = [](double number, int places, const char *text) {
            QTest::newRow(text) << number << places << QString(text);
        };
        row(0.5, 0, "1");
        row(1.5, 0, "2");
        row(2.5, 0, "3");
        row(-2.5, 0, "-3");
        row(2.4999999999999996, 0, "2");
        row(0.125, 2, "0.13");
        row(-0.125, 2, "-0.13");
        row(0.375, 2, "0.38");
        row(0.0625, 3, "0.063");
        row(0.25, 1, "0.3");
        row(0.75, 1, "0.8");
        row(1.005, 2, "1.00"); // is 1.00499999999999989...
        row(999999999999999.5, 0, "1000000000000000");
        row(0.0000152587890625, 15, "0.000015258789063");
        row(562949953421311.9375, 15, "562949953421311.937500000000000");
    }

    void halvesAreRoundedAwayFromZero()
    {
        QFETCH(double, number);
        QFETCH(int, places);
        QTEST(fixedText(number, places), "text");
    }

    // Whole numbers of eighths and the like: one in a few is a half.
    void numbersAreRoundedAsOnPaper()
    {
        std::mt19937_64 random(1);
        for (int i = 0; i < 100000; ++i) {
            const double whole = static_cast<double>(static_cast<qint64>(random()) >> 24);
            const double number = std::ldexp(whole, -static_cast<int>(random() % 40));
            const int places = static_cast<int>(random() % 16);
            if (fixedText(number, places) != roundedOnPaper(number, places))
                QFAIL(qPrintable(fixedText(number, places) + QStringLiteral(" for ") +
                                 QString::number(number, 'g', 17)));
        }
    }

    void whatBecomesZeroHasNoMinus()
    {
        QCOMPARE(fixedText(-0.00499, 2), QString("0.00"));
        QCOMPARE(fixedText(-0.00501, 2), QString("-0.01"));
        QCOMPARE(fixedText(-0.4, 0), QString("0"));
        QCOMPARE(fixedText(-1e-300, 1), QString("0.0"));
        QCOMPARE(fixedText(-0.0, 2), QString("-0.00")); // all that it is
    }

    void whatStandsAheadStays()
    {
        NumberText text;
        text.append("-0 ");
        text.appendFixed(-0.001, 1);
        QCOMPARE(text.toString(), QString("-0 0.0"));
    }

    void exponentsAreForLargeAndSmallNumbers()
    {
        QCOMPARE(shortestText(0.0005F), QString("0.0005"));
        QCOMPARE(shortestText(-0.00001F), QString("-0.00001"));
        QCOMPARE(shortestText(0.000009F), QString("9e-06"));
        QCOMPARE(shortestText(1000000.0F), QString("1000000"));
        QCOMPARE(shortestText(9999999.0F), QString("9999999"));
        QCOMPARE(shortestText(10000000.0F), QString("1e+07"));
        QCOMPARE(shortestText(0.0005), QString("0.0005"));
        QCOMPARE(shortestText(200000000000000.0), QString("200000000000000"));
        QCOMPARE(shortestText(1e15), QString("1e+15"));
        QCOMPARE(shortestText(-0.0), QString("-0"));
    }
};

QTEST_APPLESS_MAIN(TestNumberText)
#include "tst_number_text.moc"
