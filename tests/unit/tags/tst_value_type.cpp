// Types of values: names, sizes, areas.
#include "tags/value_type.h"

#include <QtTest>

using namespace kvt;

class TestValueType : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void typesHaveASizeAndElements_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("wordsOfD"); // 0: does not fit
        QTest::addColumn<int>("bytesOfC");
        QTest::addColumn<int>("bytesOfX");
        const auto row = [](const char *text, int d, int c, int x) {
            QTest::newRow(text) << QString(text) << d << c << x;
        };
        row("bool", 1, 1, 1);
        row("hex", 1, 1, 1);
        row("u8", 0, 1, 1);
        row("s8", 0, 1, 1);
        row("u16", 1, 2, 0);
        row("s16", 1, 2, 0);
        row("bcd16", 1, 2, 0);
        row("u32", 2, 4, 0);
        row("s32", 2, 4, 0);
        row("f32", 2, 4, 0);
        row("bcd32", 2, 4, 0);
        row("u64", 4, 8, 0);
        row("s64", 4, 8, 0);
        row("f64", 4, 8, 0);
        row("string:1", 1, 1, 0);
        row("string:7", 4, 7, 0);
        row("string:70", 35, 70, 0);
        row("string:8:utf8", 4, 8, 0);
        row("bit:0", 1, 1, 1);
        row("bit:7:rmw", 1, 1, 1);
        row("bit:8", 1, 0, 0);
        row("bit:15:rmw", 1, 0, 0);
    }

    void typesHaveASizeAndElements()
    {
        QFETCH(QString, text);
        ValueForm form;
        QCOMPARE(parseForm(text, &form), QString());
        QCOMPARE(formText(form), text);
        const auto elements = [&](Area area) {
            return formMisfit(form, area).isEmpty() ? elementCount(form, area) : 0;
        };
        QTEST(elements(Area::D), "wordsOfD");
        QTEST(elements(Area::C), "bytesOfC");
        QTEST(elements(Area::X), "bytesOfX");
    }

    void wrongTypesAreNamed_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("error");
        const auto row = [](const char *text, const char *error) {
            QTest::newRow(text) << QString(text) << QString(error);
        };
        const char *const unknown =
            "\"%1\" is no type (bool, u8, s8, u16, s16, hex, u32, s32, f32, "
            "u64, s64, f64, bcd16, bcd32, string:N, string:N:utf8, bit:N or "
            "bit:N:rmw)";
        for (const char *text :
             {"", "float", "U16", "u16 ", "u16:2", "bit:1:rmw:", "string:4:utf8:x"})
            QTest::newRow(text) << QString(text) << QString(unknown).arg(QString(text));
        const char *const length = "a string has 1 to 70 bytes, as in string:16";
        for (const char *text : {"string", "string:", "string:0", "string:71", "string:-1",
                                 "string:99999999999", "string:x"})
            QTest::newRow(text) << QString(text) << QString(length);
        const char *const number = "a bit has a number from 0 to 15, as in bit:3";
        for (const char *text : {"bit", "bit:", "bit:16", "bit:+1", "bit: 1"})
            QTest::newRow(text) << QString(text) << QString(number);
        row("string:4:ascii", "\"ascii\" is no encoding of a string (latin1 or utf8)");
        row("bit:1:write", "\"write\" is nothing that can stand behind a bit (rmw)");
    }

    void wrongTypesAreNamed()
    {
        QFETCH(QString, text);
        ValueForm form;
        form.type = ValueType::F64;
        const ValueForm before = form;
        QTEST(parseForm(text, &form), "error");
        QVERIFY(form == before);
    }

    void misfitsAreNamed()
    {
        ValueForm form;
        QCOMPARE(parseForm(QStringLiteral("f32"), &form), QString());
        QCOMPARE(formMisfit(form, Area::X), QString("type f32 does not fit area X"));
        QCOMPARE(parseForm(QStringLiteral("u8"), &form), QString());
        QCOMPARE(formMisfit(form, Area::D), QString("type u8 does not fit area D"));
        QCOMPARE(parseForm(QStringLiteral("bit:8"), &form), QString());
        QCOMPARE(formMisfit(form, Area::C), QString("an element of area C has bits 0 to 7"));
    }

    void ordersHaveNames()
    {
        for (const char *name : {"abcd", "badc", "cdab", "dcba"})
            QCOMPARE(wordOrderName(*parseWordOrder(QString(name))), QString(name));
        QCOMPARE(parseWordOrder(QStringLiteral("CDAB")), std::make_optional(WordOrder::Cdab));
        QVERIFY(!parseWordOrder(QStringLiteral("abdc")));
        QVERIFY(!parseWordOrder(QString()));
    }

    void aTypeKeepsTheOrderThatIsThere()
    {
        ValueForm form;
        form.order = WordOrder::Dcba;
        QCOMPARE(parseForm(QStringLiteral("u32"), &form), QString());
        QCOMPARE(form.order, WordOrder::Dcba);
    }
};

QTEST_GUILESS_MAIN(TestValueType)
#include "tst_value_type.moc"
