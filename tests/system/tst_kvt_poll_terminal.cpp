// kvt poll on a terminal.
#include "tests/support/poll_run.h"
#include "tests/support/tmux_terminal.h"

#include <QtTest>

#include <algorithm>

namespace
{

constexpr int LIMIT_ms = 30000;

// The command as a shell takes it; what is set in `environment` holds for it alone.
QString pollCommand(const SimulatedLine &line, const QString &more,
                    const QString &environment = QString())
{
    const QStringList words =
        QStringList{QStringLiteral("env"), QStringLiteral("-u"), QStringLiteral("NO_COLOR"),
                    QStringLiteral("LC_ALL=C.UTF-8")} +
        environment.split(QLatin1Char(' '), Qt::SkipEmptyParts) +
        QStringList(QStringLiteral(KVT_PROGRAM)) +
        line.arguments(QStringLiteral("poll --interval 50 --tags ") + line.tagFile()) +
        more.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    return words.join(QLatin1Char(' '));
}

bool shows(TmuxTerminal *terminal, const QString &part)
{
    return terminal->text().contains(part);
}

// Every tag has a good value.
bool isAllGood(TmuxTerminal *terminal)
{
    return terminal->text().count(QStringLiteral("  good")) == 5;
}

// The table fills the terminal, and nothing else is on it.
bool isDrawnOnce(TmuxTerminal *terminal, int lines)
{
    const QString text = terminal->text();
    const QStringList all = text.split(QLatin1Char('\n'));
    const QStringList parts = {QStringLiteral(" scans, "), QStringLiteral("tag  "),
                               QStringLiteral("level  "), QStringLiteral("q end")};
    return all.size() == lines && all.last().startsWith(QLatin1String("1-5 of 5")) &&
           std::all_of(parts.begin(), parts.end(),
                       [&](const QString &part) { return text.count(part) == 1; });
}

} // namespace

class TestKvtPollTerminal : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(!QStandardPaths::findExecutable(QStringLiteral("tmux")).isEmpty(),
                 "tmux is missing");
    }

    void aTerminalGetsATable()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        TmuxTerminal terminal(80, 12, pollCommand(line, QString()));
        QTRY_VERIFY2_WITH_TIMEOUT(isAllGood(&terminal), qPrintable(terminal.text()), LIMIT_ms);
        const QStringList lines = terminal.lines();
        QVERIFY(lines.at(0).contains(QLatin1String(" scans, ")));
        QVERIFY2(lines.at(1).startsWith(QLatin1String("tag     area  address ")),
                 qPrintable(lines.at(1)));
        QVERIFY(lines.at(2).startsWith(QLatin1String("valve   X     1:1.2.0 ")));
        QVERIFY(lines.at(6).startsWith(QLatin1String("recipe  C     2:7.0.1.4 ")));
        QVERIFY(lines.at(6).endsWith(QLatin1String(" ok")));
        QVERIFY(lines.at(11).startsWith(QLatin1String("1-5 of 5")));
        QVERIFY(terminal.colouredText().contains(QLatin1String("\x1b[32mgood")));
    }

    void everyWidthFrom40HasTagValueAndQuality()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        TmuxTerminal terminal(40, 12, pollCommand(line, QString()));
        for (const int columns : {40, 53, 66, 120}) {
            terminal.resize(columns, 12);
            const QRegularExpression row(QStringLiteral("^level +.*[0-9]+  good"));
            QTRY_VERIFY2_WITH_TIMEOUT(row.match(terminal.lines().value(3)).hasMatch(),
                                      qPrintable(terminal.text()), LIMIT_ms);
            QCOMPARE(terminal.lines().size(), 12);
        }
    }

    void resizingLeavesNothingBehind()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        TmuxTerminal terminal(100, 20,
                              QStringLiteral("echo before; ") + pollCommand(line, QString()));
        QTRY_VERIFY2_WITH_TIMEOUT(isAllGood(&terminal), qPrintable(terminal.text()), LIMIT_ms);
        const struct {
            int columns;
            int lines;
        } sizes[] = {{44, 8}, {90, 14}, {40, 9}, {120, 24}};
        for (const auto &size : sizes) {
            terminal.resize(size.columns, size.lines);
            QTRY_VERIFY2_WITH_TIMEOUT(isDrawnOnce(&terminal, size.lines),
                                      qPrintable(terminal.text()), LIMIT_ms);
        }
        terminal.press({QStringLiteral("q")});
        QTRY_VERIFY2_WITH_TIMEOUT(terminal.hasEnded(0), qPrintable(terminal.text()), LIMIT_ms);
        QCOMPARE(terminal.lines().first(), QStringLiteral("before"));
        QCOMPARE(terminal.text().count(QLatin1String("tag  ")), 1);
        QVERIFY(!shows(&terminal, QStringLiteral("q end")));
    }

    // Two rows have room below the heading.
    void keysScrollAndFilter()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        TmuxTerminal terminal(80, 5, pollCommand(line, QString()));
        QTRY_VERIFY2_WITH_TIMEOUT(shows(&terminal, QStringLiteral("1-2 of 5")),
                                  qPrintable(terminal.text()), LIMIT_ms);
        const struct {
            QStringList keys;
            const char *part;
        } steps[] = {
            {{"Down"}, "2-3 of 5"},          {{"PageDown"}, "3-4 of 5"}, {{"End"}, "4-5 of 5"},
            {{"PageUp"}, "3-4 of 5"},        {{"Up"}, "2-3 of 5"},       {{"Home"}, "1-2 of 5"},
            {{"/", "r", "e", "c"}, "/rec_"}, {{"BSpace"}, "/re_"},       {{"Enter"}, "1-1 of 1"},
            {{"Escape"}, "1-2 of 5"}};
        for (const auto &step : steps) {
            terminal.press(step.keys);
            QTRY_VERIFY2_WITH_TIMEOUT(shows(&terminal, QLatin1String(step.part)),
                                      qPrintable(terminal.text()), LIMIT_ms);
        }
    }

    void badTagsComeFirstAndStationsThatAreOffAreNamed()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty,
                                 {QStringLiteral("--faults"), QStringLiteral("noreply=100%@2")});
        TmuxTerminal terminal(110, 12, pollCommand(line, QStringLiteral("--retries 0")));
        QTRY_VERIFY2_WITH_TIMEOUT(shows(&terminal, QStringLiteral("off: no reply (41)")),
                                  qPrintable(terminal.text()), LIMIT_ms);
        const QStringList lines = terminal.lines();
        QCOMPARE(lines.at(1), QStringLiteral("off, asked from time to time: station 2"));
        QVERIFY2(lines.at(3).startsWith(QLatin1String("speed ")), qPrintable(terminal.text()));
        QVERIFY(lines.at(4).startsWith(QLatin1String("recipe ")));
        QVERIFY(lines.at(5).startsWith(QLatin1String("valve ")));
        QVERIFY(lines.at(11).startsWith(QLatin1String("1-5 of 5, 2 not good")));
        terminal.press({QStringLiteral("s")});
        QTRY_VERIFY2_WITH_TIMEOUT(terminal.lines().value(3).startsWith(QLatin1String("valve ")),
                                  qPrintable(terminal.text()), LIMIT_ms);
        terminal.press({QStringLiteral("q")});
        QTRY_VERIFY2_WITH_TIMEOUT(terminal.hasEnded(1), qPrintable(terminal.text()), LIMIT_ms);
    }

    void colourIsLeftOutOnRequest()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        TmuxTerminal terminal(80, 12, pollCommand(line, QString(), QStringLiteral("NO_COLOR=1")));
        QTRY_VERIFY2_WITH_TIMEOUT(isAllGood(&terminal), qPrintable(terminal.text()), LIMIT_ms);
        QVERIFY(!terminal.colouredText().contains(QLatin1String("\x1b[3")));
    }

    void theTerminalIsGivenBackWithTheTable()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        TmuxTerminal terminal(80, 24, pollCommand(line, QStringLiteral("--seconds 1")));
        QTRY_VERIFY2_WITH_TIMEOUT(terminal.hasEnded(0), qPrintable(terminal.text()), LIMIT_ms);
        QVERIFY(isAllGood(&terminal));
        QVERIFY(shows(&terminal, QStringLiteral("\nscans ")));
        QVERIFY(!shows(&terminal, QStringLiteral("q end")));
        // Typed text is echoed again.
        terminal.press({QStringLiteral("abc")});
        QTRY_VERIFY2_WITH_TIMEOUT(shows(&terminal, QStringLiteral("\nabc")),
                                  qPrintable(terminal.text()), LIMIT_ms);
    }

    void ctrlCEndsWithTheSummary()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        TmuxTerminal terminal(80, 24, pollCommand(line, QString()));
        QTRY_VERIFY2_WITH_TIMEOUT(isAllGood(&terminal), qPrintable(terminal.text()), LIMIT_ms);
        terminal.press({QStringLiteral("C-c")});
        QTRY_VERIFY2_WITH_TIMEOUT(shows(&terminal, QStringLiteral("reply time: ")),
                                  qPrintable(terminal.text()), LIMIT_ms);
        QVERIFY(isAllGood(&terminal));
        QVERIFY(!shows(&terminal, QStringLiteral("^C")));
    }

    void aDumbTerminalGetsLinesWithoutEscapes_data()
    {
        QTest::addColumn<QString>("terminal");
        QTest::newRow("dumb") << QStringLiteral("dumb");
        QTest::newRow("unknown") << QStringLiteral("no-such-terminal");
        QTest::newRow("none") << QString();
    }

    // "script" shows what a terminal gets, byte by byte.
    void aDumbTerminalGetsLinesWithoutEscapes()
    {
        QFETCH(QString, terminal);
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        QProcess script;
        script.start(
            QStringLiteral("script"),
            {QStringLiteral("--quiet"), QStringLiteral("--command"),
             pollCommand(line, QStringLiteral("--cycles 3"), QStringLiteral("TERM=") + terminal),
             QStringLiteral("/dev/null")});
        QVERIFY(script.waitForFinished());
        const QByteArray text = script.readAllStandardOutput();
        QVERIFY2(text.contains("  level  ") && text.contains("  good  ok\r\n"), text);
        QVERIFY2(!text.contains('\x1b'), text);
    }

    void namesCannotSteerTheTerminal()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        QFile tags(line.tagFile());
        QVERIFY(tags.open(QIODevice::WriteOnly));
        tags.write("name,area,address,station,type\nle\u202ev\u2028el,D,5.2.1,1,u16\n");
        tags.close();
        TmuxTerminal terminal(80, 12, pollCommand(line, QStringLiteral("--seconds 1")));
        QTRY_VERIFY2_WITH_TIMEOUT(terminal.hasEnded(0), qPrintable(terminal.text()), LIMIT_ms);
        QVERIFY2(shows(&terminal, QStringLiteral("\nle\\u202ev\\u2028el  D ")),
                 qPrintable(terminal.text()));
        KvtProcess pipe;
        QCOMPARE(pipe.run(pollArguments(line, "--cycles 1")), 0);
        const QByteArray text = pipe.output();
        QVERIFY2(text.contains("  le\\u202ev\\u2028el  "), text);
        QVERIFY(!text.contains("\u202e") && !text.contains("\u2028"));
        QVERIFY(tags.open(QIODevice::WriteOnly));
        tags.write("name,area,address,station,type\n\"\x1b[2Jle\xc2\x9bvel\",D,5.2.1,1,u16\n");
        tags.close();
        QCOMPARE(faultAtBadInput(pollArguments(line, "--cycles 1"),
                                 QStringLiteral("a name may have no control characters")),
                 QString());
    }

    void theJudgementFollowsTheSummary()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty,
                                 {QStringLiteral("--faults"), QStringLiteral("noreply=100%@2")});
        TmuxTerminal terminal(60, 24, pollCommand(line, QStringLiteral("--retries 0 --seconds 1")));
        QTRY_VERIFY2_WITH_TIMEOUT(terminal.hasEnded(1), qPrintable(terminal.text()), LIMIT_ms);
        QVERIFY2(shows(&terminal, QStringLiteral("\nkvt: ")), qPrintable(terminal.text()));
        QVERIFY(terminal.text().indexOf(QLatin1String("scans ")) <
                terminal.text().lastIndexOf(QLatin1String("kvt: ")));
    }
};

QTEST_GUILESS_MAIN(TestKvtPollTerminal)
#include "tst_kvt_poll_terminal.moc"
