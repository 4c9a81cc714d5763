// Alarms in the live table of kvt poll, their acknowledgement, and the terminal behind it.
#include "tests/support/poll_run.h"
#include "tests/support/tmux_terminal.h"

#include <QtTest>

namespace
{

constexpr int LIMIT_ms = 30000;

/// A poll in a terminal. No word is below 0, so that two of its tags are in alarm from the first
/// reading on.
class AlarmPoll
{
public:
    AlarmPoll(int columns, const QString &more)
        : line_(SimulatedLine::Kind::Pty), terminal_(columns, 16, (writeList(), command(more)))
    {
    }

    TmuxTerminal &terminal() { return terminal_; }

    bool shows(const QString &part) { return terminal_.text().contains(part); }

    /// The line that begins with a word.
    QString row(const QString &word)
    {
        const QStringList lines = terminal_.lines();
        for (const QString &line : lines)
            if (line.startsWith(word + QLatin1Char(' ')))
                return line.simplified();
        return QString();
    }

    /// What stands in a file that the run has left behind: "before" and "after" are the settings of
    /// the terminal, "messages" is standard error.
    QByteArray file(const char *name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    void signal(int number) { ::kill(file("process").trimmed().toInt(), number); }

private:
    QString path(const char *name) const { return line_.filePath(QLatin1String(name)); }

    void writeList() const
    {
        QFile list(path("alarms.csv"));
        if (!list.open(QIODevice::WriteOnly) ||
            list.write("name,area,address,station,type,hi,priority,alarm_text\n"
                       "valve,X,1.2.0,1,u8,254.5,,\n"
                       "level,D,5.2.1,1,u16,-1,high,too full\n"
                       "speed,D,5.2.1,2,u16,-1,,\n"
                       "recipe,C,7.0.1.4,2,u8,,,\n") < 0)
            qFatal("cannot write a list");
    }

    QString command(const QString &more) const
    {
        const QStringList poll =
            QStringList{QStringLiteral("exec env LC_ALL=C.UTF-8"), QStringLiteral(KVT_PROGRAM)} +
            line_.arguments(QStringLiteral("poll --interval 50 --tags ") + path("alarms.csv")) +
            QStringList{more, QStringLiteral("2>"), path("messages")};
        return QStringLiteral("stty -g >%1; bash -c 'echo $$ >%2; %3'; status=$?; stty -g >%4; "
                              "(exit $status)")
            .arg(path("before"), path("process"), poll.join(QLatin1Char(' ')), path("after"));
    }

    SimulatedLine line_;
    TmuxTerminal terminal_;
};

} // namespace

class TestKvtPollAlarms : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(!QStandardPaths::findExecutable(QStringLiteral("tmux")).isEmpty(),
                 "tmux is missing");
    }

    void theTableHasTheAlarms()
    {
        AlarmPoll poll(80, QString());
        const QRegularExpression level(QStringLiteral("^level [0-9]+ good hi unack [0-9]+ ms ok$"));
        QTRY_VERIFY2_WITH_TIMEOUT(level.match(poll.row("level")).hasMatch(),
                                  qPrintable(poll.terminal().text()), LIMIT_ms);
        QTRY_VERIFY_WITH_TIMEOUT(poll.row("speed").contains(QLatin1String(" good hi unack ")),
                                 LIMIT_ms);
        QTRY_VERIFY_WITH_TIMEOUT(poll.row("valve").contains(QLatin1String(" normal ")), LIMIT_ms);
        QCOMPARE(poll.row("tag"), QString("tag value quality alarm age result"));
        const QRegularExpression recipe(QStringLiteral("^recipe [0-9]+ good [0-9]+ ms ok$"));
        QTRY_VERIFY_WITH_TIMEOUT(recipe.match(poll.row("recipe")).hasMatch(), LIMIT_ms);
        QVERIFY(poll.terminal().lines().last().startsWith(
            QLatin1String("1-4 of 4, 2 unacknowledged  q end, a acknowledge, ")));
        // The latest change, with what the list says of it.
        QVERIFY(poll.shows(QStringLiteral(" alarm of ")));
    }

    void aKeyAcknowledgesThem()
    {
        AlarmPoll poll(100, QString());
        QTRY_VERIFY_WITH_TIMEOUT(poll.shows(QStringLiteral("2 unacknowledged")), LIMIT_ms);
        poll.terminal().press({"/", "l", "e", "v", "Enter"});
        QTRY_VERIFY_WITH_TIMEOUT(poll.shows(QStringLiteral("1-1 of 1")), LIMIT_ms);
        poll.terminal().press({"a"});
        QTRY_VERIFY_WITH_TIMEOUT(poll.row("level").contains(QLatin1String(" hi acked ")), LIMIT_ms);
        poll.terminal().press({"Escape"});
        QTRY_VERIFY_WITH_TIMEOUT(poll.row("speed").contains(QLatin1String(" hi unack ")), LIMIT_ms);
        poll.terminal().press({"a"});
        QTRY_VERIFY_WITH_TIMEOUT(poll.row("speed").contains(QLatin1String(" hi acked ")), LIMIT_ms);
        poll.terminal().press({"a"}); // there is nothing left
        poll.terminal().press({"q"});
        QTRY_VERIFY2_WITH_TIMEOUT(poll.terminal().hasEnded(0), qPrintable(poll.terminal().text()),
                                  LIMIT_ms);
        const QByteArray messages = poll.file("messages");
        const QByteArray told = " alarm of level: acknowledged, hi, priority high: too full\n";
        QVERIFY2(messages.count(told) == 1, messages);
        QCOMPARE(messages.count(" alarm of level: unacknowledged, hi, "), 1);
        QCOMPARE(messages.count(" alarm of speed: acknowledged, hi, "), 1);
        QCOMPARE(messages.count(": acknowledged, "), 2);
    }

    void theTerminalIsAsItWas_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<int>("number");
        QTest::newRow("Ctrl-C") << "C-c" << 0;
        QTest::newRow("q") << "q" << 0;
        QTest::newRow("INT") << QString() << SIGINT;
        QTest::newRow("TERM") << QString() << SIGTERM;
        QTest::newRow("HUP") << QString() << SIGHUP;
        QTest::newRow("end") << QString() << 0;
    }

    void theTerminalIsAsItWas()
    {
        QFETCH(QString, key);
        QFETCH(int, number);
        const bool endsItself = key.isEmpty() && number == 0;
        AlarmPoll poll(80, endsItself ? QStringLiteral("--seconds 1") : QString());
        QTRY_VERIFY_WITH_TIMEOUT(poll.shows(QStringLiteral("hi unack")), LIMIT_ms);
        poll.terminal().press({"a"});
        QTRY_VERIFY_WITH_TIMEOUT(poll.shows(QStringLiteral("hi acked")), LIMIT_ms);
        if (!key.isEmpty())
            poll.terminal().press({key});
        else if (number != 0)
            poll.signal(number);
        QTRY_VERIFY2_WITH_TIMEOUT(poll.terminal().hasEnded(0), qPrintable(poll.terminal().text()),
                                  LIMIT_ms);
        const QByteArray before = poll.file("before");
        QVERIFY(!before.isEmpty());
        QCOMPARE(poll.file("after"), before);
    }
};

QTEST_GUILESS_MAIN(TestKvtPollAlarms)
#include "tst_kvt_poll_alarms.moc"
