// The value cache against a plain model of it: one list, searched from the front at every access.
#include "cache/host_data.h"
#include "cache/value_cache.h"

#include "tests/support/draw.h"
#include "tests/support/driver_test.h"
#include "tests/support/plain_models.h"
#include "tests/support/record_text.h"

#include <QtTest>

namespace
{

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
    var.data = draw.bytes(draw.below(14));
    model.store(var);
    WriteDataToLocal(&var);
}

void compareElements(PlainCache &model, Draw &draw)
{
    const int station = draw.below(2);
    const int address = draw.below(24);
    const int count = draw.below(8) - 1;
    const QByteArray expected = model.elements(station, address, count);
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
            QCOMPARE(cacheRecords(), cacheTexts(model.records));
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
        QCOMPARE(cacheRecords(), cacheTexts(model.records));
    }
};

QTEST_APPLESS_MAIN(TestValueCacheModel)
#include "tst_value_cache_model.moc"
