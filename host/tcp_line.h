// A line through a serial device server, reached by TCP.
#ifndef KVT_HOST_TCP_LINE_H
#define KVT_HOST_TCP_LINE_H

#include "host/line.h"
#include "host/name_lookup.h"

namespace kvt
{

/// Settings of a TCP line.
struct TcpSettings {
    QString host;                ///< address or name; a name is looked up anew at each opening
    int port = 0;                ///< 1 to 65535
    qint64 characterTime_ns = 0; ///< of the serial line behind the server; 0 when not known
    bool paced = false;          ///< that line keeps its pace, so that sooner bytes answer nothing

    /// What is wrong with the settings; empty when all is well.
    QString error() const;
};

/// A connection without delay of small packets, to the first of the host's addresses that takes it.
/// A peer that vanishes without a word is noticed within some ten seconds.
class TcpLine final : public Line
{
public:
    /// `lookup` finds the addresses of a name, on a thread of its own.
    explicit TcpLine(const TcpSettings &settings, HostLookup lookup = lookUpHost);

    Opening open(QString *error) override;
    short openingEvents() const override;
    Opening finishOpening(QString *error) override;
    Opening giveUpOpening(QString *error) override;
    bool write(const QByteArray &bytes) override;
    qint64 characterTime_ns() const override { return settings_.characterTime_ns; }
    bool isPaced() const override { return settings_.paced && settings_.characterTime_ns > 0; }
    QString name() const override;

private:
    Opening connectNext(QString *error);

    TcpSettings settings_;
    HostLookup lookup_;
    std::unique_ptr<NameLookup> lookingUp_; // while it is awaited
    FoundAddresses found_;                  // those that have not been tried
};

} // namespace kvt

#endif
