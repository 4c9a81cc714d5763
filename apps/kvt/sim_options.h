// The options of kvt sim.
#ifndef KVT_APPS_KVT_SIM_OPTIONS_H
#define KVT_APPS_KVT_SIM_OPTIONS_H

#include "simulator/serial_port.h"
#include "simulator/simulated_plc.h"

#include <QCommandLineParser>

namespace kvt
{

/// What is simulated, and where.
struct SimOptions {
    enum class Line { Pty, Serial, Tcp };

    Line line = Line::Pty;
    QString device; ///< Serial: the port; Pty: the link, empty for none
    SerialPortSettings serial;
    QString address = QStringLiteral("127.0.0.1"); ///< Tcp: IPv4 address to listen at
    quint16 port = 0;                              ///< Tcp: 0 takes a free one
    QVector<Tag> tags;
    PlcConfig plc;
    quint64 seed = 1;
    int seconds = 0; ///< 0: until Ctrl-C
    bool log = false;
    bool json = false;
};

void addSimOptions(QCommandLineParser *parser);

/// Reads them. False, with a message that names the option or the place in the tag list, when
/// something is wrong.
bool readSimOptions(const QCommandLineParser &parser, SimOptions *options);

} // namespace kvt

#endif
