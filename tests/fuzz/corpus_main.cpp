// Runs a fuzz target over files, without a fuzzer: each argument is an input or a folder of inputs.
#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace
{

// None where there is nothing: a target that was never broken has no folder of such inputs.
QStringList filesAt(const QString &path)
{
    if (QFileInfo(path).isFile())
        return {path};
    const QDir folder(path);
    QStringList files;
    const QStringList names = folder.entryList(QDir::Files, QDir::Name);
    for (const QString &name : names)
        files.append(folder.filePath(name));
    return files;
}

// The name goes out first: a broken promise ends the process.
bool runFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "%s: %s\n", qPrintable(path), qPrintable(file.errorString()));
        return false;
    }
    std::printf("%s\n", qPrintable(path));
    std::fflush(stdout);
    const QByteArray bytes = file.readAll();
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.constData()),
                           static_cast<size_t>(bytes.size()));
    return true;
}

} // namespace

int main(int argc, char *argv[])
{
    int inputs = 0;
    for (int i = 1; i < argc; ++i) {
        const QStringList files = filesAt(QFile::decodeName(argv[i]));
        for (const QString &file : files) {
            if (!runFile(file))
                return 1;
            ++inputs;
        }
    }
    std::printf("%d inputs\n", inputs);
    return inputs > 0 ? 0 : 1;
}
