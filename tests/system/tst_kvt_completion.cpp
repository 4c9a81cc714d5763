// Completion in bash, with the built program.
#include <QProcess>
#include <QtTest>

class TestKvtCompletion : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void wordsAreCompleted_data();
    void wordsAreCompleted();
};

void TestKvtCompletion::wordsAreCompleted_data()
{
    QTest::addColumn<QString>("completions");
    QTest::newRow("rea") << "read";
    QTest::newRow("wr") << "write";
    QTest::newRow("sim --ta") << "--tags";
    QTest::newRow("poll --se") << "--seconds --serial";
    QTest::newRow("scan --stat") << "--stations";
    QTest::newRow("poll --baud 38") << "38400";
    QTest::newRow("sim --values r") << "ramp";
    QTest::newRow("read --type s") << "s16";
    QTest::newRow("read --reply-check r") << "refuse";
    QTest::newRow("read D") << "D";
    QTest::newRow("poll --tags x") << ""; // a file
    QTest::newRow("help sc") << "scan";
    QTest::newRow("sim --faults de") << "delay=";
    QTest::newRow("sim --faults echo = 1%,fl") << "1%,flip="; // parted as bash does it
    QTest::newRow("sim --faults echo = 1") << "";
    QTest::newRow("read --tags %TAGS% --json pump1_spe") << "pump1_speed";
    QTest::newRow("write --tags %TAGS% pump1_s") << "pump1_setpoint pump1_speed";
    QTest::newRow("read --tags /nowhere/tags.csv p") << "";
    QTest::newRow("nothing --ta") << "";
}

void TestKvtCompletion::wordsAreCompleted()
{
    QFETCH(QString, completions);
    const QString script = QFINDTESTDATA("../../apps/kvt/completion/kvt.bash");
    QVERIFY(!script.isEmpty());
    QProcess bash;
    bash.start(QStringLiteral("bash"),
               {QStringLiteral("-c"),
                QStringLiteral("source \"$1\"; COMP_WORDS=(\"$2\" $3); "
                               "COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _kvt; echo ${COMPREPLY[*]}"),
                QStringLiteral("bash"), script, QStringLiteral(KVT_PROGRAM),
                QString::fromLatin1(QTest::currentDataTag())
                    .replace(QStringLiteral("%TAGS%"), QFINDTESTDATA("../../examples/plant.csv"))});
    QVERIFY(bash.waitForFinished());
    QCOMPARE(bash.exitCode(), 0);
    QCOMPARE(bash.readAllStandardError(), QByteArray());
    QStringList found = QString::fromLatin1(bash.readAllStandardOutput())
                            .split(QLatin1Char(' '), Qt::SkipEmptyParts);
    found.replaceInStrings(QStringLiteral("\n"), QString());
    found.removeAll(QString());
    found.sort();
    QCOMPARE(found.join(QLatin1Char(' ')), completions);
}

QTEST_GUILESS_MAIN(TestKvtCompletion)
#include "tst_kvt_completion.moc"
