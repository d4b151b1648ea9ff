#include "platform/imaging/codecs/DrawingProgram.h"

#include <algorithm>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QtEndian>

#include "platform/imaging/codecs/PictureFailure.h"
#include "platform/imaging/raster/PictureLimits.h"

namespace vandrel {

namespace {

constexpr int longestDrawing = 15'000;
constexpr int shortestWait = 100;
constexpr qint64 longestFile = 64 * 1024 * 1024;
constexpr qsizetype headerLength = 12;

/// The program that the request names, or the one among the suite's own libraries.
QString programOf(const DecodeRequest &request)
{
    if (!request.drawingProgram.isEmpty())
        return request.drawingProgram;
    return QCoreApplication::applicationDirPath()
        + QStringLiteral("/" VANDREL_LIBRARIES_FROM_PROGRAM "/vandrel-draw");
}

/// One run of the drawing program; what is left of it is killed.
class DrawingRun
{
public:
    DrawingRun(const DecodeRequest &request, DrawingKind kind) : m_request(request)
    {
        m_process.setProcessChannelMode(QProcess::SeparateChannels);
        m_process.setStandardErrorFile(QProcess::nullDevice());
        m_process.start(programOf(request),
                        {kind == DrawingKind::Wmf ? QStringLiteral("wmf") : QStringLiteral("wpg")});
        m_timer.start();
    }
    ~DrawingRun()
    {
        if (m_process.state() == QProcess::NotRunning)
            return;
        m_process.kill();
        m_process.waitForFinished(longestDrawing);
    }
    DrawingRun(const DrawingRun &) = delete;
    DrawingRun &operator=(const DrawingRun &) = delete;

    void send(const QByteArray &file)
    {
        if (!m_process.waitForStarted(longestDrawing))
            throw PictureFailure(
                pictureText("cannot be drawn, since the suite's drawing program does not start."));
        m_process.write(file);
        m_process.closeWriteChannel();
    }

    /// Fills a block with the program's answer.
    void receive(char *to, qint64 octets)
    {
        while (octets > 0) {
            const qint64 count = m_process.read(to, octets);
            if (count > 0) {
                to += count;
                octets -= count;
                continue;
            }
            waitForMore();
        }
    }

    /// Whether the program ended well and said no more than it should.
    bool endsWell()
    {
        while (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(shortestWait))
            checkTime();
        return m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0
            && m_process.readAllStandardOutput().isEmpty();
    }

private:
    void waitForMore()
    {
        checkTime();
        if (m_process.waitForReadyRead(shortestWait) || m_process.bytesAvailable() > 0)
            return;
        if (m_process.state() == QProcess::NotRunning)
            throw PictureFailure(
                pictureText("cannot be drawn: it is damaged, or of a kind that is not known."));
    }

    void checkTime() const
    {
        checkCancelled(m_request);
        if (m_timer.elapsed() > longestDrawing)
            throw PictureFailure(pictureText("takes too long to draw."));
    }

    const DecodeRequest &m_request;
    QProcess m_process;
    QElapsedTimer m_timer;
};

} // namespace

DecodedPicture drawWithProgram(QIODevice &device, DrawingKind kind, const DecodeRequest &request)
{
    if (device.size() > longestFile)
        throw PictureFailure(pictureText("is larger than a drawing can be."));
    device.seek(0);
    DrawingRun run(request, kind);
    run.send(device.readAll());
    QByteArray header(headerLength, '\0');
    run.receive(header.data(), header.size());
    const auto width = qFromLittleEndian<quint32>(header.constData() + 4);
    const auto height = qFromLittleEndian<quint32>(header.constData() + 8);
    if (!header.startsWith("VPIX") || !isWithinLimits(width, height, 3))
        throw PictureFailure(pictureText("cannot be drawn."));
    auto pixels = PixelBuffer::make(static_cast<int>(width), static_cast<int>(height), 3);
    for (int y = 0; y < pixels->height(); ++y)
        run.receive(reinterpret_cast<char *>(pixels->view().row(y)), static_cast<qint64>(width) * 3);
    if (!run.endsWell())
        throw PictureFailure(pictureText("cannot be drawn."));
    return {Raster(std::move(pixels), 24)};
}

} // namespace vandrel
