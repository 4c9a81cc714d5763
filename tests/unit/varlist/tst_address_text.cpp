#include "varlist/address_text.h"

#include "tests/support/draw.h"
#include "tests/support/driver_test.h"
#include "tests/support/plain_models.h"
#include "tests/support/record_text.h"
#include "tests/support/row_names.h"

#include <QtTest>

#include <limits>

namespace
{

constexpr int LOWEST = std::numeric_limits<int>::min();
constexpr int HIGHEST = std::numeric_limits<int>::max();

struct Row {
    int area;
    const char *text;
    int address;
};

void addRows(std::initializer_list<Row> rows)
{
    QTest::addColumn<int>("area");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("address");
    for (const Row &row : rows)
        formattedRow("area %d '%s'", row.area, row.text)
            << row.area << QString::fromUtf8(row.text) << row.address;
}

void checkRow()
{
    QFETCH(int, area);
    QFETCH(QString, text);
    QFETCH(int, address);
    QCOMPARE(StringAddressToInt(area, text), address);
    QCOMPARE(PLCAddressChangeIntef(area, text), address);
}

/// A text of up to seven characters drawn from what a host or its user might come up with.
QString randomText(Draw &draw)
{
    static const QString alphabet = QString::fromUtf8("0123456789..........+- \tx,e'") + QChar(0) +
                                    QChar(0x00A0) + QChar(0x0663) + QChar(0xFF11) + QChar(0x2212) +
                                    QChar(0x2009);
    QString text;
    for (int length = draw.below(16); length > 0; --length)
        text.append(alphabet.at(draw.below(alphabet.size())));
    return text;
}

} // namespace

class TestAddressText : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void threePartsMakeTheAddressInAreasXAndD_data()
    {
        addRows({{0, "0.0.0", 0},
                 {0, "0.0.1", 1},
                 {0, "0.1.0", 2},
                 {0, "1.0.0", 32},
                 {0, "1.2.3", 39},
                 {0, "0.15.1", 31},
                 {0, "2.0.0", 64},
                 {1, "0.0.0", 0},
                 {1, "1.2.3", 39},
                 {1, "0.15.1", 31},
                 {1, "2.0.0", 64},
                 {1, "5.2.1", 165}});
    }
    void threePartsMakeTheAddressInAreasXAndD() { checkRow(); }

    void partsMayExceedTheirWeight_data()
    {
        addRows({{0, "0.17.0", 34},
                 {0, "1.1.0", 34},
                 {1, "0.0.100", 100},
                 {1, "0.255.255", 765},
                 {2, "0.0.3.0", 240},
                 {2, "0.1.1.60", 300}});
    }
    void partsMayExceedTheirWeight() { checkRow(); }

    void theFirstPartOfAreaCIsIgnored_data()
    {
        addRows({{2, "0.0.0.0", 0},
                 {2, "9.1.1.5", 245},
                 {2, "0.1.1.5", 245},
                 {2, "x.1.1.5", 245},
                 {2, ".1.1.5", 245},
                 {2, "-5.1.1.5", 245},
                 {2, "2147483647.1.1.5", 245},
                 {2, "0.2.3.4", 564}});
    }
    void theFirstPartOfAreaCIsIgnored() { checkRow(); }

    void badPartsCountAsZero_data()
    {
        addRows({{1, "1.x.3", 35},
                 {1, "1..3", 35},
                 {1, "x.2.3", 7},
                 {1, "1.2.x", 36},
                 {1, ".2.3", 7},
                 {1, "1.2.", 36},
                 {0, "..", 0},
                 {0, "a.b.c", 0},
                 {0, "0x5.0.1", 1},
                 {0, "1e1.0.1", 1},
                 {0, "5a.0.1", 1},
                 {0, "--5.0.1", 1},
                 {0, "-.0.1", 1},
                 {0, "1 2.0.1", 1},
                 {0, "2147483648.0.1", 1},
                 {0, "99999999999999999999.0.1", 1},
                 {0, "-2147483649.0.1", 1},
                 {2, "0.x.1.5", 85},
                 {2, "0.1.x.5", 165},
                 {2, "0.1.1.x", 240},
                 {2, "...", 0}});
    }
    void badPartsCountAsZero() { checkRow(); }

    void signsBlanksAndLeadingZerosAreAcceptedInANumber_data()
    {
        addRows({{0, "+5.0.0", 160},
                 {0, " 5.0.0", 160},
                 {0, "5 .0.0", 160},
                 {0, "\t5\n.0.0", 160},
                 {0, "007.0.0", 224},
                 {0, "-0.0.1", 1},
                 {0, "000000000000000000005.0.0", 160}});
    }
    void signsBlanksAndLeadingZerosAreAcceptedInANumber() { checkRow(); }

    void negativePartsMakeNegativeAddresses_data()
    {
        addRows({{0, "-1.0.0", -32},
                 {1, "0.-1.0", -2},
                 {1, "0.0.-1", -1},
                 {1, "1.-16.0", 0},
                 {2, "0.-1.0.0", -160},
                 {2, "0.0.-1.0", -80},
                 {2, "0.0.0.-7", -7},
                 {2, "0.-1.0.200", 40}});
    }
    void negativePartsMakeNegativeAddresses() { checkRow(); }

    void furtherPartsAreIgnored_data()
    {
        addRows({{0, "1.2.3.4", 39},
                 {1, "1.2.3.4.5.6.7.8.9", 39},
                 {1, "1.2.3.", 39},
                 {1, "1.2.3.x", 39},
                 {2, "9.1.1.5.7", 245}});
    }
    void furtherPartsAreIgnored() { checkRow(); }

    void missingPartsCountAsZero_data()
    {
        addRows({{0, "", 0},
                 {0, "5", 160},
                 {1, "5", 160},
                 {1, "5.1", 162},
                 {1, ".", 0},
                 {1, "1,2,3", 0},
                 {2, "", 0},
                 {2, "1", 0},
                 {2, "1.2", 320},
                 {2, "1.2.3", 560}});
    }
    void missingPartsCountAsZero() { checkRow(); }

    void theSumWrapsAt32Bits_data()
    {
        addRows({{0, "0.0.2147483647", HIGHEST},
                 {0, "0.0.-2147483648", LOWEST},
                 {0, "67108864.0.0", LOWEST},
                 {0, "2147483647.0.0", -32},
                 {1, "134217728.0.3", 3},
                 {1, "0.1.2147483647", -2147483647},
                 {1, "-2147483648.0.1", 1},
                 {2, "0.13421773.0.0", -2147483616},
                 {2, "0.26843546.0.0", 64},
                 {2, "0.0.26843546.0", -2147483616},
                 {2, "0.0.53687092.0", 64},
                 {2, "0.0.1.2147483647", -2147483569}});
    }
    void theSumWrapsAt32Bits() { checkRow(); }

    void anUnknownAreaGivesZero_data()
    {
        addRows({{3, "1.2.3.4", 0},
                 {7, "1.2.3", 0},
                 {-1, "1.2.3.4", 0},
                 {255, "-1.0.0", 0},
                 {HIGHEST, "1.2.3.4", 0},
                 {LOWEST, "1.2.3.4", 0}});
    }
    void anUnknownAreaGivesZero() { checkRow(); }

    void anEmbeddedNulIsABadDigit()
    {
        const QString text = QString("1") + QChar(0) + ".2.3";
        QCOMPARE(StringAddressToInt(AREA_X, text), plainAddress(AREA_X, text));
        QCOMPARE(StringAddressToInt(AREA_C, QString(QChar(0)) + ".1.1.5"), 245);
    }

    void aVeryLongTextIsHarmless()
    {
        QCOMPARE(StringAddressToInt(AREA_X, QString(200000, QLatin1Char('.'))), 0);
        QCOMPARE(StringAddressToInt(AREA_X, QString(200000, QLatin1Char('9'))), 0);
        QCOMPARE(StringAddressToInt(AREA_X, QString(200000, QLatin1Char('0')) + "1.0.0"), 32);
    }

    void bothFunctionsAgreeWithThePlainConversionOnRandomTexts()
    {
        Draw draw(20240311);
        for (int round = 0; round < 40000; ++round) {
            const QString text = randomText(draw);
            const int area = draw.below(5) - 1;
            const int expected = plainAddress(area, text);
            const bool same = StringAddressToInt(area, text) == expected &&
                              PLCAddressChangeIntef(area, text) == expected;
            QVERIFY2(same, qPrintable(QString("area %1 text '%2' hex %3")
                                          .arg(area)
                                          .arg(text, QString::fromLatin1(text.toUtf8().toHex()))));
        }
    }

    void theConversionTakesNoLockAndTouchesNothing()
    {
        PLC_driver.comInfo = nullptr;
        PLC_driver.readList.append(filledRecord());
        {
            const AllLocksHeld held;
            QCOMPARE(StringAddressToInt(AREA_X, QString("1.2.3")), 39);
            QCOMPARE(PLCAddressChangeIntef(AREA_C, QString("9.1.1.5")), 245);
        }
        QCOMPARE(recordTexts(PLC_driver.readList), QStringList(recordText(filledRecord())));
        QCOMPARE(wordsOf(info_), wordsOf(ComInfo()));
    }
};

QTEST_APPLESS_MAIN(TestAddressText)
#include "tst_address_text.moc"
