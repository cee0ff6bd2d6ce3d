// Packs PNG files into one Windows icon file, one entry per picture:
//   vistrel-pack-icon OUT.ico SIZE.png ...
// An entry of an icon file may be a whole PNG, so nothing is decoded here; the size of a picture is
// read from its header.

#include <QByteArray>
#include <QDataStream>
#include <QFile>
#include <QList>
#include <QSaveFile>

#include <cstdio>

namespace {

constexpr int headerBytes = 6;
constexpr int entryBytes = 16;
constexpr quint32 largestSidePx = 256; // written as 0: the field is one byte

struct Picture
{
    QByteArray png;
    quint32 widthPx = 0;
    quint32 heightPx = 0;
};

/// Reads the picture at `path`; false when it is no PNG, or too large for an icon.
bool readPicture(const QString& path, Picture& picture)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    picture.png = file.readAll();
    if (!picture.png.startsWith("\x89PNG\r\n\x1a\n")) {
        return false;
    }
    QDataStream stream(picture.png);
    stream.skipRawData(16); // signature, length and name of the first chunk
    stream >> picture.widthPx >> picture.heightPx;
    return stream.status() == QDataStream::Ok && picture.widthPx > 0 && picture.heightPx > 0 &&
           picture.widthPx <= largestSidePx && picture.heightPx <= largestSidePx;
}

QByteArray pack(const QList<Picture>& pictures)
{
    QByteArray icon;
    QDataStream stream(&icon, QIODevice::WriteOnly);
    stream.setByteOrder(QDataStream::LittleEndian);
    stream << quint16(0) << quint16(1) << quint16(pictures.size());
    auto offset = static_cast<quint32>(headerBytes + entryBytes * pictures.size());
    for (const Picture& picture : pictures) {
        stream << static_cast<quint8>(picture.widthPx % largestSidePx)
               << static_cast<quint8>(picture.heightPx % largestSidePx) << quint8(0)
               << quint8(0)                 // no palette; reserved
               << quint16(1) << quint16(32) // planes, bits per pixel
               << static_cast<quint32>(picture.png.size()) << offset;
        offset += static_cast<quint32>(picture.png.size());
    }
    for (const Picture& picture : pictures) {
        stream.writeRawData(picture.png.constData(), picture.png.size());
    }
    return icon;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 3) {
        std::fputs("usage: vistrel-pack-icon OUT.ico PICTURE.png ...\n", stderr);
        return 2;
    }
    QList<Picture> pictures;
    for (int i = 2; i < argc; ++i) {
        Picture picture;
        if (!readPicture(QFile::decodeName(argv[i]), picture)) {
            std::fprintf(stderr, "vistrel-pack-icon: %s is not a PNG that fits an icon\n", argv[i]);
            return 1;
        }
        pictures.append(picture);
    }
    QSaveFile out(QFile::decodeName(argv[1]));
    const QByteArray icon = pack(pictures);
    if (!out.open(QIODevice::WriteOnly) || out.write(icon) != icon.size() || !out.commit()) {
        std::fprintf(stderr, "vistrel-pack-icon: cannot write %s\n", argv[1]);
        return 1;
    }
    return 0;
}
