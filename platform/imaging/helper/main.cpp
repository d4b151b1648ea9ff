// Draws a metafile ("wmf") or a vector picture ("wpg") that stands in the input, and answers with its pixels:
// "VPIX", width and height of 32 bits each, then blue, green and red row by row.
#include <cstdio>
#include <cstdlib>

#include <QFile>
#include <QGuiApplication>
#include <QtEndian>

#include "platform/imaging/helper/DrawingLimits.h"
#include "platform/imaging/helper/Metafile.h"
#include "platform/imaging/helper/VectorPicture.h"

using namespace vandrel;

namespace {

constexpr qint64 longestInput = 64 * 1024 * 1024;

/// A pipe gives no more at a time than was written so far.
QByteArray readInput(QFile &in)
{
    QByteArray file;
    while (file.size() < longestInput) {
        const QByteArray piece = in.read(longestInput - file.size());
        if (piece.isEmpty())
            break;
        file += piece;
    }
    return file;
}

bool answer(const QImage &image)
{
    QFile out;
    if (image.isNull() || !out.open(stdout, QIODevice::WriteOnly))
        return false;
    QByteArray header("VPIX\0\0\0\0\0\0\0\0", 12);
    qToLittleEndian<quint32>(static_cast<quint32>(image.width()), header.data() + 4);
    qToLittleEndian<quint32>(static_cast<quint32>(image.height()), header.data() + 8);
    out.write(header);
    QByteArray row(qsizetype{3} * image.width(), '\0');
    for (int y = 0; y < image.height(); ++y) {
        char *to = row.data();
        for (int x = 0; x < image.width(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            *to++ = static_cast<char>(qBlue(pixel));
            *to++ = static_cast<char>(qGreen(pixel));
            *to++ = static_cast<char>(qRed(pixel));
        }
        if (out.write(row) != row.size())
            return false;
    }
    return out.flush();
}

} // namespace

int main(int argc, char **argv)
{
    // Nothing is shown, but words in drawings need the toolkit's fonts.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    QFile in;
    if (arguments.size() != 2 || !limitDrawing() || !in.open(stdin, QIODevice::ReadOnly))
        return 2;
    const QByteArray file = readInput(in);
    const QImage image = arguments[1] == u"wmf" ? drawMetafile(file) : drawVectorPicture(file);
    // What the libraries hold goes with the process; taking it apart first could only fail.
    std::_Exit(answer(image) ? 0 : 1);
}
