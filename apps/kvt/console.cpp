#include "apps/kvt/console.h"

#include "apps/kvt/common/counted.h"
#include "apps/kvt/exit_codes.h"
#include "apps/kvt/run_end.h"
#include "apps/kvt/stop_signal.h"
#include "apps/kvt/table/printable.h"
#include "apps/kvt/wall_clock.h"
#include "host/host_time.h"
#include "host/outlet.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QStringList>
#include <QThread>

#include <atomic>
#include <mutex>

#include <unistd.h>

namespace kvt
{

namespace
{

constexpr qint64 QUEUE_bytes = 1024 * 1024;
constexpr qint64 ORDER_ns = milliseconds(100);
constexpr qint64 SHORT_DRAIN_ns = milliseconds(300);

constexpr int MOST_HELD = 100; // more would drive the table off the terminal

std::mutex messageMutex; // for the three below
bool messagesAreHeld = false;
QStringList heldMessages;
int lostMessages = 0;

const QString LINE_ENDS_AND_TABS = QStringLiteral("\n\t");

std::atomic<bool> outputMayWait{true};
std::atomic<bool> lossReported{false};

// Standard output or standard error. What runs on ends when its output is lost.
class Stream final : public Sink
{
public:
    Stream(int descriptor, bool quitWhenLost) : descriptor_(descriptor), quitWhenLost_(quitWhenLost)
    {
    }

    QString write(const QByteArray &text) override
    {
        const QString error = writeAll(descriptor_, text);
        if (!error.isEmpty() && quitWhenLost_)
            quitEventLoop();
        return error;
    }

private:
    int descriptor_;
    bool quitWhenLost_;
};

Outlet &output()
{
    static Outlet outlet(std::make_shared<Stream>(STDOUT_FILENO, true), QUEUE_bytes);
    return outlet;
}

Outlet &errors()
{
    static Outlet outlet(std::make_shared<Stream>(STDERR_FILENO, false), QUEUE_bytes);
    return outlet;
}

// What the main thread prints on both streams stays in its order on a terminal that shows both,
// unless one of them is stuck.
void letGoFirst(Outlet *other)
{
    static bool isStuck = false;
    const QCoreApplication *application = QCoreApplication::instance();
    if (application == nullptr || QThread::currentThread() != application->thread())
        return;
    isStuck = isStuck && other->isBusy();
    isStuck = isStuck || !other->drain(ORDER_ns);
}

void print(Outlet *outlet, const QString &text)
{
    letGoFirst(outlet == &output() ? &errors() : &output());
    outlet->add(text.toUtf8(), outputMayWait ? Outlet::WhenFull::Wait : Outlet::WhenFull::Drop);
}

void writeMessage(const QString &text)
{
    print(&errors(), QStringLiteral("kvt: %1\n").arg(printable(text)));
}

// The latest count.
void holdMessage(const QString &text)
{
    heldMessages.append(text);
    if (heldMessages.size() <= MOST_HELD)
        return;
    heldMessages.removeFirst();
    ++lostMessages;
}

// Why standard output is not complete; empty when it is.
QString outputProblem()
{
    if (!output().error().isEmpty())
        return output().error();
    if (output().dropped() > 0)
        return counted(output().dropped(), "text was dropped, nobody read it in time",
                       "texts were dropped, nobody read them in time");
    return output().isBusy() ? QStringLiteral("nobody reads the last texts") : QString();
}

} // namespace

void printOut(const QString &text)
{
    print(&output(), printable(text, LINE_ENDS_AND_TABS));
}

bool outputIsBusy()
{
    return output().isBusy();
}

bool outputFailed()
{
    return !output().error().isEmpty();
}

bool outputWasTaken()
{
    return output().drain(SHORT_DRAIN_ns) && outputProblem().isEmpty();
}

void letOutputWait(bool mayWait)
{
    outputMayWait = mayWait;
}

qint64 drainTime_ns()
{
    return StopSignal::wasRequested() ? SHORT_DRAIN_ns : seconds(5);
}

void reportLoss(const QString &text)
{
    lossReported = true;
    printEvent(text);
}

int finishOutput(int exitCode)
{
    output().drain(StopSignal::wasRequested() ? SHORT_DRAIN_ns : NEVER);
    const QString problem = outputProblem();
    if (!problem.isEmpty()) {
        lossReported = true;
        printError(QStringLiteral("standard output: %1").arg(problem));
    }
    if (errors().dropped() > 0)
        printError(counted(errors().dropped(), "message was dropped, nobody read it in time",
                           "messages were dropped, nobody read them in time"));
    errors().drain(StopSignal::wasRequested() ? SHORT_DRAIN_ns : NEVER);
    return exitCode == EXIT_GOOD && lossReported ? EXIT_NO_ANSWER : exitCode;
}

QString jsonLine(const QJsonObject &object)
{
    return printableJson(QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact))) +
           QLatin1Char('\n');
}

void printError(const QString &text)
{
    const std::lock_guard<std::mutex> lock(messageMutex);
    if (messagesAreHeld)
        holdMessage(text);
    else
        writeMessage(text);
}

void printProgress(const QString &text)
{
    errors().add(text.toUtf8(), Outlet::WhenFull::Drop);
}

void printEvent(const QString &text)
{
    printError(isoNow() + QLatin1Char(' ') + text);
}

HeldMessages::HeldMessages()
{
    const std::lock_guard<std::mutex> lock(messageMutex);
    messagesAreHeld = true;
}

HeldMessages::~HeldMessages()
{
    const std::lock_guard<std::mutex> lock(messageMutex);
    if (lostMessages > 0)
        writeMessage(counted(lostMessages, "message ahead of these was left out",
                             "messages ahead of these were left out"));
    for (const QString &text : heldMessages)
        writeMessage(text);
    heldMessages.clear();
    lostMessages = 0;
    messagesAreHeld = false;
}

QString HeldMessages::latest() const
{
    const std::lock_guard<std::mutex> lock(messageMutex);
    return heldMessages.isEmpty() ? QString() : heldMessages.last();
}

} // namespace kvt
