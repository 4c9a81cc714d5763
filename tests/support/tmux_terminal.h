// A program on a terminal whose screen can be looked at, resized and typed into.
#ifndef KVT_TESTS_SUPPORT_TMUX_TERMINAL_H
#define KVT_TESTS_SUPPORT_TMUX_TERMINAL_H

#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

/// A tmux server of its own with one window; ends with it.
class TmuxTerminal
{
public:
    /// Runs a shell command in a terminal of that size. What it leaves behind stays to be seen.
    TmuxTerminal(int columns, int lines, const QString &command)
    {
        run({QStringLiteral("-f"), QStringLiteral("/dev/null"), QStringLiteral("new-session"),
             QStringLiteral("-d"), QStringLiteral("-x"), QString::number(columns),
             QStringLiteral("-y"), QString::number(lines),
             command + QStringLiteral("; echo \"[status $?]\"; read -r line")});
    }
    ~TmuxTerminal() { run({QStringLiteral("kill-server")}); }
    TmuxTerminal(const TmuxTerminal &) = delete;
    TmuxTerminal &operator=(const TmuxTerminal &) = delete;

    void resize(int columns, int lines)
    {
        run({QStringLiteral("resize-window"), QStringLiteral("-x"), QString::number(columns),
             QStringLiteral("-y"), QString::number(lines)});
    }

    /// Presses keys, by tmux's names: "PageDown", "q", "Enter".
    void press(const QStringList &keys) { run(QStringList(QStringLiteral("send-keys")) + keys); }

    /// What the screen shows, without the blanks behind each line.
    QStringList lines() { return capture({}).split(QLatin1Char('\n')); }
    QString text() { return capture({}); }

    /// The same with the escape sequences that colour it.
    QString colouredText() { return capture({QStringLiteral("-e")}); }

    /// True when the program has ended with that status.
    bool hasEnded(int status) { return text().contains(QStringLiteral("[status %1]").arg(status)); }

private:
    QString capture(const QStringList &options)
    {
        QString text =
            run(QStringList{QStringLiteral("capture-pane"), QStringLiteral("-p")} + options);
        text.chop(1); // the last line's end
        return text;
    }

    QString run(const QStringList &words)
    {
        QProcess tmux;
        tmux.start(QStringLiteral("tmux"),
                   QStringList{QStringLiteral("-S"), folder_.filePath(QStringLiteral("socket"))} +
                       words);
        tmux.waitForFinished();
        return QString::fromUtf8(tmux.readAllStandardOutput());
    }

    QTemporaryDir folder_;
};

#endif
