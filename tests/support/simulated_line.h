// A simulated PLC, run by kvt sim, to which commands of kvt are pointed.
#ifndef KVT_TESTS_SUPPORT_SIMULATED_LINE_H
#define KVT_TESTS_SUPPORT_SIMULATED_LINE_H

#include "tests/support/kvt_process.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

/// One on a pseudo-terminal with a link, or on a free TCP port. Its tags: a byte X 1.2.0, a word
/// D 5.2.1 and a signed word D 3.4.0 at station 1, a word D 5.2.1 and a block's byte C 7.0.1.4 at
/// station 2.
class SimulatedLine
{
public:
    enum class Kind { Pty, Tcp };

    explicit SimulatedLine(Kind kind, const QStringList &more = QStringList())
    {
        QFile file(tagFile());
        if (!file.open(QIODevice::WriteOnly))
            return;
        file.write("name,area,address,station,type\n"
                   "valve,X,1.2.0,1,u8\n"
                   "level,D,5.2.1,1,u16\n"
                   "offset,D,3.4.0,1,s16\n"
                   "speed,D,5.2.1,2,u16\n"
                   "recipe,C,7.0.1.4,2,u8\n");
        file.close();
        QStringList arguments = {QStringLiteral("sim"), QStringLiteral("--tags"), tagFile()};
        if (kind == Kind::Pty)
            arguments << QStringLiteral("--pty") << folder_.filePath(QStringLiteral("plc"));
        else
            arguments << QStringLiteral("--tcp") << QStringLiteral("0");
        plc_.start(arguments + more);
        const QString name = QString::fromLocal8Bit(plc_.readLine());
        line_ << (kind == Kind::Pty ? QStringLiteral("--serial") : QStringLiteral("--tcp")) << name;
        ready_ = !name.isEmpty();
    }

    bool isReady() const { return ready_; }

    QString tagFile() const { return folder_.filePath(QStringLiteral("tags.csv")); }
    QString filePath(const QString &name) const { return folder_.filePath(name); }

    /// The process of kvt sim.
    KvtProcess &plc() { return plc_; }

    /// The words that point a command to this line, behind `command`, words parted by blanks.
    QStringList arguments(const QString &command) const
    {
        return command.split(QLatin1Char(' ')) + line_;
    }

private:
    QTemporaryDir folder_;
    KvtProcess plc_;
    QStringList line_;
    bool ready_ = false;
};

Q_DECLARE_METATYPE(SimulatedLine::Kind)

/// A column "kind" with a row for each of the two lines.
inline void addLineRows()
{
    QTest::addColumn<SimulatedLine::Kind>("kind");
    QTest::newRow("pty") << SimulatedLine::Kind::Pty;
    QTest::newRow("tcp") << SimulatedLine::Kind::Tcp;
}

#endif
