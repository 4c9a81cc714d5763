// Floats as text. The expected bits are those of IEEE 754, worked out by hand.
#include "tags/float_text.h"

#include "tags/number_text.h"

#include <QtTest>

#include <random>

using namespace kvt;

namespace
{

QString textOf(ValueType type, quint64 bits)
{
    NumberText text;
    appendFloat(type, bits, &text);
    return text.toString();
}

QString faultOf(ValueType type, quint64 bits)
{
    const QString text = textOf(type, bits);
    const EnteredFloat back = enterFloat(type, text);
    return back.error.isEmpty() && back.bits == bits
               ? QString()
               : QStringLiteral("%1 comes back from %2 as %3 %4")
                     .arg(QString::number(bits, 16), text, QString::number(back.bits, 16),
                          back.error);
}

} // namespace

class TestFloatText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyKindOfFloatComesBack_data()
    {
        QTest::addColumn<bool>("isWide");
        QTest::addColumn<quint64>("bits");
        QTest::addColumn<QString>("text");
        const auto f32 = [](quint64 bits, const char *text) {
            QTest::addRow("f32 %08llX", bits) << false << bits << QString(text);
        };
        const auto f64 = [](quint64 bits, const char *text) {
            QTest::addRow("f64 %016llX", bits) << true << bits << QString(text);
        };
        f32(0x00000000, "0");
        f32(0x80000000, "-0");
        f32(0x3F800000, "1");
        f32(0xBFC00000, "-1.5");
        f32(0x41AB3333, "21.4");
        f32(0x3DCCCCCD, "0.1");
        f32(0x4B800000, "16777216");
        f32(0x7149F2CA, "1e+30");
        f32(0x7F7FFFFF, "3.4028235e+38");
        f32(0x00800000, "1.1754944e-38"); // lowest normal
        f32(0x007FFFFF, "1.1754942e-38"); // highest denormal
        f32(0x00000001, "1e-45");         // lowest denormal
        f32(0x80000001, "-1e-45");
        f32(0x7F800000, "inf");
        f32(0xFF800000, "-inf");
        f32(0x7FC00000, "nan");
        f32(0xFFC00000, "-nan");
        f32(0x7FC00001, "nan(0x7FC00001)");
        f32(0x7F800001, "nan(0x7F800001)"); // signals
        f32(0xFFFFFFFF, "nan(0xFFFFFFFF)");
        f64(0x0000000000000000, "0");
        f64(0x8000000000000000, "-0");
        f64(0x3FF8000000000000, "1.5");
        f64(0x3FB999999999999A, "0.1");
        f64(0x3FD5555555555555, "0.3333333333333333");
        f64(0x7FEFFFFFFFFFFFFF, "1.7976931348623157e+308");
        f64(0x0010000000000000, "2.2250738585072014e-308");
        f64(0x0000000000000001, "5e-324");
        f64(0x7FF0000000000000, "inf");
        f64(0xFFF0000000000000, "-inf");
        f64(0x7FF8000000000000, "nan");
        f64(0xFFF8000000000000, "-nan");
        f64(0x7FF0000000000001, "nan(0x7FF0000000000001)");
    }

    void everyKindOfFloatComesBack()
    {
        QFETCH(bool, isWide);
        QFETCH(quint64, bits);
        const ValueType type = isWide ? ValueType::F64 : ValueType::F32;
        QTEST(textOf(type, bits), "text");
        QCOMPARE(faultOf(type, bits), QString());
    }

    void numbersAreEntered_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<quint64>("bits");
        const auto row = [](const char *text, quint64 bits) {
            QTest::newRow(text) << QString(text) << bits;
        };
        row(" 21.4 ", 0x41AB3333);
        row("21.400000000000000000000000000000000000000001", 0x41AB3333);
        row("1E+1", 0x41200000);
        row(".5", 0x3F000000);
        row("INF", 0x7F800000);
        row("-Infinity", 0xFF800000);
        row("NaN", 0x7FC00000);
        row("nan(0x7fc00001)", 0x7FC00001);
        row("0e-999", 0);
    }

    void numbersAreEntered()
    {
        QFETCH(QString, text);
        const EnteredFloat entered = enterFloat(ValueType::F32, text);
        QCOMPARE(entered.error, QString());
        QTEST(entered.bits, "bits");
    }

    void anythingElseIsRefused_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("error");
        const auto row = [](const char *text, const char *error) {
            QTest::newRow(text) << QString(text) << QString(error);
        };
        row("", "a value is missing");
        row("21,4", "\"21,4\" has a comma where a point is needed");
        for (const char *text : {"-", "1e", "1.2.3", "ten", "+1", "0x10", "nan(0x7F800000)",
                                 "nan(0x1)", "nan(0x17FC00000)", "nan()", "infinite", "1 2"})
            QTest::newRow(text) << QString(text)
                                << QStringLiteral("\"%1\" is not a number").arg(QString(text));
        row("3.5e38", "3.5e38 does not fit f32; the nearest is 3.4028235e+38");
        row("-1e39", "-1e39 does not fit f32; the nearest is -3.4028235e+38");
        row("1e-46", "1e-46 does not fit f32; the nearest is 0");
        row("-1e-99", "-1e-99 does not fit f32; the nearest is -0");
    }

    void anythingElseIsRefused()
    {
        QFETCH(QString, text);
        QTEST(enterFloat(ValueType::F32, text).error, "error");
    }

    void aTextWithoutEndIsRefused()
    {
        const QString text(100000, QLatin1Char('1'));
        QCOMPARE(enterFloat(ValueType::F64, text).error,
                 QStringLiteral("\"%1\" is not a number").arg(text));
    }

    void randomBitsComeBack()
    {
        std::mt19937_64 random(1);
        for (int i = 0; i < 100000; ++i) {
            const quint64 bits = random();
            QString fault = faultOf(ValueType::F64, bits);
            if (fault.isEmpty())
                fault = faultOf(ValueType::F32, bits >> 32);
            if (!fault.isEmpty())
                QFAIL(qPrintable(fault));
        }
    }
};

QTEST_GUILESS_MAIN(TestFloatText)
#include "tst_float_text.moc"
