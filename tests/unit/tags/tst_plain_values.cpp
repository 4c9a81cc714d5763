// Values of one element that mean nothing but themselves: elements to text and back.
#include "tags/value_converter.h"

#include <QtTest>

using namespace kvt;

Q_DECLARE_METATYPE(Area)
Q_DECLARE_METATYPE(ValueType)

namespace
{

ValueConverter plainConverter(Area area, ValueType type)
{
    QVector<MeaningProblem> problems;
    return *ValueConverter::make(ValueForm(type), area, MeaningTexts(), &problems);
}

QString textOf(Area area, ValueType type, quint16 element)
{
    return plainConverter(area, type).textOf(&element);
}

} // namespace

class TestPlainValues : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void elementsBecomeText_data()
    {
        QTest::addColumn<Area>("area");
        QTest::addColumn<ValueType>("type");
        QTest::addColumn<int>("element");
        QTest::addColumn<QString>("text");
        QTest::newRow("X bool 00") << Area::X << ValueType::Bool << 0x00 << "0";
        QTest::newRow("X bool FF") << Area::X << ValueType::Bool << 0xFF << "1";
        QTest::newRow("D bool 0100") << Area::D << ValueType::Bool << 0x0100 << "1";
        QTest::newRow("X u8 FF") << Area::X << ValueType::U8 << 0xFF << "255";
        QTest::newRow("C u8 80") << Area::C << ValueType::U8 << 0x80 << "128";
        QTest::newRow("D u16 1234") << Area::D << ValueType::U16 << 0x1234 << "4660";
        QTest::newRow("D u16 FFFF") << Area::D << ValueType::U16 << 0xFFFF << "65535";
        QTest::newRow("D s16 FFFF") << Area::D << ValueType::S16 << 0xFFFF << "-1";
        QTest::newRow("D s16 8000") << Area::D << ValueType::S16 << 0x8000 << "-32768";
        QTest::newRow("D hex 0A0B") << Area::D << ValueType::Hex << 0x0A0B << "0x0A0B";
        QTest::newRow("X hex 0B") << Area::X << ValueType::Hex << 0x0B << "0x0B";
    }

    void elementsBecomeText()
    {
        QFETCH(Area, area);
        QFETCH(ValueType, type);
        QFETCH(int, element);
        QTEST(textOf(area, type, static_cast<quint16>(element)), "text");
    }

    void textBecomesAnElement_data()
    {
        QTest::addColumn<Area>("area");
        QTest::addColumn<ValueType>("type");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("element");
        QTest::newRow("bool 1") << Area::X << ValueType::Bool << "1" << 0x01;
        QTest::newRow("bool on") << Area::X << ValueType::Bool << "On" << 0x01;
        QTest::newRow("bool true") << Area::X << ValueType::Bool << "true" << 0x01;
        QTest::newRow("bool false") << Area::D << ValueType::Bool << "FALSE" << 0x0000;
        QTest::newRow("bool off") << Area::X << ValueType::Bool << " off " << 0x00;
        QTest::newRow("u8 255") << Area::X << ValueType::U8 << "255" << 0xFF;
        QTest::newRow("u16 4660") << Area::D << ValueType::U16 << "4660" << 0x1234;
        QTest::newRow("s16 -1") << Area::D << ValueType::S16 << "-1" << 0xFFFF;
        QTest::newRow("s16 -32768") << Area::D << ValueType::S16 << "-32768" << 0x8000;
        QTest::newRow("hex 0x0A0B") << Area::D << ValueType::Hex << "0x0A0B" << 0x0A0B;
        QTest::newRow("u16 0x10") << Area::D << ValueType::U16 << "0x10" << 0x0010;
        QTest::newRow("s16 0X7FFF") << Area::D << ValueType::S16 << "0X7FFF" << 0x7FFF;
        QTest::newRow("hex 10") << Area::X << ValueType::Hex << "10" << 0x10;
        QTest::newRow("hex f") << Area::X << ValueType::Hex << "f" << 0x0F;
    }

    void textBecomesAnElement()
    {
        QFETCH(Area, area);
        QFETCH(ValueType, type);
        QFETCH(QString, text);
        quint16 element = 0xFFFF;
        QCOMPARE(plainConverter(area, type).enterInto(text, &element), QString());
        QTEST(static_cast<int>(element), "element");
    }

    void badTextIsRefused_data()
    {
        QTest::addColumn<Area>("area");
        QTest::addColumn<ValueType>("type");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("error");
        QTest::newRow("nothing") << Area::X << ValueType::U8 << " "
                                 << "a value is missing";
        QTest::newRow("u8 300") << Area::X << ValueType::U8 << "300"
                                << "300 does not fit u8 (0 to 255); the nearest is 255";
        QTest::newRow("u8 -1") << Area::X << ValueType::U8 << "-1"
                               << "-1 does not fit u8 (0 to 255); the nearest is 0";
        QTest::newRow("bool 2") << Area::X << ValueType::Bool << "2"
                                << "2 does not fit bool (0 to 1)";
        QTest::newRow("s16 32768")
            << Area::D << ValueType::S16 << "32768"
            << "32768 does not fit s16 (-32768 to 32767); the nearest is 32767";
        QTest::newRow("u16 of twelve digits")
            << Area::D << ValueType::U16 << "100000000000"
            << "100000000000 does not fit u16 (0 to 65535); the nearest is 65535";
        QTest::newRow("hex 100 in a byte") << Area::X << ValueType::Hex << "0x100"
                                           << "0x100 does not fit hex (0 to 0xFF)";
        QTest::newRow("hex 10000") << Area::D << ValueType::Hex << "10000"
                                   << "10000 does not fit hex (0 to 0xFFFF)";
        QTest::newRow("words") << Area::D << ValueType::U16 << "ten"
                               << "\"ten\" is not a u16 value";
        QTest::newRow("fraction") << Area::D << ValueType::S16 << "1.5"
                                  << "1.5 cannot be had exactly; the nearest is 1";
        QTest::newRow("sign alone") << Area::D << ValueType::S16 << "-"
                                    << "\"-\" is not a s16 value";
        QTest::newRow("plus") << Area::X << ValueType::U8 << "+5"
                              << "\"+5\" is not a u8 value";
        QTest::newRow("0x alone") << Area::X << ValueType::Hex << "0x"
                                  << "\"0x\" is not a hex value";
        QTest::newRow("negative hex") << Area::X << ValueType::Hex << "-1"
                                      << "\"-1\" is not a hex value";
        QTest::newRow("true for a number") << Area::X << ValueType::U8 << "true"
                                           << "\"true\" is not a u8 value but one of type bool";
        QTest::newRow("hexadecimal out of range") << Area::D << ValueType::S16 << "0x8000"
                                                  << "0x8000 does not fit s16 (-32768 to 32767)";
        QTest::newRow("hexadecimal bool")
            << Area::X << ValueType::Bool << "0x1"
            << "\"0x1\" is not a bool value (0, 1, off, on, false or true)";
    }

    void badTextIsRefused()
    {
        QFETCH(Area, area);
        QFETCH(ValueType, type);
        QFETCH(QString, text);
        quint16 element = 0xA5;
        QTEST(plainConverter(area, type).enterInto(text, &element), "error");
        QCOMPARE(element, quint16(0xA5));
    }

    void everyWordComesBackFromItsText_data()
    {
        QTest::addColumn<ValueType>("type");
        QTest::newRow("u16") << ValueType::U16;
        QTest::newRow("s16") << ValueType::S16;
        QTest::newRow("hex") << ValueType::Hex;
    }

    void everyWordComesBackFromItsText()
    {
        QFETCH(ValueType, type);
        const ValueConverter converter = plainConverter(Area::D, type);
        for (int word = 0; word <= 0xFFFF; ++word) {
            const auto element = static_cast<quint16>(word);
            quint16 back = static_cast<quint16>(~element);
            const QString text = converter.textOf(&element);
            if (!converter.enterInto(text, &back).isEmpty() || back != element)
                QFAIL(qPrintable(text));
        }
    }
};

QTEST_GUILESS_MAIN(TestPlainValues)
#include "tst_plain_values.moc"
