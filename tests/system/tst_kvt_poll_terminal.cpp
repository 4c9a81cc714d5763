// kvt poll on a terminal.
#include "tests/support/simulated_line.h"

#include <QtTest>

namespace
{

// Terminal and program run on when it returns.
void startOnTerminal(QProcess *terminal, const SimulatedLine &line, const char *more)
{
    const QStringList words = QStringList(QStringLiteral(KVT_PROGRAM)) +
                              line.arguments(QStringLiteral("poll ") + QString::fromLatin1(more)) +
                              QStringList{QStringLiteral("--tags"), line.tagFile()};
    terminal->start(QStringLiteral("script"),
                    {QStringLiteral("--quiet"), QStringLiteral("--command"),
                     words.join(QLatin1Char(' ')), QStringLiteral("/dev/null")});
}

// What a terminal gets to see of three scans; `more` is added to the environment.
QByteArray pollOnTerminal(const SimulatedLine &line, const QProcessEnvironment &more)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("NO_COLOR"));
    environment.insert(more);
    QProcess terminal;
    terminal.setProcessEnvironment(environment);
    startOnTerminal(&terminal, line, "--cycles 3");
    terminal.waitForFinished();
    return terminal.readAllStandardOutput();
}

} // namespace

class TestKvtPollTerminal : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aTerminalGetsATableInPlace();
    void tagsWithoutRoomAreCounted_data();
    void tagsWithoutRoomAreCounted();
    void colourIsLeftOutOnRequest();
    void ctrlCLeavesTheTableInOnePiece();
};

void TestKvtPollTerminal::aTerminalGetsATableInPlace()
{
    const SimulatedLine line(SimulatedLine::Kind::Pty);
    const QByteArray screen = pollOnTerminal(line, QProcessEnvironment());
    QVERIFY2(screen.contains("tag     area  address"), screen.constData());
    QVERIFY(screen.contains("\x1b[32mgood      \x1b[0m"));
    QCOMPARE(screen.count("recipe  C     2:7.0.1.4"), screen.count("valve   X     1:1.2.0"));
}

// "stty" makes the terminal as high as a test needs it.
void TestKvtPollTerminal::tagsWithoutRoomAreCounted_data()
{
    QTest::addColumn<QByteArray>("faults");
    QTest::addColumn<QByteArray>("last");
    QTest::newRow("good") << QByteArray("noreply=100%@9") << QByteArray("... and 3 more\x1b[K");
    QTest::newRow("bad") << QByteArray("refuse=100%@2")
                         << QByteArray("... and 3 more, 2 of them not good\x1b[K");
}

void TestKvtPollTerminal::tagsWithoutRoomAreCounted()
{
    QFETCH(QByteArray, faults);
    QFETCH(QByteArray, last);
    const SimulatedLine line(SimulatedLine::Kind::Pty,
                             {QStringLiteral("--faults"), QString::fromLatin1(faults)});
    const QStringList words =
        QStringList{QStringLiteral("stty rows 6;"), QStringLiteral(KVT_PROGRAM)} +
        line.arguments(QStringLiteral("poll --cycles 1")) +
        QStringList{QStringLiteral("--tags"), line.tagFile()};
    QProcess terminal;
    terminal.start(QStringLiteral("script"),
                   {QStringLiteral("--quiet"), QStringLiteral("--command"),
                    words.join(QLatin1Char(' ')), QStringLiteral("/dev/null")});
    QVERIFY(terminal.waitForFinished());
    const QByteArray screen = terminal.readAllStandardOutput();
    QVERIFY2(screen.contains(last), screen);
}

void TestKvtPollTerminal::colourIsLeftOutOnRequest()
{
    const SimulatedLine line(SimulatedLine::Kind::Pty);
    QProcessEnvironment environment;
    environment.insert(QStringLiteral("NO_COLOR"), QStringLiteral("1"));
    const QByteArray screen = pollOnTerminal(line, environment);
    QVERIFY2(screen.contains("  good        "), screen.constData());
    QVERIFY(!screen.contains("\x1b[32m"));
}

// The terminal echoes ^C where the cursor stands, below the table.
void TestKvtPollTerminal::ctrlCLeavesTheTableInOnePiece()
{
    const SimulatedLine line(SimulatedLine::Kind::Pty);
    QProcess terminal;
    startOnTerminal(&terminal, line, "--interval 20");
    QByteArray screen;
    while (!screen.contains("good") && terminal.waitForReadyRead())
        screen += terminal.readAllStandardOutput();
    terminal.write("\x03");
    QVERIFY(terminal.waitForFinished());
    screen += terminal.readAllStandardOutput();
    const QByteArray rest = screen.mid(screen.indexOf("^C"));
    QVERIFY2(rest.contains("\r\x1b[7A"), rest.constData());
    QCOMPARE(screen.count("\x1b[7A"), screen.count("\r\x1b[7A"));
}

QTEST_GUILESS_MAIN(TestKvtPollTerminal)
#include "tst_kvt_poll_terminal.moc"
