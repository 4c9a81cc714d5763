// What completion in bash, zsh and fish, and the manual, know of the built program.
#include <QProcess>
#include <QtTest>

namespace
{

const QString PROGRAM = QStringLiteral(KVT_PROGRAM);

QString sorted(QStringList words)
{
    words.sort();
    return words.join(QLatin1Char(' '));
}

// What the form finds in the lines of a text.
QStringList allOf(const QString &form, const QString &text)
{
    const QRegularExpression expression(form, QRegularExpression::MultilineOption);
    QStringList found;
    auto match = expression.globalMatch(text);
    while (match.hasNext())
        found.append(match.next().captured(1));
    return found;
}

// What a program prints, or what it complains about.
QString outputOf(const QString &shell, const QStringList &arguments)
{
    QProcess process;
    process.start(shell, arguments);
    if (!process.waitForFinished())
        return QStringLiteral("does not end");
    const QByteArray errors = process.readAllStandardError();
    return QString::fromUtf8(errors.isEmpty() ? process.readAllStandardOutput() : errors);
}

// The words that complete the last of `words`, sorted.
QString completedByBash(const QString &script, const QString &words)
{
    const QString output = outputOf(
        QStringLiteral("bash"),
        {QStringLiteral("-c"),
         QStringLiteral(
             "source \"$1\"; COMP_WORDS=(\"$2\" $3); "
             "COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _kvt; printf '%s\\n' ${COMPREPLY[@]}"),
         QStringLiteral("bash"), script, PROGRAM, words});
    return sorted(output.split(QLatin1Char('\n'), Qt::SkipEmptyParts));
}

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
    return sorted(output.split(QLatin1Char('\n'), Qt::SkipEmptyParts));
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
    return sorted(found);
}

// The long options that the help of a command names.
QStringList optionsOf(const QString &command)
{
    return allOf(QStringLiteral("^  (?:-[a-z], )?(--[a-z-]+)"),
                 outputOf(PROGRAM, {command, QStringLiteral("--help")}));
}

// Those that synopsis and options of a manual page name: all of ".Fl -baud , -format", however the
// line goes on. What is said elsewhere may be about another command.
QStringList optionsInManual(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QStringList();
    QString text;
    for (const QString &section : QString::fromUtf8(file.readAll()).split(QStringLiteral("\n.Sh ")))
        if (section.startsWith(QLatin1String("SYNOPSIS")) ||
            section.startsWith(QLatin1String("OPTIONS")))
            text += section + QLatin1Char('\n');
    QStringList options;
    for (const QString &line : allOf(QStringLiteral("^(\\.(?:[A-Z].* )?Fl .*)$"), text))
        for (const QString &option : allOf(QStringLiteral(" (-[a-z][a-z-]*)"), line))
            options.append(QLatin1Char('-') + option);
    options.removeDuplicates();
    return options;
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
        QTest::newRow("read --type s") << "s16 s32 s64 s8 string:";
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
        QTest::newRow("tags ch") << "check";
        QTest::newRow("tags check x") << ""; // a file
    }

    void wordsAreCompleted()
    {
        QFETCH(QString, completions);
        const QString words =
            QString::fromLatin1(QTest::currentDataTag())
                .replace(QStringLiteral("%TAGS%"), QFINDTESTDATA("../../examples/plant.csv"));
        QCOMPARE(completedByBash(script("bash"), words), completions);
    }

    void otherShellsCompleteTheSame_data()
    {
        QTest::addColumn<QString>("completions");
        QTest::newRow("rea") << "read";
        QTest::newRow("sim --ta") << "--tags";
        QTest::newRow("poll --se") << "--seconds --serial";
        QTest::newRow("poll --baud 38") << "38400";
        QTest::newRow("sim --values r") << "ramp";
        QTest::newRow("read --type s") << "s16 s32 s64 s8 string:";
        QTest::newRow("read --reply-check r") << "refuse";
        QTest::newRow("read D") << "D";
        QTest::newRow("help sc") << "scan";
        QTest::newRow("nothing --ta") << "";
        QTest::newRow("tags ch") << "check";
    }

    void otherShellsCompleteTheSame()
    {
        QFETCH(QString, completions);
        const QString words = QLatin1String(QTest::currentDataTag());
        QCOMPARE(completedByZsh(script("zsh"), words), completions);
        QCOMPARE(completedByFish(script("fish"), words), completions);
    }

    void everyOptionIsCompleted_data()
    {
        QTest::addColumn<QString>("command");
        for (const char *command : {"demo", "sim", "poll", "read", "write", "scan", "tune", "plan",
                                    "tags", "decode", "explain", "replay"})
            QTest::newRow(command) << QString::fromLatin1(command);
    }

    void everyOptionIsCompleted()
    {
        QFETCH(QString, command);
        const QStringList options = optionsOf(command);
        QVERIFY(options.size() >= 2);
        const QString all = sorted(options);
        const QString words = command + QStringLiteral(" --");
        QCOMPARE(completedByBash(script("bash"), words), all);
        QCOMPARE(completedByZsh(script("zsh"), words), all);
        QCOMPARE(completedByFish(script("fish"), words), all);
    }

    void everyOptionIsInTheManual_data() { everyOptionIsCompleted_data(); }

    // --help stands in kvt.1 for all of them.
    void everyOptionIsInTheManual()
    {
        QFETCH(QString, command);
        QStringList options = optionsOf(command);
        QVERIFY(options.removeOne(QStringLiteral("--help")));
        const QString page = QFINDTESTDATA(QStringLiteral("../../man/kvt-%1.1").arg(command));
        QCOMPARE(sorted(optionsInManual(page)), sorted(options));
    }

private:
    static QString script(const char *shell)
    {
        return QFINDTESTDATA(QStringLiteral("../../apps/kvt/completion/kvt.") +
                             QLatin1String(shell));
    }
};

QTEST_GUILESS_MAIN(TestKvtCompletion)
#include "tst_kvt_completion.moc"
