// kvt decode: frames in hexadecimal, or a trace, explained.
#include "apps/kvt/commands.h"
#include "apps/kvt/console.h"
#include "apps/kvt/exit_codes.h"
#include "apps/kvt/frame_values.h"
#include "apps/kvt/moment_option.h"
#include "apps/kvt/options.h"
#include "apps/kvt/trace_filter.h"
#include "apps/kvt/trace_text.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <cstdio>

namespace kvt
{

namespace
{

constexpr int LONGEST_FRAME = 4096;
constexpr qint64 LONGEST_LINE = 64 * 1024;

struct DecodeOptions {
    QVector<Tag> tags;
    bool json = false;
    TraceSelection selection;
    Moment from;
    Moment to;

    bool selects() const { return !selection.isAll() || from.isGiven() || to.isGiven(); }
};

// Reads "05 30" or "0530" or "05:30".
bool readFrame(const QString &text, QByteArray *frame)
{
    static const QRegularExpression form(QStringLiteral("\\A([0-9A-Fa-f]{2}[ :]*)+\\z"));
    if (!form.match(text.trimmed()).hasMatch())
        return false;
    *frame = QByteArray::fromHex(text.toLatin1());
    return frame->size() <= LONGEST_FRAME;
}

// Says why a word is none of what can be decoded.
QString frameError(const QString &text)
{
    static const QRegularExpression digits(QStringLiteral("\\A[0-9A-Fa-f :]+\\z"));
    if (digits.match(text).hasMatch() && text.size() <= 2 * LONGEST_FRAME)
        return QStringLiteral("half a byte is missing: each has two hexadecimal digits");
    return QStringLiteral("no frame of 1 to %1 bytes in hexadecimal, nor a file")
        .arg(LONGEST_FRAME);
}

// Words of two digits each are the bytes of one frame that was not quoted.
QStringList frameTexts(const QStringList &words)
{
    const bool areBytes = std::all_of(words.begin(), words.end(),
                                      [](const QString &word) { return word.size() == 2; });
    return areBytes ? QStringList(words.join(QLatin1Char(' '))) : words;
}

// Explains one frame after the other; a reply is held against the request before it.
class FrameDecoder
{
public:
    explicit FrameDecoder(const DecodeOptions &options) : options_(options), values_(options.tags)
    {
    }

    bool decode(const QString &text)
    {
        QByteArray frame;
        if (!readFrame(text, &frame)) {
            printError(QStringLiteral("decode: \"%1\": %2").arg(text.left(60), frameError(text)));
            return false;
        }
        FrameExplanation explanation = explainFrame(frame, request_, options_.tags);
        values_.addTo(frame, request_, &explanation);
        printOut(options_.json ? jsonLine(explanationToJson(frame, explanation))
                               : explanationText(frame, explanation));
        request_ = explanation.kind == FrameKind::Request ? frame : QByteArray();
        ++frames_;
        wrong_ += explanation.problems.isEmpty() ? 0 : 1;
        return true;
    }

    void summarize() const
    {
        if (options_.json)
            printOut(jsonLine(
                {{QStringLiteral("summary"), QJsonObject{{QStringLiteral("frames"), frames_},
                                                         {QStringLiteral("wrong"), wrong_}}}}));
    }

private:
    DecodeOptions options_;
    FrameValues values_;
    QByteArray request_;
    int frames_ = 0;
    int wrong_ = 0; // those with problems
};

int decodeFrames(const QStringList &words, const DecodeOptions &options)
{
    FrameDecoder decoder(options);
    const QStringList texts = frameTexts(words);
    const bool good = std::all_of(texts.begin(), texts.end(),
                                  [&](const QString &text) { return decoder.decode(text); });
    if (good)
        decoder.summarize();
    return good ? EXIT_GOOD : EXIT_USAGE;
}

int decodeInput(const DecodeOptions &options)
{
    FrameDecoder decoder(options);
    QFile input;
    if (!input.open(stdin, QIODevice::ReadOnly))
        return EXIT_USAGE;
    bool any = false;
    for (QByteArray line = input.readLine(LONGEST_LINE); !line.isEmpty() && !outputFailed();
         line = input.readLine(LONGEST_LINE)) {
        if (line.trimmed().isEmpty())
            continue;
        if (!decoder.decode(QString::fromLatin1(line).trimmed()))
            return EXIT_USAGE;
        any = true;
    }
    if (any)
        decoder.summarize();
    else
        printError(QStringLiteral("decode: there is no frame on standard input"));
    return any ? EXIT_GOOD : EXIT_USAGE;
}

// One line; empty for a record that says nothing.
QString jsonOf(TraceText *trace, const TraceRecord &record)
{
    const QJsonObject object = trace->json(record);
    return object.isEmpty() ? QString() : jsonLine(object);
}

// The options with their times as those of the run. A time of day is that which comes first in the
// file, which may begin days after the run.
bool placeTimes(const QString &path, const QDateTime &startedAt, const TraceRecord &first,
                TraceSelection *selection, const DecodeOptions &options)
{
    if (!options.from.isGiven() && !options.to.isGiven())
        return true;
    if (!startedAt.isValid()) {
        printError(QStringLiteral("%1: it does not tell the time of day, which --from and --to go "
                                  "by")
                       .arg(path));
        return false;
    }
    QDateTime earliest = startedAt.addMSecs(static_cast<qint64>(elapsed_ms(first)));
    if (options.from.isGiven()) {
        earliest = options.from.from(earliest);
        selection->from_ms = static_cast<double>(startedAt.msecsTo(earliest));
    }
    if (!options.to.isGiven())
        return true;
    selection->to_ms = static_cast<double>(startedAt.msecsTo(options.to.from(earliest)));
    if (selection->to_ms < selection->from_ms)
        printError(QStringLiteral("--to: it is before --from"));
    return selection->to_ms >= selection->from_ms;
}

int decodeTrace(const QString &path, const DecodeOptions &options)
{
    TraceReader reader;
    QString error;
    if (!reader.open(path, &error)) {
        printError(QStringLiteral("%1: %2").arg(path, error));
        return EXIT_USAGE;
    }
    TraceText trace(options.tags, reader.startedAt());
    TraceSelection selection = options.selection;
    TraceRecord record;
    bool any = reader.next(&record);
    if (any && !placeTimes(path, reader.startedAt(), record, &selection, options))
        return EXIT_USAGE;
    TraceFilter filter(selection);
    if (!options.json)
        printOut(trace.firstLine());
    for (; any && !outputFailed(); any = reader.next(&record))
        printOut(filter.take(record, options.json ? jsonOf(&trace, record) : trace.line(record)));
    printOut(filter.finish());
    if (!reader.error().isEmpty()) {
        printError(QStringLiteral("%1: %2").arg(path, reader.error()));
        return EXIT_USAGE;
    }
    if (options.json)
        printOut(jsonLine({{QStringLiteral("summary"),
                            QJsonObject{{QStringLiteral("exchanges"), record.exchange},
                                        {QStringLiteral("records"), reader.records()}}}}));
    return EXIT_GOOD;
}

int decodeWords(const QStringList &words, const DecodeOptions &options)
{
    if (words.isEmpty()) {
        printError(QStringLiteral("decode: no frame and no file is given, see kvt decode --help"));
        return EXIT_USAGE;
    }
    if (words.size() == 1 && QFileInfo(words.first()).isFile())
        return decodeTrace(words.first(), options);
    if (options.selects()) {
        printError(QStringLiteral("decode: --station, --failures, --exchanges, --from and --to "
                                  "choose from a trace, and \"%1\" is no file")
                       .arg(words.first()));
        return EXIT_USAGE;
    }
    if (words == QStringList(QStringLiteral("-")))
        return decodeInput(options);
    return decodeFrames(words, options);
}

// Reads "5", "5-" or "5-20".
bool readExchanges(const QString &text, TraceSelection *selection)
{
    static const QRegularExpression form(QStringLiteral("\\A([0-9]{1,9})(-?)([0-9]{0,9})\\z"));
    const QRegularExpressionMatch match = form.match(text);
    selection->first = match.captured(1).toInt();
    if (match.captured(2).isEmpty())
        selection->last = selection->first;
    else if (!match.captured(3).isEmpty())
        selection->last = match.captured(3).toInt();
    if (match.hasMatch() && selection->first > 0 && selection->first <= selection->last &&
        (!match.captured(2).isEmpty() || match.captured(3).isEmpty()))
        return true;
    printError(QStringLiteral("--exchanges: \"%1\" is not FIRST-LAST, FIRST- or one number, from 1")
                   .arg(text));
    return false;
}

bool readSelection(const QCommandLineParser &parser, DecodeOptions *options)
{
    TraceSelection *selection = &options->selection;
    selection->failures = parser.isSet(QStringLiteral("failures"));
    return readNumberIfSet(parser, QStringLiteral("station"), 0, 255, &selection->station) &&
           (!parser.isSet(QStringLiteral("exchanges")) ||
            readExchanges(parser.value(QStringLiteral("exchanges")), selection)) &&
           readMoment(parser, QStringLiteral("from"), &options->from) &&
           readMoment(parser, QStringLiteral("to"), &options->to);
}

void addOptions(QCommandLineParser *parser)
{
    parser->addPositionalArgument(
        QStringLiteral("FRAME"),
        QStringLiteral("Bytes in hexadecimal, with or without blanks, at most 4096; \"-\" reads "
                       "frames from standard input, one a line; or the file of a trace."),
        QStringLiteral("FRAME... | - | FILE"));
    parser->addOption(
        {QStringLiteral("tags"),
         QStringLiteral("Name the tags of this list that a request concerns, and their values."),
         QStringLiteral("FILE")});
    parser->addOption({QStringLiteral("json"), QStringLiteral("Print JSON, one object per line.")});
    parser->addOption({QStringLiteral("station"),
                       QStringLiteral("Of a trace: only exchanges with this station, 0 to 255."),
                       QStringLiteral("N")});
    parser->addOption({QStringLiteral("failures"),
                       QStringLiteral("Of a trace: only exchanges with an attempt that failed.")});
    parser->addOption({QStringLiteral("exchanges"),
                       QStringLiteral("Of a trace: only exchanges with these numbers, or a single "
                                      "one, from 1; LAST may be left out."),
                       QStringLiteral("FIRST[-[LAST]]")});
    parser->addOption({QStringLiteral("from"),
                       QStringLiteral("Of a trace: only exchanges from this time on, HH:MM or "
                                      "HH:MM:SS, the first in the file, or ISO 8601."),
                       QStringLiteral("TIME")});
    parser->addOption({QStringLiteral("to"),
                       QStringLiteral("Of a trace: only exchanges until this time, of the same "
                                      "forms, the first behind --from."),
                       QStringLiteral("TIME")});
}

} // namespace

int runDecode(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Explains frames of the line field by field: requests, replies, refusals and envelopes. "
        "A reply behind a request is held against it. Of a trace, every record is explained in a "
        "line."));
    addOptions(&parser);
    int exitCode = EXIT_GOOD;
    if (parseOptions(&parser, QStringLiteral("decode"), arguments, &exitCode))
        return exitCode;
    DecodeOptions options;
    options.json = parser.isSet(QStringLiteral("json"));
    if (!readSelection(parser, &options))
        return EXIT_USAGE;
    if (parser.isSet(QStringLiteral("tags")) &&
        !readTags(parser.value(QStringLiteral("tags")), &options.tags))
        return EXIT_USAGE;
    return decodeWords(parser.positionalArguments(), options);
}

} // namespace kvt
