#include "apps/kvt/console.h"

#include "apps/kvt/exit_codes.h"
#include "apps/kvt/table/printable.h"
#include "apps/kvt/wall_clock.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QStringList>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <mutex>

namespace kvt
{

namespace
{

std::atomic<int> outputError{0}; // errno of the first text that was lost

std::mutex messageMutex; // for the two below
bool messagesAreHeld = false;
QStringList heldMessages;

const QString LINE_ENDS_AND_TABS = QStringLiteral("\n\t");

void writeMessage(const QString &text)
{
    std::fprintf(stderr, "kvt: %s\n", printable(text).toUtf8().constData());
}

} // namespace

void printOut(const QString &text)
{
    const QByteArray bytes = printable(text, LINE_ENDS_AND_TABS).toUtf8();
    const auto size = static_cast<size_t>(bytes.size());
    const bool written =
        std::fwrite(bytes.constData(), 1, size, stdout) == size && std::fflush(stdout) == 0;
    int none = 0;
    if (!written && outputError.compare_exchange_strong(none, errno))
        QMetaObject::invokeMethod(QCoreApplication::instance(), &QCoreApplication::quit,
                                  Qt::QueuedConnection);
}

bool outputFailed()
{
    return outputError != 0;
}

int checkOutput(int exitCode)
{
    if (!outputFailed())
        return exitCode;
    printError(QStringLiteral("standard output: %1").arg(qt_error_string(outputError)));
    return exitCode == EXIT_GOOD ? EXIT_NO_ANSWER : exitCode;
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
        heldMessages.append(text);
    else
        writeMessage(text);
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
    for (const QString &text : heldMessages)
        writeMessage(text);
    heldMessages.clear();
    messagesAreHeld = false;
}

QString HeldMessages::latest() const
{
    const std::lock_guard<std::mutex> lock(messageMutex);
    return heldMessages.isEmpty() ? QString() : heldMessages.last();
}

} // namespace kvt
