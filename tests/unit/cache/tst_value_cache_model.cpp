// The value cache against a plain model of it: one list, searched from the front at every access.
#include "cache/host_data.h"
#include "cache/value_cache.h"

#include "tests/support/driver_test.h"
#include "tests/support/record_text.h"

#include <QtTest>

#include <random>

namespace
{

/// The model. Its list is compared with the driver's record for record.
struct PlainCache {
    QList<EXTENDVAR> records;

    int find(int station, int areaType, int address)
    {
        for (int i = 0; i < records.size(); ++i) {
            const EXTENDVAR &record = records.at(i);
            if (record.station == station && record.areaType == areaType &&
                record.address == address)
                return i;
        }
        records.append(EXTENDVAR{station, areaType, address, QByteArray(4, '\0')});
        return records.size() - 1;
    }

    void store(const RW_VAR &var)
    {
        const int size = var.areaType == AREA_D ? 2 : 1;
        for (int i = 0; i < var.count && 2 * i + 1 < var.data.size(); ++i) {
            const int place = find(var.station, var.areaType, var.address + i);
            records[place].data = var.data.mid(2 * i, size);
        }
    }

    QByteArray readElements(int station, int address, int count)
    {
        QByteArray out;
        for (int i = 0; i < count; ++i) {
            const QByteArray data = records.at(find(station, AREA_C, address + i)).data;
            out.append(data.isEmpty() ? '\0' : data.at(0));
            out.append('\0');
        }
        return out;
    }
};

/// Draws the accesses; so few keys that most of them meet records made before.
class Draw
{
public:
    explicit Draw(unsigned seed) : m_random(seed) {}

    int below(int limit) { return int(m_random() % unsigned(limit)); }

    QByteArray value(int size)
    {
        QByteArray result;
        for (int i = 0; i < size; ++i)
            result.append(char(below(256)));
        return result;
    }

private:
    std::mt19937 m_random;
};

void compareLookup(PlainCache &model, Draw &draw)
{
    const int station = draw.below(2);
    const int areaType = draw.below(3);
    const int address = draw.below(24);
    const int expected = model.find(station, areaType, address);
    QCOMPARE(ExtendFindSameVar(station, areaType, address), expected);
}

void compareStore(PlainCache &model, Draw &draw)
{
    RW_VAR var;
    var.station = draw.below(2);
    var.areaType = draw.below(2);
    var.address = draw.below(24);
    var.count = draw.below(8) - 1;
    var.data = draw.value(draw.below(14));
    model.store(var);
    WriteDataToLocal(&var);
}

void compareElements(PlainCache &model, Draw &draw)
{
    const int station = draw.below(2);
    const int address = draw.below(24);
    const int count = draw.below(8) - 1;
    const QByteArray expected = model.readElements(station, address, count);
    QByteArray out;
    const QString text = QString("0.0.0.%1").arg(address);
    QCOMPARE(GetRegisterData(QString(), AREA_C, text, station, out, count), 1);
    QCOMPARE(out, expected);
}

/// Takes records away behind the cache's back, as a fresh start of a test does.
void forget(PlainCache &model, Draw &draw)
{
    const int kept = draw.below(2) == 0 ? 0 : draw.below(model.records.size() + 1);
    model.records = model.records.mid(0, kept);
    PLC_driver.extendVars = PLC_driver.extendVars.mid(0, kept);
}

} // namespace

class TestValueCacheModel : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void theCacheAgreesWithItsModel()
    {
        PlainCache model;
        Draw draw(90210);
        for (int round = 0; round < 6000; ++round) {
            const int kind = draw.below(100);
            if (kind < 2)
                forget(model, draw);
            else if (kind < 34)
                compareLookup(model, draw);
            else if (kind < 67)
                compareStore(model, draw);
            else
                compareElements(model, draw);
            if (QTest::currentTestFailed())
                return;
            QCOMPARE(cacheTexts(PLC_driver.extendVars), cacheTexts(model.records));
        }
    }

    void aLargeCacheAgreesWithItsModel()
    {
        PlainCache model;
        Draw draw(3);
        for (int round = 0; round < 1500; ++round) {
            const int station = draw.below(3);
            const int areaType = draw.below(3);
            const int address = draw.below(2000);
            const int expected = model.find(station, areaType, address);
            QCOMPARE(ExtendFindSameVar(station, areaType, address), expected);
        }
        QCOMPARE(cacheTexts(PLC_driver.extendVars), cacheTexts(model.records));
    }
};

QTEST_APPLESS_MAIN(TestValueCacheModel)
#include "tst_value_cache_model.moc"
