// Elements put together to values and taken apart. Each expected number is worked out by hand from
// the order's letters.
#include "tags/value_elements.h"

#include <QtTest>

#include <random>

using namespace kvt;

Q_DECLARE_METATYPE(Area)

namespace
{

ValueForm formOf(const QString &text, const QString &order)
{
    ValueForm form;
    if (!parseForm(text, &form).isEmpty())
        qFatal("%s", qPrintable(text));
    form.order = *parseWordOrder(order);
    return form;
}

/// Reads elements of four (D) or two digits, parted by blanks.
QVector<quint16> elementsOf(const QString &digits)
{
    QVector<quint16> elements;
    for (const QString &element : digits.split(QLatin1Char(' ')))
        elements.append(element.toUShort(nullptr, 16));
    return elements;
}

} // namespace

class TestValueElements : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void elementsMakeAValueAndBack_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("order");
        QTest::addColumn<Area>("area");
        QTest::addColumn<QString>("elements");
        QTest::addColumn<quint64>("bits");
        const auto row = [](const char *type, const char *order, Area area, const char *elements,
                            quint64 bits) {
            QTest::addRow("%s %s %s", type, order, elements)
                << QString(type) << QString(order) << area << QString(elements) << bits;
        };
        row("u8", "abcd", Area::X, "A5", 0xA5);
        row("s8", "dcba", Area::C, "80", 0x80);
        row("hex", "abcd", Area::X, "0B", 0x0B);
        row("hex", "abcd", Area::D, "0A0B", 0x0A0B);
        row("hex", "badc", Area::D, "0A0B", 0x0B0A);
        for (const char *type : {"u16", "s16", "bcd16"}) {
            row(type, "abcd", Area::D, "1234", 0x1234);
            row(type, "badc", Area::D, "1234", 0x3412);
            row(type, "cdab", Area::D, "1234", 0x1234);
            row(type, "dcba", Area::D, "1234", 0x3412);
            row(type, "abcd", Area::C, "12 34", 0x1234);
            row(type, "badc", Area::C, "12 34", 0x3412);
            row(type, "cdab", Area::C, "12 34", 0x1234);
            row(type, "dcba", Area::C, "12 34", 0x3412);
        }
        for (const char *type : {"u32", "s32", "f32", "bcd32"}) {
            row(type, "abcd", Area::D, "1122 3344", 0x11223344);
            row(type, "badc", Area::D, "1122 3344", 0x22114433);
            row(type, "cdab", Area::D, "1122 3344", 0x33441122);
            row(type, "dcba", Area::D, "1122 3344", 0x44332211);
            row(type, "abcd", Area::C, "11 22 33 44", 0x11223344);
            row(type, "badc", Area::C, "11 22 33 44", 0x22114433);
            row(type, "cdab", Area::C, "11 22 33 44", 0x33441122);
            row(type, "dcba", Area::C, "11 22 33 44", 0x44332211);
        }
        for (const char *type : {"u64", "s64", "f64"}) {
            row(type, "abcd", Area::D, "0102 0304 0506 0708", 0x0102030405060708);
            row(type, "badc", Area::D, "0102 0304 0506 0708", 0x0201040306050807);
            row(type, "cdab", Area::D, "0102 0304 0506 0708", 0x0708050603040102);
            row(type, "dcba", Area::D, "0102 0304 0506 0708", 0x0807060504030201);
            row(type, "abcd", Area::C, "01 02 03 04 05 06 07 08", 0x0102030405060708);
            row(type, "badc", Area::C, "01 02 03 04 05 06 07 08", 0x0201040306050807);
            row(type, "cdab", Area::C, "01 02 03 04 05 06 07 08", 0x0708050603040102);
            row(type, "dcba", Area::C, "01 02 03 04 05 06 07 08", 0x0807060504030201);
        }
        row("f32", "abcd", Area::D, "41AB 3333", 0x41AB3333); // 21.4
        row("f32", "cdab", Area::D, "3333 41AB", 0x41AB3333);
        row("bool", "abcd", Area::D, "0001", 1);
        row("bool", "badc", Area::D, "0100", 1);
        row("bool", "abcd", Area::X, "00", 0);
    }

    void elementsMakeAValueAndBack()
    {
        QFETCH(QString, type);
        QFETCH(QString, order);
        QFETCH(Area, area);
        QFETCH(QString, elements);
        const ValueForm form = formOf(type, order);
        const QVector<quint16> words = elementsOf(elements);
        QCOMPARE(formMisfit(form, area), QString());
        QCOMPARE(elementCount(form, area), words.size());
        const quint64 bits = joinElements(form, area, words.constData());
        QTEST(bits, "bits");
        QVector<quint16> back(words.size(), 0xFFFF);
        splitElements(form, area, bits, back.data());
        QCOMPARE(back, words);
    }

    void anyBitOfABoolCounts()
    {
        const quint16 word = 0x0400;
        QCOMPARE(joinElements(formOf("bool", "abcd"), Area::D, &word), quint64(1));
        QCOMPARE(joinElements(formOf("bool", "abcd"), Area::X, &word), quint64(0));
    }

    void aBitLeavesTheOthersAlone_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("order");
        QTest::addColumn<Area>("area");
        QTest::addColumn<int>("clear");
        QTest::addColumn<int>("set");
        QTest::newRow("X bit 0") << "bit:0"
                                 << "abcd" << Area::X << 0x5A << 0x5B;
        QTest::newRow("X bit 7") << "bit:7"
                                 << "dcba" << Area::X << 0x5A << 0xDA;
        QTest::newRow("D bit 15") << "bit:15"
                                  << "abcd" << Area::D << 0x1234 << 0x9234;
        QTest::newRow("D bit 8") << "bit:8"
                                 << "cdab" << Area::D << 0x1234 << 0x1334;
        QTest::newRow("D bit 8, bytes swapped") << "bit:8"
                                                << "badc" << Area::D << 0x1234 << 0x1235;
    }

    void aBitLeavesTheOthersAlone()
    {
        QFETCH(QString, type);
        QFETCH(QString, order);
        QFETCH(Area, area);
        QFETCH(int, clear);
        QFETCH(int, set);
        const ValueForm form = formOf(type, order);
        auto element = static_cast<quint16>(clear);
        QCOMPARE(joinElements(form, area, &element), quint64(0));
        splitElements(form, area, 1, &element);
        QCOMPARE(int(element), set);
        QCOMPARE(joinElements(form, area, &element), quint64(1));
        splitElements(form, area, 0, &element);
        QCOMPARE(int(element), clear);
    }

    void stringsGoByBytes_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("order");
        QTest::addColumn<Area>("area");
        QTest::addColumn<QString>("elements");
        QTest::addColumn<QByteArray>("bytes");
        const auto row = [](const char *type, const char *order, Area area, const char *elements,
                            const char *bytes) {
            QTest::addRow("%s %s %s", type, order, elements)
                << QString(type) << QString(order) << area << QString(elements)
                << QByteArray(bytes);
        };
        row("string:4", "abcd", Area::D, "5055 4D50", "PUMP");
        row("string:4", "badc", Area::D, "5550 504D", "PUMP");
        row("string:4", "cdab", Area::D, "5055 4D50", "PUMP");
        row("string:4", "dcba", Area::D, "5550 504D", "PUMP");
        row("string:3", "abcd", Area::D, "5055 4D00", "PUM");
        row("string:3", "badc", Area::D, "5550 004D", "PUM");
        row("string:4", "abcd", Area::C, "50 55 4D 50", "PUMP");
        row("string:4", "badc", Area::C, "55 50 50 4D", "PUMP");
        row("string:3", "abcd", Area::C, "50 55 4D", "PUM");
        row("string:3", "badc", Area::C, "55 50 4D", "PUM");
        row("string:1", "abcd", Area::D, "5000", "P");
        row("string:1", "badc", Area::C, "50", "P");
    }

    void stringsGoByBytes()
    {
        QFETCH(QString, type);
        QFETCH(QString, order);
        QFETCH(Area, area);
        QFETCH(QString, elements);
        QFETCH(QByteArray, bytes);
        const ValueForm form = formOf(type, order);
        const QVector<quint16> words = elementsOf(elements);
        QCOMPARE(elementCount(form, area), words.size());
        QCOMPARE(stringBytes(form, area, words.constData()), bytes);
        QVector<quint16> back(words.size(), 0xFFFF);
        putStringBytes(form, area, bytes, back.data());
        QCOMPARE(back, words);
    }

    void aShortTextIsFilledUpAndALongOneCut()
    {
        QVector<quint16> words(2, 0xFFFF);
        putStringBytes(formOf("string:4", "abcd"), Area::D, "P", words.data());
        QCOMPARE(words, (QVector<quint16>{0x5000, 0}));
        putStringBytes(formOf("string:3", "abcd"), Area::D, "PUMPS", words.data());
        QCOMPARE(words, (QVector<quint16>{0x5055, 0x4D00}));
    }

    void everyOrderGivesBackWhatWasTakenApart()
    {
        std::mt19937_64 random(1);
        for (int i = 0; i < 100000; ++i) {
            const quint64 value = random();
            for (const char *order : {"abcd", "badc", "cdab", "dcba"}) {
                ValueForm form;
                form.type = ValueType::U64;
                form.order = *parseWordOrder(QString(order));
                quint16 elements[8] = {};
                const Area area = i % 2 == 0 ? Area::D : Area::C;
                splitElements(form, area, value, elements);
                if (joinElements(form, area, elements) != value)
                    QFAIL(order);
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestValueElements)
#include "tst_value_elements.moc"
