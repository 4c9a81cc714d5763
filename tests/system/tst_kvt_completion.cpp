// Completion in bash, zsh and fish, with the built program.
#include <QProcess>
#include <QtTest>

namespace
{

const QString PROGRAM = QStringLiteral(KVT_PROGRAM);

// What a shell prints when it is given a script and words; nothing when it complains.
QString outputOf(const QString &shell, const QStringList &arguments)
{
    QProcess process;
    process.start(shell, arguments);
    if (!process.waitForFinished() || !process.readAllStandardError().isEmpty())
        return QString();
    return QString::fromUtf8(process.readAllStandardOutput());
}

// The words that complete the last of `words`, sorted.
QString completedByZsh(const QString &script, const QString &words)
{
    // zsh keeps those words that begin as the one that is typed.
    const QString output = outputOf(
        QStringLiteral("zsh"),
        {QStringLiteral("-f"), QStringLiteral("-c"),
         QStringLiteral("compadd() { shift; for w; do [[ $w == ${words[CURRENT]}* ]] && print -r "
                        "-- $w; done; return 0 }; _files() { }; source $1; words=($2 ${=3}); "
                        "CURRENT=$#words; _kvt"),
         QStringLiteral("zsh"), script, PROGRAM, words});
    QStringList found = output.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    found.sort();
    return found.join(QLatin1Char(' '));
}

// fish completes a program by its name; the one that is asked is the one on the line.
QString completedByFish(const QString &script, const QString &words)
{
    const QString output =
        outputOf(QStringLiteral("fish"),
                 {QStringLiteral("--no-config"), QStringLiteral("-c"),
                  QStringLiteral("source $argv[1]; complete -C \"$argv[2] $argv[3]\""), script,
                  PROGRAM, words});
    QStringList found;
    for (const QString &line : output.split(QLatin1Char('\n'), Qt::SkipEmptyParts))
        found.append(line.section(QLatin1Char('\t'), 0, 0));
    found.removeDuplicates();
    found.sort();
    return found.join(QLatin1Char(' '));
}

} // namespace

class TestKvtCompletion : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void wordsAreCompleted_data()
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

    void wordsAreCompleted()
    {
        QFETCH(QString, completions);
        const QString script = QFINDTESTDATA("../../apps/kvt/completion/kvt.bash");
        QVERIFY(!script.isEmpty());
        QProcess bash;
        bash.start(
            QStringLiteral("bash"),
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

    void otherShellsCompleteTheSame_data()
    {
        QTest::addColumn<QString>("completions");
        QTest::newRow("rea") << "read";
        QTest::newRow("sim --ta") << "--tags";
        QTest::newRow("poll --se") << "--seconds --serial";
        QTest::newRow("poll --baud 38") << "38400";
        QTest::newRow("sim --values r") << "ramp";
        QTest::newRow("read --type s") << "s16";
        QTest::newRow("read --reply-check r") << "refuse";
        QTest::newRow("read D") << "D";
        QTest::newRow("help sc") << "scan";
        QTest::newRow("nothing --ta") << "";
    }

    void otherShellsCompleteTheSame()
    {
        QFETCH(QString, completions);
        const QString words = QLatin1String(QTest::currentDataTag());
        QCOMPARE(completedByZsh(QFINDTESTDATA("../../apps/kvt/completion/kvt.zsh"), words),
                 completions);
        QCOMPARE(completedByFish(QFINDTESTDATA("../../apps/kvt/completion/kvt.fish"), words),
                 completions);
    }

    void everyOptionIsCompleted_data()
    {
        QTest::addColumn<QString>("command");
        for (const char *command : {"demo", "sim", "poll", "read", "write", "scan", "tune", "plan",
                                    "decode", "explain", "replay"})
            QTest::newRow(command) << QString::fromLatin1(command);
    }

    void everyOptionIsCompleted()
    {
        QFETCH(QString, command);
        const QRegularExpression form(QStringLiteral("^  (?:-[a-z], )?(--[a-z-]+)"),
                                      QRegularExpression::MultilineOption);
        QStringList options;
        auto match = form.globalMatch(outputOf(PROGRAM, {command, QStringLiteral("--help")}));
        while (match.hasNext())
            options.append(match.next().captured(1));
        options.sort();
        QVERIFY(options.size() >= 2);
        const QString all = options.join(QLatin1Char(' '));
        QCOMPARE(completedByZsh(QFINDTESTDATA("../../apps/kvt/completion/kvt.zsh"),
                                command + QStringLiteral(" --")),
                 all);
        QCOMPARE(completedByFish(QFINDTESTDATA("../../apps/kvt/completion/kvt.fish"),
                                 command + QStringLiteral(" --")),
                 all);
    }
};

QTEST_GUILESS_MAIN(TestKvtCompletion)
#include "tst_kvt_completion.moc"
