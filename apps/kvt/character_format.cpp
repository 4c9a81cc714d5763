#include "apps/kvt/character_format.h"

#include "apps/kvt/console.h"

#include <QRegularExpression>

namespace kvt
{

namespace
{

const QString FORMAT = QStringLiteral("format");
const QString PARITIES = QStringLiteral("NEO");

} // namespace

void addFormatOption(QCommandLineParser *parser)
{
    parser->addOption({FORMAT,
                       QStringLiteral("Data bits 7 or 8, parity N, E or O, stop bits 1 or 2 "
                                      "(default: 8N1)."),
                       QStringLiteral("FORMAT"), QStringLiteral("8N1")});
}

bool readFormatOption(const QCommandLineParser &parser, CharacterFormat *format)
{
    static const QRegularExpression form(QStringLiteral("\\A([78])([NEO])([12])\\z"),
                                         QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = form.match(parser.value(FORMAT));
    if (!match.hasMatch()) {
        printError(
            QStringLiteral("--format: \"%1\" is not 7 or 8, N, E or O, 1 or 2, for example 8N1")
                .arg(parser.value(FORMAT)));
        return false;
    }
    format->dataBits = match.captured(1).toInt();
    format->parity = PARITIES.indexOf(match.captured(2).toUpper());
    format->stopBits = match.captured(3).toInt();
    return true;
}

QString formatName(const SerialSettings &serial)
{
    return QStringLiteral("%1%2%3")
        .arg(serial.dataBits)
        .arg(PARITIES.at(static_cast<int>(serial.parity)))
        .arg(serial.stopBits);
}

} // namespace kvt
