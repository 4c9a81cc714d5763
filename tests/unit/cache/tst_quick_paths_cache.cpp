// The cache against a plain one that is searched from the front at every access, while others
// change the driver's list behind its back.
#include "cache/host_data.h"
#include "cache/value_cache.h"
#include "protocol/frame_codec.h"
#include "protocol/reply_decoding.h"

#include "tests/support/draw.h"
#include "tests/support/driver_test.h"
#include "tests/support/plain_models.h"
#include "tests/support/record_text.h"

#include <QtTest>

#include <limits>

namespace
{

constexpr int STEPS = draws(400000);

// So many steps lie between two comparisons of the whole list.
constexpr int STEPS_BETWEEN = 50;

CacheKey drawKey(Draw &draw)
{
    static const int areas[] = {AREA_X, AREA_D, AREA_C, 7};
    static const int origins[] = {0, 0, 0, 100, std::numeric_limits<int>::max() - 20, -40};
    return CacheKey{1 + draw.below(2), draw.of(areas), draw.of(origins) + draw.below(20)};
}

// One of the ways in which others may treat the list; keys stay unique.
void changeList(Draw &draw, QList<EXTENDVAR> &records)
{
    const int size = records.size();
    switch (draw.below(7)) {
    case 0:
        records.clear();
        break;
    case 1: // emptied and filled again in another order
        for (int i = 0; i < size; ++i)
            records.move(draw.below(size), draw.below(size));
        break;
    case 2: // shortened
        records = records.mid(0, draw.below(size + 1));
        break;
    case 3:
        records = records.mid(draw.below(size + 1));
        break;
    case 4:
        if (size > 0)
            records.removeAt(draw.below(size));
        break;
    case 5:
        if (size > 1)
            records.move(0, size - 1);
        break;
    default: { // a record given another key, or a new one put in between
        PlainCache known{records};
        const CacheKey key = drawKey(draw);
        if (known.find(key.station, key.areaType, key.address) < size)
            break;
        const EXTENDVAR record = {key.station, key.areaType, key.address, draw.bytes(2)};
        if (size > 0 && draw.onceIn(2))
            records[draw.below(size)] = record;
        else
            records.insert(draw.below(size + 1), record);
    }
    }
}

} // namespace

class TestQuickPathsCache : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void everyAccessIsThatOfASearchFromTheFront()
    {
        Draw draw(20113);
        for (int i = 0; i < STEPS; ++i) {
            if (draw.onceIn(100))
                changeBoth(draw);
            QVERIFY2(step(draw), qPrintable(QString("step %1").arg(i)));
            if (i % STEPS_BETWEEN == 0)
                QCOMPARE(cacheRecords(), cacheTexts(plain_.records));
        }
    }

private:
    void prepare() override { plain_.records.clear(); }

    // The driver's list is a deep copy: sharing it would keep either side from changing its own.
    void changeBoth(Draw &draw)
    {
        changeList(draw, plain_.records);
        PLC_driver.extendVars.clear();
        for (const EXTENDVAR &record : plain_.records)
            PLC_driver.extendVars.append(record);
    }

    bool step(Draw &draw)
    {
        const CacheKey key = drawKey(draw);
        switch (draw.below(20)) {
        case 0:
            return storeElements(draw, key);
        case 1:
            return decodeReply(draw, key);
        case 2:
            return readElements(draw, key);
        case 3:
        case 4:
        case 5:
            return readOne(key);
        default:
            return ExtendFindSameVar(key.station, key.areaType, key.address) ==
                   plain_.find(key.station, key.areaType, key.address);
        }
    }

    bool storeElements(Draw &draw, const CacheKey &key)
    {
        RW_VAR var;
        var.station = key.station;
        var.areaType = key.areaType;
        var.address = key.address;
        var.count = draw.below(12) - 1;
        var.data = draw.bytes(draw.below(24));
        WriteDataToLocal(&var);
        if (key.areaType == AREA_X || key.areaType == AREA_D)
            plain_.store(var);
        return true;
    }

    bool decodeReply(Draw &draw, const CacheKey &key)
    {
        Protocol request;
        request.builderParam1 = 3;
        request.var.station = key.station;
        request.var.areaType = key.areaType;
        request.var.address = key.address;
        PLC_driver.pendingFrames.clear();
        PLC_driver.pendingFrames.append(request);
        QByteArray reply = draw.bytes(draw.onceIn(3) ? draw.below(150) : 144);
        SaveToLocalDataErea(&reply);
        storePlain(key, reply + QByteArray(160, '\0'), reply.size());
        return true;
    }

    // `reply` is padded with zero bytes behind its `size`.
    void storePlain(const CacheKey &key, const QByteArray &reply, int size)
    {
        const auto value = [&reply](int index) {
            const int high = ASCIIToDigital(static_cast<quint8>(reply.at(index)));
            const int low = ASCIIToDigital(static_cast<quint8>(reply.at(index + 1)));
            return QByteArray(1, static_cast<char>(high * 16 + low));
        };
        if (key.areaType == AREA_X)
            dataOf(key) = value(3);
        else if (key.areaType == AREA_D)
            dataOf(key) = value(5) + value(3);
        for (int k = 0; key.areaType == AREA_C && k < 70; ++k)
            dataOf(key, k) = 3 + 2 * k < size ? value(3 + 2 * k) : QByteArray(1, '\0');
    }

    QByteArray &dataOf(const CacheKey &first, int offset = 0)
    {
        return plain_.data(first.station, first.areaType,
                           PlainCache::plainSum(first.address, offset));
    }

    // The parts of an address text may be negative, so that every address has one.
    static QString textOf(const CacheKey &key)
    {
        return QString("0.0.%1").arg(key.areaType == AREA_C ? 0 : key.address) +
               QString(".%1").arg(key.address);
    }

    bool readOne(const CacheKey &key)
    {
        if (key.areaType != AREA_X && key.areaType != AREA_D)
            return true;
        QByteArray out("\x55\x55\x55", 3);
        const int result =
            GetRegisterData(QString(), key.areaType, textOf(key), key.station, out, 9);
        if (key.address < 0)
            return result == 0 && out == QByteArray("\x55\x55\x55", 3);
        const QByteArray data = dataOf(key) + QByteArray(2, '\0');
        QByteArray expected("\x55\x55\x55", 3);
        expected[0] = data.at(0);
        expected[1] = key.areaType == AREA_D ? data.at(1) : '\0';
        return result == 1 && out == expected;
    }

    bool readElements(Draw &draw, CacheKey key)
    {
        key.areaType = AREA_C;
        const int count = draw.below(90) - 1;
        QByteArray out;
        const int result = GetRegisterData(QString(), AREA_C, textOf(key), key.station, out, count);
        if (key.address < 0)
            return result == 0 && out.isEmpty();
        return result == 1 && out == plain_.elements(key.station, key.address, count);
    }

    PlainCache plain_;
};

QTEST_APPLESS_MAIN(TestQuickPathsCache)
#include "tst_quick_paths_cache.moc"
