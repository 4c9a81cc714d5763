// Traces of a run: any file is read to its end or to the line that is none, and put to the driver
// again. Texts and bytes that a trace holds read back equal.
#include "host/trace_replay.h"
#include "tests/fuzz/support/fuzz_input.h"
#include "tests/fuzz/support/linked_driver.h"
#include "tests/fuzz/support/memory_file.h"

namespace
{

// Words read the same when they are written again.
void checkWords(const kvt::TraceRecord &record)
{
    for (int i = 0; i < record.words.size(); ++i) {
        const QString text = record.text(i);
        kvt::TraceRecord copy;
        copy.words.append(kvt::traceText(text));
        copy.words.append(kvt::traceHex(record.bytes(i)));
        require(copy.text(0) == text, "a text reads back equal");
        require(copy.bytes(1) == record.bytes(i), "bytes read back equal");
        require(!copy.words.at(0).contains(' ') && !copy.words.at(0).contains('\n'),
                "a text is one word");
    }
}

void checkReader(const QString &path, int lines)
{
    kvt::TraceReader reader;
    QString error;
    if (!reader.open(path, &error)) {
        require(!error.isEmpty(), "what is no trace is said to be none");
        return;
    }
    kvt::TraceRecord record;
    int exchange = 0;
    while (reader.next(&record)) {
        require(record.line > 1 && record.line <= lines, "a record has its line");
        require(record.exchange >= exchange && record.exchange <= exchange + 1,
                "exchanges are counted one by one");
        exchange = record.exchange;
        checkWords(record);
    }
    require(reader.records() < lines, "a line is one record");
}

void checkReplay(const QString &path, int lines)
{
    static ComInfo ofNobody;
    resetDriver(ofNobody);
    kvt::TraceReader reader;
    QString error;
    if (!reader.open(path, &error))
        return;
    const kvt::ReplayResult result = kvt::replayTrace(&reader, linkedDriver());
    require(result.calls >= 0 && result.exchanges >= 0 && result.exchanges <= lines,
            "a line asks for one request at most");
    require(result.difference.isEmpty() || result.error.isEmpty(), "a replay stops for one reason");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static MemoryFile file;
    const QByteArray content = FuzzInput(data, size).rest();
    file.setContent(content);
    const int lines = content.count('\n') + 1;
    checkReader(file.path(), lines);
    checkReplay(file.path(), lines);
    return 0;
}
