#include "Cli/Command.h"
#include "Cli/memoryLimit.h"

#include <QFile>
#include <QTextCodec>
#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>

namespace corv::cli {
namespace {

// The other program of the tool, beside this one.
constexpr const char* kFlightProgram = "/vistrel-cli-flights";

// The locale's codec, which file names go through. Qt's own for this encoding asks a library of
// encodings for it, which takes as long as a small log. Of a name that is not UTF-8 each foreign
// byte becomes half a surrogate pair, and so the name leads to its file.
class Utf8Codec : public QTextCodec
{
public:
    QByteArray name() const override { return QByteArrayLiteral("UTF-8"); }
    int mibEnum() const override { return 106; }

protected:
    QString convertToUnicode(const char* text, int length, ConverterState*) const override
    {
        const QString whole = QString::fromUtf8(text, length);
        return whole.contains(QChar::ReplacementCharacter) ? byteByByte({text, length}) : whole;
    }
    QByteArray convertFromUnicode(const QChar* text, int length, ConverterState*) const override
    {
        QByteArray bytes;
        int from = 0;
        for (int i = 0; i < length; ++i) {
            const bool isByte = text[i].unicode() > foreignByte + 0x7f &&
                                text[i].unicode() <= foreignByte + 0xff &&
                                !(i > 0 && text[i - 1].isHighSurrogate());
            if (!isByte)
                continue;
            bytes += QString::fromRawData(text + from, i - from).toUtf8();
            bytes += static_cast<char>(text[i].unicode() - foreignByte);
            from = i + 1;
        }
        return bytes + QString::fromRawData(text + from, length - from).toUtf8();
    }

private:
    static constexpr ushort foreignByte = 0xdc00;

    static QString byteByByte(const QByteArray& text)
    {
        QString decoded;
        for (int i = 0; i < text.size();) {
            const auto lead = static_cast<uchar>(text[i]);
            const int size = lead < 0x80 ? 1 : lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : 4;
            const QByteArray bytes = text.mid(i, size);
            const QString character = QString::fromUtf8(bytes);
            const bool isWhole = character.toUtf8() == bytes;
            decoded += isWhole ? character : QString(QChar(ushort(foreignByte + lead)));
            i += isWhole ? size : 1;
        }
        return decoded;
    }
};

bool isLogCommand(const QStringList& arguments, const std::vector<Command>& commands)
{
    const auto name = std::find_if(arguments.begin() + 1, arguments.end(), [](const QString& word) {
        return word != QLatin1String("--verbose");
    });
    return name != arguments.end() &&
           std::any_of(commands.begin(), commands.end(),
                       [&name](const Command& command) { return command.name == *name; });
}

// Becomes the other program. Returns only where that cannot be started.
ExitStatus becomeFlightProgram(char** argv)
{
    if (const Status memory = enoughMemoryToLoad(); !memory)
        return fail(memory.failure());
    char self[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", self, sizeof(self));
    std::string path(self, length > 0 ? static_cast<size_t>(length) : 0);
    path = path.substr(0, path.rfind('/')) + kFlightProgram;
    // Debian's fast library for matrices, where it is installed, starts a thread for each processor
    // as it is loaded, and ends the program where one does not start. Nothing here computes with
    // it.
    setenv("OPENBLAS_NUM_THREADS", "1", 0);
    execv(path.c_str(), argv);
    return fail(QStringLiteral("Cannot start \"%1\": %2.")
                    .arg(QFile::decodeName(path.c_str()), QString::fromLocal8Bit(strerror(errno))));
}

} // namespace
} // namespace corv::cli

/// The tool as it is started. The log commands are done here, with Qt Core alone; all others and
/// the help by a second program, so that a script that reads logs does not wait for the libraries
/// of pictures and windows.
int main(int argc, char** argv)
{
    using namespace corv::cli;
    QTextCodec::setCodecForLocale(new Utf8Codec); // Qt owns it
    const QStringList arguments = wordsOf(argc, argv);
    const std::vector<Command> commands = CommandSet::all();
    return isLogCommand(arguments, commands) ? runLine(commands, arguments)
                                             : becomeFlightProgram(argv);
}
