#include "Figures.h"

#include <cstdio>

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

namespace vandrel::bench {

namespace {

void leave(const QJsonObject &figure)
{
    const QString path = qEnvironmentVariable("VANDREL_FIGURES");
    if (path.isEmpty())
        return;
    QFile file(path);
    if (!file.open(QIODevice::Append)
        || file.write(QJsonDocument(figure).toJson(QJsonDocument::Compact) + '\n') < 0)
        std::fprintf(stderr, "the figure cannot be written: %s\n", qPrintable(file.errorString()));
}

QJsonObject figureOf(const char *what, double ours, const char *unit, double goal)
{
    QJsonObject figure{
        {QStringLiteral("what"), QString::fromUtf8(what)}, {QStringLiteral("ours"), ours},
        {QStringLiteral("unit"), QString::fromUtf8(unit)}, {QStringLiteral("peer"), QJsonValue()},
        {QStringLiteral("theirs"), QJsonValue()},          {QStringLiteral("goal"), QJsonValue()}};
    if (goal != noGoal)
        figure[QStringLiteral("goal")] = goal;
    return figure;
}

} // namespace

void report(const char *what, double ours, const char *peer, double theirs, double goal)
{
    std::printf("%-44s %10.2f ms   %-14s %10.2f ms   ratio %.3f\n", what, ours, peer, theirs, ours / theirs);
    std::fflush(stdout);
    QJsonObject figure = figureOf(what, ours, "ms", goal);
    figure[QStringLiteral("peer")] = QString::fromUtf8(peer);
    figure[QStringLiteral("theirs")] = theirs;
    leave(figure);
}

void reportAlone(const char *what, double ours, const char *unit, double goal)
{
    std::printf("%-44s %10.2f %s\n", what, ours, unit);
    std::fflush(stdout);
    leave(figureOf(what, ours, unit, goal));
}

} // namespace vandrel::bench
