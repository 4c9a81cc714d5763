// The reading of address texts and the building of frames against plain ones made of QString's own
// split, toInt and arg, over millions of texts.
#include "driver/entry_points.h"
#include "protocol/read_frames.h"
#include "protocol/write_frames.h"
#include "varlist/address_text.h"

#include "tests/support/draw.h"
#include "tests/support/driver_test.h"
#include "tests/support/plain_models.h"

#include <QtTest>

#include <limits>

namespace
{

constexpr int TEXTS = draws(2000000);
constexpr int FRAMES = draws(200000);

quint16 blockSelect[50001] = {};

QString twoDigits(int value)
{
    return QString("%1").arg(value & 0xFF, 2, 16, QLatin1Char('0')).toUpper();
}

QByteArray plainFrame(const RW_VAR &var, int writeBit, const QString &valueDigits)
{
    const QStringList parts = plainParts(var.addressText);
    const int nibble = var.areaType == AREA_C ? blockSelect[50000] : plainPart(parts, 1);
    const int selector = plainPart(parts, 2) & 0xFF;
    int address = selector;
    if (selector < 2)
        address = (nibble & 0x0F) * 16 + selector * 8 + writeBit;
    const QString digits =
        twoDigits(var.station) + twoDigits(plainPart(parts, 0)) + twoDigits(address) + valueDigits;
    return "\x05" + digits.toLatin1() + "\r";
}

QByteArray plainReadFrame(const RW_VAR &var)
{
    return plainFrame(var, 0, QString());
}

QByteArray plainWriteFrame(const RW_VAR &var)
{
    const QByteArray data = var.data + QByteArray(2, '\0');
    const QString low = twoDigits(data.at(0));
    const QString high = twoDigits(data.at(1));
    const QStringList parts = plainParts(var.addressText);
    if (var.areaType == AREA_X)
        return plainFrame(var, 1, low);
    if (parts.size() > 1 && parts.at(0) == QLatin1String("18") && parts.at(1) == QLatin1String("1"))
        return plainFrame(var, 1, QString());
    return plainFrame(var, 1, high + low);
}

QString digits(Draw &draw, int count)
{
    QString text;
    for (int i = 0; i < count; ++i)
        text.append(QChar('0' + draw.below(10)));
    return text;
}

QString oddPart(Draw &draw)
{
    static const QString parts[] = {QString(),
                                    " 5",
                                    "5 ",
                                    "+5",
                                    "-5",
                                    "--5",
                                    "+ 5",
                                    "5-",
                                    "5\t",
                                    "\n5",
                                    "5 5",
                                    "x",
                                    "0x10",
                                    "1e3",
                                    "2147483647",
                                    "2147483648",
                                    "-2147483648",
                                    "-2147483649",
                                    "4294967296",
                                    "007",
                                    "0000000000012",
                                    "999999999",
                                    "1000000000",
                                    "9999999999",
                                    "99999999999999999999",
                                    "5,5",
                                    "1,000",
                                    "18",
                                    "018",
                                    "18 ",
                                    QString(QChar(0)),
                                    "5" + QString(QChar(0)),
                                    QString(QChar(0x0665)),
                                    QString(QChar(0xFF15)),
                                    QString(QChar(0x00A0)) + "5",
                                    "5" + QString(QChar(0x2003)),
                                    QString(QChar(0x2212)) + "5",
                                    QString(QChar(0xD835)),
                                    "/",
                                    ":"};
    return draw.of(parts);
}

QString noise(Draw &draw)
{
    static const char alphabet[] = "0123456789+- .a/:";
    QString text;
    for (int i = draw.below(12); i > 0; --i)
        text.append(QLatin1Char(alphabet[draw.below(sizeof alphabet - 1)]));
    return text;
}

QString addressText(Draw &draw)
{
    if (draw.onceIn(1000))
        return QString();
    if (draw.onceIn(10))
        return noise(draw);
    const int parts = draw.onceIn(4) ? draw.below(9) : 3 + draw.below(2);
    QString text;
    for (int i = 0; i < parts; ++i) {
        if (i > 0)
            text.append(QLatin1Char('.'));
        text.append(draw.onceIn(4) ? oddPart(draw) : digits(draw, 1 + draw.below(4)));
    }
    return text;
}

RW_VAR request(Draw &draw)
{
    RW_VAR var;
    var.areaType = draw.below(3);
    var.station = draw.below(600) - 100;
    var.addressText = addressText(draw);
    for (int i = draw.below(4); i > 0; --i)
        var.data.append(static_cast<char>(draw.below(256)));
    return var;
}

QByteArray queuedFrame()
{
    return PLC_driver.pendingFrames.takeFirst().frame;
}

} // namespace

class TestQuickPathsAddresses : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void everyTextMeansWhatSplitAndToIntSay()
    {
        static const int areas[] = {0, 0, 1, 1, 2, 2, 3, -1, std::numeric_limits<int>::min()};
        Draw draw(20111);
        for (int i = 0; i < TEXTS; ++i) {
            const QString text = addressText(draw);
            const int area = draw.of(areas);
            const int expected = plainAddress(area, text);
            const bool same = StringAddressToInt(area, text) == expected &&
                              PLCAddressChangeIntef(area, text) == expected;
            QVERIFY2(same, qPrintable(QString("area %1, '%2'").arg(area).arg(text)));
        }
    }

    void everyFrameIsTheOneMadeOfTexts()
    {
        LW = blockSelect;
        Draw draw(20112);
        for (int i = 0; i < FRAMES; ++i) {
            RW_VAR var = request(draw);
            blockSelect[50000] = static_cast<quint16>(draw.below(0x10000));
            ReadRegister(&var);
            QCOMPARE(queuedFrame(), plainReadFrame(var));
            if (var.areaType == AREA_C)
                continue;
            var.areaType == AREA_X ? WriteAnalog_X(&var) : WriteAnalog_D(&var);
            QCOMPARE(queuedFrame(), plainWriteFrame(var));
        }
    }
};

QTEST_APPLESS_MAIN(TestQuickPathsAddresses)
#include "tst_quick_paths_addresses.moc"
