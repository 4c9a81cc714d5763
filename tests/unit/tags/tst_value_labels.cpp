// Names of values and of bits.
#include "tags/value_labels.h"

#include <QtTest>

using namespace kvt;

namespace
{

ValueForm ofType(ValueType type)
{
    ValueForm form;
    form.type = type;
    return form;
}

} // namespace

class TestValueLabels : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void valuesHaveNames()
    {
        ValueLabels labels;
        QCOMPARE(ValueLabels::parse(QStringLiteral(" 0=off; -1 = run = fast ;0x7F=max;"),
                                    ofType(ValueType::S8), Area::X, &labels),
                 QString());
        QCOMPARE(*labels.nameOf(0), QString("off"));
        QCOMPARE(*labels.nameOf(0xFF), QString("run = fast"));
        QVERIFY(labels.nameOf(1) == nullptr);
        QCOMPARE(labels.bitsOf(QStringLiteral("OFF")), std::make_optional<quint64>(0));
        QCOMPARE(labels.bitsOf(QStringLiteral("run = fast")), std::make_optional<quint64>(0xFF));
        QVERIFY(!labels.bitsOf(QStringLiteral("run")));
    }

    void wrongLabelsAreNamed_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("error");
        const auto row = [](ValueType type, const char *text, const char *error) {
            QTest::newRow(text) << int(type) << QString(text) << QString(error);
        };
        row(ValueType::U8, "0=off;on", "\"on\" is not a number, = and a name");
        row(ValueType::U8, "0=", "\"0=\" has no name");
        row(ValueType::U8, "=x", "a value is missing");
        row(ValueType::U8, "x=off", "\"x\" is not a u8 value");
        row(ValueType::U8, "256=off", "256 does not fit u8 (0 to 255)");
        row(ValueType::U8, "1=a;0x1=b", "\"0x1\" is there twice");
        row(ValueType::U8, "1=a;2=A", "\"A\" is there twice");
        row(ValueType::U8, "1=2", "\"2\" is entered for another value");
        row(ValueType::U8, "1=-1.5", "\"-1.5\" is entered for another value");
        row(ValueType::U8, "1=0x10", "\"0x10\" is entered for another value");
        row(ValueType::Bool, "0=on;1=off", "\"on\" is entered for another value");
    }

    void wrongLabelsAreNamed()
    {
        QFETCH(int, type);
        QFETCH(QString, text);
        ValueLabels labels;
        QTEST(ValueLabels::parse(text, ofType(ValueType(type)), Area::X, &labels), "error");
        QVERIFY(labels.isEmpty());
    }

    void aTruthValueMayBeCalledWhatItIs()
    {
        ValueLabels labels;
        QCOMPARE(ValueLabels::parse(QStringLiteral("0=Off;1=On"), ofType(ValueType::Bool), Area::X,
                                    &labels),
                 QString());
        QCOMPARE(*labels.nameOf(1), QString("On"));
    }

    void bitsHaveNames()
    {
        BitNames names;
        QCOMPARE(BitNames::parse(QStringLiteral("0=door open;15=dry run"), ofType(ValueType::Hex),
                                 Area::D, &names),
                 QString());
        QCOMPARE(names.textOf(0), QString("none"));
        QCOMPARE(names.textOf(0x8001), QString("door open, dry run"));
        QCOMPARE(names.textOf(0x0011), QString("door open, bit 4"));
        QCOMPARE(names.bitsOf(QStringLiteral("None")), std::make_optional<quint64>(0));
        QCOMPARE(names.bitsOf(QStringLiteral("Dry run,Bit 4")),
                 std::make_optional<quint64>(0x8010));
        QVERIFY(!names.bitsOf(QStringLiteral("bit 16")));
        QVERIFY(!names.bitsOf(QStringLiteral("window open")));
        QVERIFY(!names.bitsOf(QStringLiteral("door open,")));
    }

    void everyWordComesBackFromItsNames()
    {
        BitNames names;
        QCOMPARE(BitNames::parse(QStringLiteral("0=a;3=b;4=bit;15=0x"), ofType(ValueType::U16),
                                 Area::D, &names),
                 QString());
        for (quint64 word = 0; word <= 0xFFFF; ++word)
            if (names.bitsOf(names.textOf(word)) != word)
                QFAIL(qPrintable(names.textOf(word)));
    }

    void wrongBitsAreNamed_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("error");
        const auto row = [](const char *text, const char *error) {
            QTest::newRow(text) << QString(text) << QString(error);
        };
        row("8=x", "\"8\" is no bit of hex (0 to 7)");
        row("x=y", "\"x\" is no bit of hex (0 to 7)");
        row("1=a;1=b", "\"1\" is there twice");
        row("1=a;2=A", "\"A\" is there twice");
        row("1=a, b", "\"a, b\" has a comma in it");
        row("1=NONE", "\"NONE\" is shown or entered for something else");
        row("1=bit 1", "\"bit 1\" is shown or entered for something else");
        row("1=17", "\"17\" is shown or entered for something else");
    }

    void wrongBitsAreNamed()
    {
        QFETCH(QString, text);
        BitNames names;
        QTEST(BitNames::parse(text, ofType(ValueType::Hex), Area::X, &names), "error");
        QVERIFY(names.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestValueLabels)
#include "tst_value_labels.moc"
