// What kvt decode makes of frames and of traces: any bytes are explained, with nothing left out,
// and what the driver sends and docs/protocol.md asks for in reply is found right.
#include "apps/kvt/frames/explainers.h"
#include "apps/kvt/trace_filter.h"
#include "apps/kvt/trace_text.h"
#include "rig/plant.h"
#include "tests/fuzz/support/fuzz_input.h"
#include "tests/fuzz/support/good_reply.h"
#include "tests/fuzz/support/linked_driver.h"
#include "tests/fuzz/support/memory_file.h"

#include <QJsonDocument>

namespace
{

const QVector<kvt::Tag> &plant()
{
    static const QVector<kvt::Tag> tags = kvt::makePlant({2, 4, 2, 1});
    return tags;
}

void checkJson(const QJsonObject &object)
{
    const QByteArray text = QJsonDocument(object).toJson(QJsonDocument::Compact);
    require(!text.contains('\n'), "JSON is one line");
    // As text: of a whole number that a double holds, JSON makes an integer.
    require(QJsonDocument::fromJson(text).toJson(QJsonDocument::Compact) == text,
            "JSON reads back equal");
}

kvt::FrameExplanation explained(const QByteArray &frame, const QByteArray &request)
{
    const kvt::FrameExplanation explanation = kvt::explainFrame(frame, request, plant());
    QByteArray covered;
    for (const kvt::FrameField &field : explanation.fields) {
        require(field.offset == covered.size() && !field.bytes.isEmpty(), "fields are in order");
        covered += field.bytes;
    }
    require(covered == frame, "all bytes of a frame are explained");
    require(explanation.station >= -1 && explanation.station <= 255, "a station is one or none");
    require(!explanation.summary.isEmpty(), "a frame has a summary");
    require(kvt::explanationText(frame, explanation).endsWith(QLatin1Char('\n')), "text is lines");
    checkJson(kvt::explanationToJson(frame, explanation));
    return explanation;
}

// A request of the driver, with the good reply.
void checkOwnFrames(FuzzInput *input)
{
    static ComInfo info;
    resetDriver(info);
    info.purgeByStation = 1;
    info.hostWriteMode = HOST_WRITE_TO_PLC;
    info.remoteMode = input->once(8) ? 1 : 0;
    const int station = input->byte();
    const int area = input->below(3);
    const QString address = QStringLiteral("%1.%2.%3.%4")
                                .arg(input->byte())
                                .arg(input->below(16))
                                .arg(input->below(area == AREA_C ? 2 : 256))
                                .arg(area == AREA_C ? input->below(70) : 0);
    if (area != AREA_C && input->flag()) {
        QByteArray value = input->bytes(2);
        SetRegisterData(QString(), area, address, station, value, 1, 0, 1);
    } else {
        RW_VAR var;
        var.areaType = area;
        var.addressText = address;
        var.station = station;
        AddListOnceReadVar(&var, 0);
    }
    const Protocol *const request = ComCommunication();
    require(request != nullptr, "a good address makes a frame");
    const kvt::FrameExplanation asked = explained(request->frame, QByteArray());
    require(asked.problems.isEmpty() && asked.station == station, "the driver's frames are right");
    if (info.remoteMode != 0)
        return;
    const QByteArray reply = goodReply(*request, input->byte());
    const kvt::FrameExplanation answered = explained(reply, request->frame);
    require(answered.kind == kvt::FrameKind::Reply && answered.station == station &&
                answered.problems.isEmpty(),
            "a good reply to them is right");
}

void checkTrace(const QString &path)
{
    kvt::TraceReader reader;
    QString error;
    if (!reader.open(path, &error))
        return;
    kvt::TraceText text(plant(), reader.startedAt());
    kvt::TraceText again(plant(), reader.startedAt());
    kvt::TraceFilter all{kvt::TraceSelection()};
    QString filtered;
    QString whole;
    kvt::TraceRecord record;
    while (reader.next(&record)) {
        const QString line = text.line(record);
        require(line.isEmpty() || line.endsWith(QLatin1Char('\n')), "a record is lines of text");
        whole += line;
        filtered += all.take(record, line);
        checkJson(again.json(record));
    }
    require(filtered + all.finish() == whole, "without a selection all is shown");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static MemoryFile file;
    FuzzInput input(data, size);
    switch (input.below(4)) {
    case 0:
        file.setContent(input.rest());
        checkTrace(file.path());
        break;
    case 1:
        checkOwnFrames(&input);
        break;
    case 2:
        explained(input.rest(), QByteArray());
        break;
    default:
        const QByteArray request = input.bytes(input.below(32));
        explained(input.rest(), request);
        break;
    }
    return 0;
}
