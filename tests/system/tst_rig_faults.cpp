// Single cells of the fault matrix, and that it would find out what it looks for.
#include "rig/fault_table.h"

#include <QTest>

using namespace kvt;

namespace
{

CellResult cellOf(const char *name, RequestOfCell request, CellSettings settings, bool paced)
{
    for (int i = 0; i < faultsOfLine().size(); ++i)
        if (qstrcmp(faultsOfLine().at(i).name, name) == 0)
            return runFaultCell({i, request, settings, paced}, QStringLiteral(KVT_LIBRARY), 7);
    return CellResult();
}

} // namespace

class TestRigFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void promisesHold_data()
    {
        QTest::addColumn<QByteArray>("fault");
        for (const char *name :
             {"lost", "late-1.5", "cut", "doubled-1ms", "foreign", "noise-within", "refusal-reply",
              "half-refusal", "gap-1.1", "echo", "lockstep", "break-50ms"})
            QTest::newRow(name) << QByteArray(name);
    }
    void promisesHold()
    {
        QFETCH(QByteArray, fault);
        for (const RequestOfCell request :
             {RequestOfCell::ReadD, RequestOfCell::WriteD, RequestOfCell::RemoteRead}) {
            const CellResult result = cellOf(fault, request, CellSettings::Default, false);
            QCOMPARE(brokenPromises(result), QStringList());
            QVERIFY(result.strikes >= 4);
            QVERIFY(result.findings.values > 100);
            QVERIFY(result.findings.writes > 10);
        }
    }

    void wrongValuesAreFoundOut()
    {
        const CellResult off = cellOf("foreign", RequestOfCell::ReadD, CellSettings::Off, true);
        QVERIFY(off.findings.wrong > 10);
        const CellResult digits =
            cellOf("changed-digit", RequestOfCell::ReadX, CellSettings::Default, true);
        QVERIFY(digits.findings.wrong > 10);
        QVERIFY(digits.findings.wrongLongest_ns > 0);
    }

    void aWrongValueBreaksThePromise()
    {
        CellResult result = cellOf("lost", RequestOfCell::ReadD, CellSettings::Default, true);
        QCOMPARE(brokenPromises(result), QStringList());
        result.findings.wrong = 1;
        QCOMPARE(brokenPromises(result).size(), 1);
        result.findings.wrong = 0;
        result.findings.writesUnsettled = 1;
        QCOMPARE(brokenPromises(result).size(), 1);
        result.findings.writesUnsettled = 0;
        result.findings.writesBelied = 1;
        QCOMPARE(brokenPromises(result).size(), 1);
    }

    void moreIsWorse()
    {
        CellResult result = cellOf("lost", RequestOfCell::WriteX, CellSettings::Default, true);
        const CellGroups before = groupsOf(csvHead() + QLatin1Char('\n') + csvLine(result));
        QCOMPARE(before, groupsOf({result}));
        QCOMPARE(worse(before, groupsOf({result})), QStringList());
        result.findings.writesUnsettled = 1;
        result.findings.recovery_ns += seconds(60);
        QCOMPARE(worse(before, groupsOf({result})).size(), 2);
        result.cell.settings = CellSettings::Confirm;
        QCOMPARE(worse(before, groupsOf({result})).size(), 1);
    }
};

QTEST_GUILESS_MAIN(TestRigFaults)
#include "tst_rig_faults.moc"
