// What the masters and the slaves of the comparison say to each other.
#ifndef KVT_BENCH_PEERS_WIRE_H
#define KVT_BENCH_PEERS_WIRE_H

#include <QByteArray>

namespace kvt
{

enum class WireProtocol {
    Ascii,    ///< this project's own
    ModbusRtu ///< that of the peers
};

/// The one transaction of a run: a word is read from station 1.
struct WireTransaction {
    QByteArray request;
    QByteArray reply;

    int bytes() const { return request.size() + reply.size(); }
};

/// The word that every reply carries.
constexpr int WIRE_VALUE = 0x1234;

inline WireTransaction wireTransaction(WireProtocol protocol)
{
    if (protocol == WireProtocol::Ascii)
        return {QByteArray("\x05"
                           "012000\r"),
                QByteArray("\x06"
                           "011234\r")};
    return {QByteArray::fromHex("01030000 0001 840A"), QByteArray::fromHex("010302 1234 B533")};
}

} // namespace kvt

#endif
