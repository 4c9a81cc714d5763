// Addresses of values of several elements.
#include "tags/tag_span.h"

#include <QtTest>

using namespace kvt;

Q_DECLARE_METATYPE(Area)

namespace
{

ValueForm formOf(const QString &type)
{
    ValueForm form;
    if (!parseForm(type, &form).isEmpty())
        qFatal("%s", qPrintable(type));
    return form;
}

} // namespace

class TestTagSpan : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void elementsFollowTheDriversNumbers_data()
    {
        QTest::addColumn<Area>("area");
        QTest::addColumn<QString>("address");
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("elements");
        QTest::addColumn<QString>("writeFault");
        const auto row = [](Area area, const char *address, const char *type, const char *elements,
                            const char *writeFault = "") {
            QTest::addRow("%s %s %s", qPrintable(areaName(area)), address, type)
                << area << QString(address) << QString(type) << QString(elements)
                << QString(writeFault);
        };
        row(Area::X, "5.2.1", "u8", "5.2.1");
        row(Area::D, "5.2.1", "u16", "5.2.1");
        row(Area::D, "5.2.0", "f32", "5.2.0 5.2.1");
        row(Area::D, "5.2.1", "f32", "5.2.1 5.3.0");
        row(Area::D, "05.2.1", "u32", "05.2.1 5.3.0");
        row(Area::D, "5.15.1", "u32", "5.15.1 6.0.0");
        row(Area::D, "5.14.1", "f64", "5.14.1 5.15.0 5.15.1 6.0.0");
        row(Area::D, "5.0.2", "u32", "5.0.2 5.0.3");
        row(Area::D, "5.0.254", "u32", "5.0.254 5.0.255");
        row(Area::D, "255.15.0", "u32", "255.15.0 255.15.1");
        row(Area::D, "1.0.0", "string:5", "1.0.0 1.0.1 1.1.0");
        row(Area::C, "9.1.1.5", "u32", "9.1.1.5 9.1.1.6 9.1.1.7 9.1.1.8");
        row(Area::C, "9.1.0.66", "f32", "9.1.0.66 9.1.0.67 9.1.0.68 9.1.0.69");
        row(Area::D, "18.0.1", "u32", "18.0.1 18.1.0",
            "a write to 18.1.0 is a command without a value");
        row(Area::D, "18.1.1", "u32", "18.1.1 18.2.0",
            "a write to 18.1.1 is a command without a value");
    }

    void elementsFollowTheDriversNumbers()
    {
        QFETCH(Area, area);
        QFETCH(QString, address);
        QFETCH(QString, type);
        TagSpan span;
        QCOMPARE(parseTagSpan(area, address, formOf(type), &span), QString());
        QTEST(span.texts.join(QLatin1Char(' ')), "elements");
        QTEST(span.writeFault, "writeFault");
        QCOMPARE(span.addresses.size(), span.texts.size());
        for (int i = 0; i < span.addresses.size(); ++i)
            QCOMPARE(numericAddress(area, span.addresses[i]),
                     numericAddress(area, span.addresses[0]) + i);
    }

    void whatCannotBeReadIsNamed_data()
    {
        QTest::addColumn<Area>("area");
        QTest::addColumn<QString>("address");
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("error");
        const auto row = [](Area area, const char *address, const char *type, const char *error) {
            QTest::addRow("%s %s %s", qPrintable(areaName(area)), address, type)
                << area << QString(address) << QString(type) << QString(error);
        };
        row(Area::D, "5.16.0", "u32", "field 2 is 16, not 0 to 15");
        row(Area::D, "255.15.1", "u32",
            "a value of type u32 takes 2 words from here on, but the addresses end at 255.15.1");
        row(Area::D, "5.0.253", "f64",
            "a value of type f64 takes 4 words from here on, but the addresses end at 5.0.255");
        row(Area::C, "9.1.0.67", "f32",
            "a value of type f32 takes 4 bytes from here on, but the block ends at 9.1.0.69");
        row(Area::C, "9.1.1.1", "string:70",
            "a value of type string:70 takes 70 bytes from here on, but the block ends at "
            "9.1.1.69");
        row(Area::D, "18.0.16", "u32",
            "18.0.17, which it takes too: a read of it is on the line the command D 18.1.0, which "
            "the PLC would carry out");
    }

    void whatCannotBeReadIsNamed()
    {
        QFETCH(Area, area);
        QFETCH(QString, address);
        QFETCH(QString, type);
        TagSpan span;
        QTEST(parseTagSpan(area, address, formOf(type), &span), "error");
        QVERIFY(span.texts.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestTagSpan)
#include "tst_tag_span.moc"
