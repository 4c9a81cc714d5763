// The option --format: how a character travels on a serial line.
#ifndef KVT_APPS_KVT_CHARACTER_FORMAT_H
#define KVT_APPS_KVT_CHARACTER_FORMAT_H

#include "host/serial_line.h"

#include <QCommandLineParser>

namespace kvt
{

/// What stands around the bits of a character, as "8N1" says it.
struct CharacterFormat {
    int dataBits = 8; ///< 7 or 8
    int parity = 0;   ///< 0 none, 1 even, 2 odd
    int stopBits = 1; ///< 1 or 2

    /// Sets the fields of the same names in the settings of a line, whose Parity counts alike.
    template <typename Settings>
    void copyTo(Settings *settings) const
    {
        settings->dataBits = dataBits;
        settings->parity = static_cast<decltype(settings->parity)>(parity);
        settings->stopBits = stopBits;
    }
};

/// Returns the format of a line in the form of --format: "8N1".
QString formatName(const SerialSettings &serial);

/// Adds --format, 8N1 unless it is given.
void addFormatOption(QCommandLineParser *parser);

/// Reads it. False, with a message that names the option, when it is wrong.
bool readFormatOption(const QCommandLineParser &parser, CharacterFormat *format);

} // namespace kvt

#endif
