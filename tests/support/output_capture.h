// Everything that this process prints while a capture lives.
#ifndef KVT_TESTS_SUPPORT_OUTPUT_CAPTURE_H
#define KVT_TESTS_SUPPORT_OUTPUT_CAPTURE_H

#include <QByteArray>
#include <QTemporaryFile>
#include <QtGlobal>

#include <cstdio>

#include <unistd.h>

/// Collects standard output, standard error and Qt's messages from construction until stop().
class OutputCapture
{
public:
    OutputCapture()
    {
        messages().clear();
        handler = install(keepMessage);
        flush();
        file.open();
        output = ::dup(STDOUT_FILENO);
        error = ::dup(STDERR_FILENO);
        ::dup2(file.handle(), STDOUT_FILENO);
        ::dup2(file.handle(), STDERR_FILENO);
    }
    ~OutputCapture() { stop(); }
    OutputCapture(const OutputCapture &) = delete;
    OutputCapture &operator=(const OutputCapture &) = delete;

    /// Ends the capture; returns what was printed.
    QByteArray stop()
    {
        if (output < 0)
            return QByteArray();
        flush();
        ::dup2(output, STDOUT_FILENO);
        ::dup2(error, STDERR_FILENO);
        ::close(output);
        ::close(error);
        output = -1;
        install(handler);
        file.seek(0);
        return file.readAll() + messages();
    }

private:
    static QByteArray &messages()
    {
        static QByteArray all;
        return all;
    }
    static void flush() { static_cast<void>(std::fflush(nullptr)); }

#if QT_VERSION < 0x050000
    typedef QtMsgHandler Handler;
    static Handler install(Handler next)
    {
        return qInstallMsgHandler(next);
    }
    static void keepMessage(QtMsgType, const char *text)
    {
        messages() += QByteArray(text) + '\n';
    }
#else
    typedef QtMessageHandler Handler;
    static Handler install(Handler next)
    {
        return qInstallMessageHandler(next);
    }
    static void keepMessage(QtMsgType, const QMessageLogContext &, const QString &text)
    {
        messages() += text.toUtf8() + '\n';
    }
#endif
    QTemporaryFile file;
    Handler handler = nullptr;
    int output = -1;
    int error = -1;
};

#endif
