// kvt decode: frames in hexadecimal, or a trace, explained.
#include "apps/kvt/commands.h"
#include "apps/kvt/console.h"
#include "apps/kvt/exit_codes.h"
#include "apps/kvt/frames/frame_explanation.h"
#include "apps/kvt/options.h"
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
    explicit FrameDecoder(const DecodeOptions &options) : options_(options) {}

    bool decode(const QString &text)
    {
        QByteArray frame;
        if (!readFrame(text, &frame)) {
            printError(QStringLiteral("decode: \"%1\": %2").arg(text.left(60), frameError(text)));
            return false;
        }
        const FrameExplanation explanation = explainFrame(frame, request_, options_.tags);
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

int decodeTrace(const QString &path, const DecodeOptions &options)
{
    TraceReader reader;
    QString error;
    if (!reader.open(path, &error)) {
        printError(QStringLiteral("%1: %2").arg(path, error));
        return EXIT_USAGE;
    }
    TraceText trace(options.tags, reader.startedAt());
    TraceRecord record;
    while (!outputFailed() && reader.next(&record)) {
        if (!options.json)
            printOut(trace.line(record));
        else if (const QJsonObject object = trace.json(record); !object.isEmpty())
            printOut(jsonLine(object));
    }
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
    if (words == QStringList(QStringLiteral("-")))
        return decodeInput(options);
    if (words.size() == 1 && QFileInfo(words.first()).isFile())
        return decodeTrace(words.first(), options);
    return decodeFrames(words, options);
}

} // namespace

int runDecode(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Explains frames of the line field by field: requests, replies, refusals and envelopes. "
        "A reply behind a request is held against it. Of a trace, every record is explained in a "
        "line."));
    parser.addPositionalArgument(
        QStringLiteral("FRAME"),
        QStringLiteral("Bytes in hexadecimal, with or without blanks, at most 4096; \"-\" reads "
                       "frames from standard input, one a line; or the file of a trace."),
        QStringLiteral("FRAME... | - | FILE"));
    parser.addOption({QStringLiteral("tags"),
                      QStringLiteral("Name the tags of this list that a request concerns."),
                      QStringLiteral("FILE")});
    parser.addOption({QStringLiteral("json"), QStringLiteral("Print JSON, one object per line.")});
    int exitCode = EXIT_GOOD;
    if (parseOptions(&parser, QStringLiteral("decode"), arguments, &exitCode))
        return exitCode;
    DecodeOptions options;
    options.json = parser.isSet(QStringLiteral("json"));
    if (parser.isSet(QStringLiteral("tags")) &&
        !readTags(parser.value(QStringLiteral("tags")), &options.tags))
        return EXIT_USAGE;
    return decodeWords(parser.positionalArguments(), options);
}

} // namespace kvt
