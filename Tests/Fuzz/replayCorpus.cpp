#include <QDirIterator>
#include <QFile>
#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

/// Runs a fuzzing target over each file of a folder, without a fuzzer.
int main(int argc, char** argv)
{
    int count = 0;
    for (int i = 1; i < argc; ++i) {
        QDirIterator files(QFile::decodeName(argv[i]), QDir::Files);
        while (files.hasNext()) {
            QFile file(files.next());
            if (!file.open(QIODevice::ReadOnly))
                continue;
            const QByteArray content = file.readAll();
            std::printf("%s\n", qPrintable(file.fileName()));
            std::fflush(stdout);
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(content.constData()),
                                   static_cast<size_t>(content.size()));
            ++count;
        }
    }
    return count > 0 ? 0 : 1;
}
