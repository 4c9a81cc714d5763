// Address texts: ranges, address bytes and numbers.
#include "tags/tag_address.h"

#include <QtTest>

using namespace kvt;

Q_DECLARE_METATYPE(Area)

class TestTagAddress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void goodAddressesGiveBytesAndNumber_data()
    {
        QTest::addColumn<Area>("area");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("readByte");
        QTest::addColumn<int>("writeByte");
        QTest::addColumn<int>("number");
        QTest::addColumn<int>("entry");
        QTest::newRow("D 5.2.1") << Area::D << "5.2.1" << 0x28 << 0x29 << 165 << 165;
        QTest::newRow("X 0.0.0") << Area::X << "0.0.0" << 0x00 << 0x01 << 0 << 0;
        QTest::newRow("X 255.15.1") << Area::X << "255.15.1" << 0xF8 << 0xF9 << 8191 << 8191;
        QTest::newRow("D 5.0.2") << Area::D << "5.0.2" << 0x02 << 0x02 << 162 << 162;
        QTest::newRow("D 0.0.255") << Area::D << "0.0.255" << 0xFF << 0xFF << 255 << 255;
        QTest::newRow("C 9.1.1.5") << Area::C << "9.1.1.5" << 0x18 << 0x19 << 245 << 240;
        QTest::newRow("C 0.0.0.69") << Area::C << "0.0.0.69" << 0x00 << 0x01 << 69 << 0;
        QTest::newRow("D 18.1.0") << Area::D << "18.1.0" << 0x10 << 0x11 << 578 << 578;
        QTest::newRow("D 18.0.16") << Area::D << "18.0.16" << 0x10 << 0x10 << 592 << 592;
        QTest::newRow("C 18.1.1.0") << Area::C << "18.1.1.0" << 0x18 << 0x19 << 240 << 240;
        QTest::newRow("D 007.01.0") << Area::D << "007.01.0" << 0x10 << 0x11 << 226 << 226;
    }

    void goodAddressesGiveBytesAndNumber()
    {
        QFETCH(Area, area);
        QFETCH(QString, text);
        TagAddress address;
        QCOMPARE(parseTagAddress(area, text, &address), QString());
        QTEST(static_cast<int>(readAddressByte(address)), "readByte");
        QTEST(static_cast<int>(writeAddressByte(address)), "writeByte");
        QTEST(numericAddress(area, address), "number");
        QTEST(readListAddress(area, address), "entry");
        Tag tag;
        tag.area = area;
        tag.address = text;
        QTEST(numericAddress(tag), "number");
    }

    void badAddressesAreNamed_data()
    {
        QTest::addColumn<Area>("area");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("error");
        QTest::newRow("nothing") << Area::D << ""
                                 << "\"\" has 1 part; area D takes 3";
        QTest::newRow("too few parts") << Area::X << "5.2"
                                       << "\"5.2\" has 2 parts; area X takes 3";
        QTest::newRow("too many parts") << Area::X << "5.2.1.0"
                                        << "\"5.2.1.0\" has 4 parts; area X takes 3";
        QTest::newRow("C with three") << Area::C << "5.2.1"
                                      << "\"5.2.1\" has 3 parts; area C takes 4";
        QTest::newRow("empty part") << Area::D << "1..2"
                                    << "field 2 of \"1..2\" is not a decimal number";
        QTest::newRow("sign") << Area::D << "-1.0.0"
                              << "field 1 of \"-1.0.0\" is not a decimal number";
        QTest::newRow("plus") << Area::D << "1.0.+1"
                              << "field 3 of \"1.0.+1\" is not a decimal number";
        QTest::newRow("blank") << Area::D << "1. 2.3"
                               << "field 2 of \"1. 2.3\" is not a decimal number";
        QTest::newRow("letters") << Area::D << "1.x.3"
                                 << "field 2 of \"1.x.3\" is not a decimal number";
        QTest::newRow("percent") << Area::D << "%2.0.0"
                                 << "field 1 of \"%2.0.0\" is not a decimal number";
        QTest::newRow("other digits")
            << Area::D << QString::fromUtf8("\xD9\xA1.0.0")
            << QString::fromUtf8("field 1 of \"\xD9\xA1.0.0\" is not a decimal number");
        QTest::newRow("a") << Area::D << "256.0.0"
                           << "field 1 is 256, not 0 to 255";
        QTest::newRow("a, huge") << Area::D << "99999999999.0.0"
                                 << "field 1 is 99999999999, not 0 to 255";
        QTest::newRow("b") << Area::D << "0.16.0"
                           << "field 2 is 16, not 0 to 15";
        QTest::newRow("c") << Area::X << "0.0.256"
                           << "field 3 is 256, not 0 to 255";
        QTest::newRow("c beside another block")
            << Area::D << "5.2.256"
            << "field 3 is 256, not 0 or 1 (2 to 255 where field 2 is 0)";
        const QString date = "; did a spreadsheet make a date of it? Format the column as text";
        QTest::newRow("German date")
            << Area::D << "05.02.2001"
            << "field 3 is 2001, not 0 or 1 (2 to 255 where field 2 is 0)" + date;
        QTest::newRow("date, year first") << Area::X << "2001-02-05"
                                          << "\"2001-02-05\" has 1 part; area X takes 3" + date;
        QTest::newRow("American date") << Area::D << "5/2/01"
                                       << "\"5/2/01\" has 1 part; area D takes 3" + date;
        QTest::newRow("date with a month's name")
            << Area::D << "05-Feb-01"
            << "\"05-Feb-01\" has 1 part; area D takes 3" + date;
        QTest::newRow("c of C") << Area::C << "0.0.2.0"
                                << "field 3 is 2, not 0 to 1";
        QTest::newRow("d") << Area::C << "0.0.1.70"
                           << "field 4 is 70, not 0 to 69";
        QTest::newRow("b beside an address byte")
            << Area::D << "5.2.3"
            << "field 2 must be 0 when field 3 is 2 or more: it would not be sent";
        const QString command = "a read of it is on the line the command D 18.1.%1, which the PLC "
                                "would carry out";
        QTest::newRow("read of D that commands") << Area::D << "18.0.17" << command.arg(0);
        QTest::newRow("read of X that commands") << Area::X << "018.00.25" << command.arg(1);
    }

    void badAddressesAreNamed()
    {
        QFETCH(Area, area);
        QFETCH(QString, text);
        TagAddress address;
        QTEST(parseTagAddress(area, text, &address), "error");
    }

    void onlySomeWritesAreCommands()
    {
        QVERIFY(isCommand(Area::D, QStringLiteral("18.1.0")));
        QVERIFY(isCommand(Area::D, QStringLiteral("18.1.1")));
        QVERIFY(!isCommand(Area::D, QStringLiteral("18.01.0")));
        QVERIFY(!isCommand(Area::D, QStringLiteral("18.10.0")));
        QVERIFY(!isCommand(Area::X, QStringLiteral("18.1.0")));
    }

    void aTagWithABadAddressHasNoNumber()
    {
        Tag tag;
        tag.address = QStringLiteral("1.2");
        QCOMPARE(numericAddress(tag), -1);
    }
};

QTEST_GUILESS_MAIN(TestTagAddress)
#include "tst_tag_address.moc"
