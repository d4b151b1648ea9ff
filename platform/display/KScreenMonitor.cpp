#include "platform/display/KScreenMonitor.h"

#include <utility>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

namespace vandrel {

namespace {

// In milliseconds, for the program's start and end.
constexpr int programPatience = 5000;
// More than any list of monitors has.
constexpr qsizetype longestAnswer = 4 * 1024 * 1024;
// The turns in the list that put a monitor on its side.
constexpr int turnedLeft = 2;
constexpr int turnedRight = 8;

QJsonValue member(const QJsonObject &object, const char *name)
{
    return object.value(QLatin1String(name));
}

QSize sizeOf(const QJsonObject &mode)
{
    const QJsonObject size = member(mode, "size").toObject();
    return {member(size, "width").toInt(), member(size, "height").toInt()};
}

bool isFirst(const QJsonObject &output)
{
    return member(output, "priority").toInt() == 1 || member(output, "primary").toBool();
}

QJsonObject primaryOf(const QJsonArray &outputs)
{
    QJsonObject primary;
    for (const auto &value : outputs) {
        const QJsonObject output = value.toObject();
        if (member(output, "enabled").toBool()
            && (primary.isEmpty() || (isFirst(output) && !isFirst(primary))))
            primary = output;
    }
    return primary;
}

} // namespace

KScreenOutput KScreenOutput::read(const QByteArray &list, const QSize &wanted)
{
    const QJsonObject output = primaryOf(member(QJsonDocument::fromJson(list).object(), "outputs").toArray());
    const int rotation = member(output, "rotation").toInt();
    const bool isUpright = rotation == turnedLeft || rotation == turnedRight;
    const QSize size = isUpright ? wanted.transposed() : wanted;
    KScreenOutput result;
    result.name = member(output, "name").toString();
    double highest = -1;
    const QJsonArray modes = member(output, "modes").toArray();
    for (const auto &value : modes) {
        const QJsonObject mode = value.toObject();
        const double frequency = member(mode, "refreshRate").toDouble();
        if (const QString id = member(mode, "id").toString();
            id == member(output, "currentModeId").toString()) {
            result.current = id;
            result.resolution = isUpright ? sizeOf(mode).transposed() : sizeOf(mode);
        }
        if (sizeOf(mode) == size && frequency > highest) {
            highest = frequency;
            result.mode = member(mode, "id").toString();
        }
    }
    return result;
}

KScreenMonitor::KScreenMonitor(QString program) : m_program(std::move(program)) { }

QSize KScreenMonitor::resolution()
{
    return KScreenOutput::read(run({QStringLiteral("--json")})).resolution;
}

// The program ends well whatever became of the change, so that the result is looked at; what is not the wanted one is
// taken back.
bool KScreenMonitor::change(const QSize &wanted)
{
    if (wanted.isEmpty())
        return false;
    const KScreenOutput output = KScreenOutput::read(run({QStringLiteral("--json")}), wanted);
    if (output.resolution == wanted)
        return true;
    if (output.name.isEmpty() || output.mode.isEmpty())
        return false;
    const QString order = QStringLiteral("output.%1.mode.%2").arg(output.name);
    run({order.arg(output.mode)});
    const QSize now = resolution();
    if (now != wanted && now != output.resolution)
        run({order.arg(output.current)});
    return now == wanted;
}

QByteArray KScreenMonitor::run(const QStringList &arguments) const
{
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(m_program, arguments, QIODevice::ReadOnly);
    if (!process.waitForFinished(programPatience)) {
        process.kill();
        process.waitForFinished(programPatience);
        return {};
    }
    return process.read(longestAnswer);
}

} // namespace vandrel
