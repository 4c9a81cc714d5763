// Short runs of the proofs; scripts/soak makes the long ones.
#include "rig/proofs.h"

#include <QTest>

namespace
{

kvt::ProofRun runOf(qint64 count)
{
    return {QStringLiteral(KVT_LIBRARY), 20261121, count};
}

} // namespace

class TestRigProofs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void noValueReachesAnotherTag()
    {
        const kvt::ProofResult result = kvt::proveNoMisattribution(runOf(20000));
        QVERIFY2(result.held, qPrintable(result.text));
    }

    // The proof must be able to fail: without silence and pauses, late replies are taken for the
    // next answer.
    void shortSilenceIsFoundOut()
    {
        const kvt::QuietTrial trial = {0, 300, false};
        const kvt::ProofResult result = kvt::proveNoMisattribution(runOf(50000), trial);
        QVERIFY2(!result.held, qPrintable(result.text));
    }

    void noValueIsShownThatNeverWas()
    {
        const kvt::ProofResult result = kvt::proveNothingIsTorn(runOf(20000));
        QVERIFY2(result.held, qPrintable(result.text));
    }

    void tornValuesAreFoundWhereTheyAreAccepted()
    {
        const kvt::ProofResult result = kvt::proveNothingIsTorn(runOf(20000), true);
        QVERIFY2(!result.held, qPrintable(result.text));
    }

    void deadStationCostsTheOthersLittle()
    {
        const kvt::ProofResult result = kvt::proveDeadStationCostsLittle(runOf(300));
        QVERIFY2(result.held, qPrintable(result.text));
    }

    void everyWriteIsAccountedFor()
    {
        const kvt::ProofResult result = kvt::proveWritesAreAccountedFor(runOf(3000));
        QVERIFY2(result.held, qPrintable(result.text));
    }

    void lineIsInUseNearlyAllTheTime()
    {
        const kvt::ProofResult result = kvt::proveLineIsUsed(runOf(30));
        QVERIFY2(result.held, qPrintable(result.text));
    }

    void sameSeedMakesTheSameRun()
    {
        const kvt::ProofResult first = kvt::proveNoMisattribution(runOf(5000));
        const kvt::ProofResult second = kvt::proveNoMisattribution(runOf(5000));
        QCOMPARE(first.text, second.text);
    }
};

QTEST_GUILESS_MAIN(TestRigProofs)
#include "tst_rig_proofs.moc"
