// What a request frame asks of the PLC: the simulator's own reading of the two kinds of frames.
#ifndef KVT_SIMULATOR_PLC_REQUEST_H
#define KVT_SIMULATOR_PLC_REQUEST_H

#include <QByteArray>
#include <QVector>

namespace kvt
{

/// A request frame taken apart.
struct PlcRequest {
    enum class Kind {
        Bad,  ///< wrong length or bad digits
        Read, ///< also the command without a value, which looks the same
        Write
    };

    Kind kind = Kind::Bad;
    int station = -1;    ///< 0 to 255; -1 when even this cannot be read
    int command = 0;     ///< text frames: the command byte
    int addressByte = 0; ///< text frames: the address byte
    int area = 0;        ///< area code: of an envelope, or by the length of a text write (0 or 1)
    qint32 number = 0;   ///< envelopes: the numeric address
    int mark = 0;        ///< byte that an acknowledgement repeats: the command, or the checksum
    QVector<int> values; ///< values of a write, at rising addresses
};

/// Takes a text frame (ENQ to CR) apart.
PlcRequest parseTextFrame(const QByteArray &frame);

/// Takes a complete envelope apart.
PlcRequest parseEnvelope(const QByteArray &envelope);

/// True when `bytes` is an envelope whole: the length fits its first byte, the checksum its rest.
bool envelopeIsComplete(const QByteArray &bytes);

/// True when `bytes` can never become an envelope, whatever follows.
bool envelopeIsBroken(const QByteArray &bytes);

} // namespace kvt

#endif
