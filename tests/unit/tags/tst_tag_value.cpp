// Values of tags: bytes to text and back.
#include "tags/tag_value.h"

#include <QtTest>

using namespace kvt;

Q_DECLARE_METATYPE(Area)
Q_DECLARE_METATYPE(ValueType)

class TestTagValue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bytesBecomeText_data()
    {
        QTest::addColumn<Area>("area");
        QTest::addColumn<ValueType>("type");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        const auto hex = [](const char *digits) { return QByteArray::fromHex(digits); };
        QTest::newRow("X bool 00") << Area::X << ValueType::Bool << hex("00") << "0";
        QTest::newRow("X bool FF") << Area::X << ValueType::Bool << hex("FF") << "1";
        QTest::newRow("X bool 00 01: the second is not its own")
            << Area::X << ValueType::Bool << hex("0001") << "0";
        QTest::newRow("D bool 00 01") << Area::D << ValueType::Bool << hex("0001") << "1";
        QTest::newRow("X u8 FF") << Area::X << ValueType::U8 << hex("FF") << "255";
        QTest::newRow("C u8 80") << Area::C << ValueType::U8 << hex("80") << "128";
        QTest::newRow("D u16 34 12") << Area::D << ValueType::U16 << hex("3412") << "4660";
        QTest::newRow("D u16 FF FF") << Area::D << ValueType::U16 << hex("FFFF") << "65535";
        QTest::newRow("D s16 FF FF") << Area::D << ValueType::S16 << hex("FFFF") << "-1";
        QTest::newRow("D s16 00 80") << Area::D << ValueType::S16 << hex("0080") << "-32768";
        QTest::newRow("D hex 0B 0A") << Area::D << ValueType::Hex << hex("0B0A") << "0x0A0B";
        QTest::newRow("X hex 0B") << Area::X << ValueType::Hex << hex("0B") << "0x0B";
        QTest::newRow("X without bytes") << Area::X << ValueType::U8 << QByteArray() << "";
        QTest::newRow("D with one byte") << Area::D << ValueType::U16 << hex("34") << "";
    }

    void bytesBecomeText()
    {
        QFETCH(Area, area);
        QFETCH(ValueType, type);
        QFETCH(QByteArray, bytes);
        QTEST(formatValue(area, type, bytes), "text");
    }

    void textBecomesBytes_data()
    {
        QTest::addColumn<Area>("area");
        QTest::addColumn<ValueType>("type");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("hex");
        QTest::newRow("bool 1") << Area::X << ValueType::Bool << "1" << QByteArray("01");
        QTest::newRow("bool on") << Area::X << ValueType::Bool << "On" << QByteArray("01");
        QTest::newRow("bool true") << Area::X << ValueType::Bool << "true" << QByteArray("01");
        QTest::newRow("bool false") << Area::D << ValueType::Bool << "FALSE" << QByteArray("0000");
        QTest::newRow("bool off") << Area::X << ValueType::Bool << " off " << QByteArray("00");
        QTest::newRow("u8 255") << Area::X << ValueType::U8 << "255" << QByteArray("ff");
        QTest::newRow("u16 4660") << Area::D << ValueType::U16 << "4660" << QByteArray("3412");
        QTest::newRow("s16 -1") << Area::D << ValueType::S16 << "-1" << QByteArray("ffff");
        QTest::newRow("s16 -32768") << Area::D << ValueType::S16 << "-32768" << QByteArray("0080");
        QTest::newRow("hex 0x0A0B") << Area::D << ValueType::Hex << "0x0A0B" << QByteArray("0b0a");
        QTest::newRow("u16 0x10") << Area::D << ValueType::U16 << "0x10" << QByteArray("1000");
        QTest::newRow("s16 0X7FFF") << Area::D << ValueType::S16 << "0X7FFF" << QByteArray("ff7f");
        QTest::newRow("hex 10") << Area::X << ValueType::Hex << "10" << QByteArray("10");
        QTest::newRow("hex f") << Area::X << ValueType::Hex << "f" << QByteArray("0f");
    }

    void textBecomesBytes()
    {
        QFETCH(Area, area);
        QFETCH(ValueType, type);
        QFETCH(QString, text);
        const ParsedValue value = parseValue(area, type, text);
        QCOMPARE(value.error, QString());
        QTEST(value.bytes.toHex(), "hex");
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
                                << "300 does not fit u8 (0 to 255)";
        QTest::newRow("u8 -1") << Area::X << ValueType::U8 << "-1"
                               << "-1 does not fit u8 (0 to 255)";
        QTest::newRow("bool 2") << Area::X << ValueType::Bool << "2"
                                << "2 does not fit bool (0 to 1)";
        QTest::newRow("s16 32768") << Area::D << ValueType::S16 << "32768"
                                   << "32768 does not fit s16 (-32768 to 32767)";
        QTest::newRow("u16 of twelve digits") << Area::D << ValueType::U16 << "100000000000"
                                              << "100000000000 does not fit u16 (0 to 65535)";
        QTest::newRow("hex 100 in a byte") << Area::X << ValueType::Hex << "0x100"
                                           << "0x100 does not fit hex (0 to 0xFF)";
        QTest::newRow("hex 10000") << Area::D << ValueType::Hex << "10000"
                                   << "10000 does not fit hex (0 to 0xFFFF)";
        QTest::newRow("words") << Area::D << ValueType::U16 << "ten"
                               << "\"ten\" is not a u16 value";
        QTest::newRow("fraction") << Area::D << ValueType::S16 << "1.5"
                                  << "\"1.5\" is not a s16 value";
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
        QTest::newRow("hexadecimal bool") << Area::X << ValueType::Bool << "0x1"
                                          << "\"0x1\" is not a bool value";
    }

    void badTextIsRefused()
    {
        QFETCH(Area, area);
        QFETCH(ValueType, type);
        QFETCH(QString, text);
        const ParsedValue value = parseValue(area, type, text);
        QCOMPARE(value.bytes, QByteArray());
        QTEST(value.error, "error");
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
        for (int word = 0; word <= 0xFFFF; ++word) {
            QByteArray bytes;
            bytes.append(static_cast<char>(word & 0xFF)).append(static_cast<char>(word >> 8));
            const QString text = formatValue(Area::D, type, bytes);
            if (parseValue(Area::D, type, text).bytes != bytes)
                QFAIL(qPrintable(text));
        }
    }
};

QTEST_GUILESS_MAIN(TestTagValue)
#include "tst_tag_value.moc"
