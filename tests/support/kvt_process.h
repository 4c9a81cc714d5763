// The program kvt as a process of its own.
#ifndef KVT_TESTS_SUPPORT_KVT_PROCESS_H
#define KVT_TESTS_SUPPORT_KVT_PROCESS_H

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTest>

#include <csignal>

/// A run of kvt with its output. Waits are for what the program prints or for its end; the limit
/// on them only keeps a failed test from hanging.
class KvtProcess
{
public:
    KvtProcess()
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
        process_.setProcessEnvironment(environment);
    }
    ~KvtProcess()
    {
        if (process_.state() != QProcess::NotRunning) {
            process_.kill();
            process_.waitForFinished(LIMIT_ms);
        }
    }

    /// Before the start: a variable of its environment, where standard input comes from, where
    /// standard output and error go, and the folder to run in.
    void setVariable(const QString &name, const QString &value)
    {
        QProcessEnvironment environment = process_.processEnvironment();
        environment.insert(name, value);
        process_.setProcessEnvironment(environment);
    }
    void takeInputFrom(const QString &file) { process_.setStandardInputFile(file); }
    void sendOutputTo(const QString &file) { process_.setStandardOutputFile(file); }
    void sendErrorsTo(const QString &file) { process_.setStandardErrorFile(file); }
    void runIn(const QString &folder) { process_.setWorkingDirectory(folder); }

    void start(const QStringList &arguments)
    {
        process_.start(QStringLiteral(KVT_PROGRAM), arguments);
    }

    /// The same by way of a shell that runs `preparation` first, "ulimit -n 8" for instance.
    void startBehind(const QString &preparation, const QStringList &arguments)
    {
        process_.start(QStringLiteral("bash"),
                       QStringList{QStringLiteral("-c"),
                                   preparation + QStringLiteral("; exec \"$@\""),
                                   QStringLiteral("bash"), QStringLiteral(KVT_PROGRAM)} +
                           arguments);
    }

    /// The next line of standard output without its end; null when there will be none.
    QByteArray readLine()
    {
        while (!process_.canReadLine())
            if (!process_.waitForReadyRead(LIMIT_ms))
                return QByteArray();
        QByteArray line = process_.readLine();
        line.chop(1);
        return line;
    }

    /// The next line, as JSON; an empty object when it is none.
    QJsonObject readObject() { return QJsonDocument::fromJson(readLine()).object(); }

    /// The next line that contains `part`; null when there is none.
    QByteArray readLineWith(const QByteArray &part)
    {
        QByteArray line = readLine();
        while (!line.isNull() && !line.contains(part))
            line = readLine();
        return line;
    }

    bool isRunning() const { return process_.state() != QProcess::NotRunning; }
    qint64 id() const { return process_.processId(); }

    /// What Ctrl-C sends.
    void interrupt() { signal(SIGINT); }
    void signal(int number) { ::kill(static_cast<pid_t>(process_.processId()), number); }

    /// Waits for the end. Returns the exit status; -1 when it crashed or did not end.
    int finish()
    {
        const bool over =
            process_.state() == QProcess::NotRunning || process_.waitForFinished(LIMIT_ms);
        return over && process_.exitStatus() == QProcess::NormalExit ? process_.exitCode() : -1;
    }

    /// Runs to the end. Returns the exit status.
    int run(const QStringList &arguments)
    {
        start(arguments);
        return finish();
    }

    /// All of standard output that has not been read.
    QByteArray output() { return process_.readAllStandardOutput(); }

    /// All of standard error, without the line that names the driver.
    QByteArray errors()
    {
        const QByteArray text = process_.readAllStandardError();
        return text.startsWith("kvt: driver ") ? text.mid(text.indexOf('\n') + 1) : text;
    }

    /// The same, as one JSON object; empty when it is none.
    QJsonObject outputObject() { return QJsonDocument::fromJson(output()).object(); }

private:
    static constexpr int LIMIT_ms = 30000;

    QProcess process_;
};

/// Runs kvt with words of which one is wrong. Returns an empty text if it ended with status 2, said
/// `named` in a single line of error and printed no data; else what it did instead.
inline QString faultAtBadInput(const QStringList &words, const QString &named)
{
    KvtProcess kvt;
    const int status = kvt.run(words);
    const QString errors = QString::fromUtf8(kvt.errors());
    const QByteArray output = kvt.output();
    if (status != 2)
        return QStringLiteral("status %1, %2").arg(status).arg(errors);
    if (!errors.startsWith(QLatin1String("kvt: ")) || errors.count(QLatin1Char('\n')) != 1)
        return QStringLiteral("not one line of error: ") + errors;
    if (!errors.contains(named))
        return QStringLiteral("not named: ") + errors;
    return output.isEmpty() ? QString() : QStringLiteral("data: ") + QString::fromUtf8(output);
}

/// The same with the words that the row of the test is named by.
inline QString faultAtBadRow(const QString &named)
{
    return faultAtBadInput(QString::fromLatin1(QTest::currentDataTag()).split(QLatin1Char(' ')),
                           named);
}

#endif
