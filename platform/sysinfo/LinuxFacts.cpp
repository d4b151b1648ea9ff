#include "platform/sysinfo/LinuxFacts.h"

#include <algorithm>
#include <array>

#include <QFile>
#include <QRegularExpression>

namespace vandrel {

namespace {

// Far more than any of the files has before what is looked for.
constexpr qint64 mostRead = 64 * 1024;

} // namespace

QByteArray kernelFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.read(mostRead) : QByteArray();
}

QString kernelText(const QString &path)
{
    QString text = QString::fromUtf8(kernelFile(path));
    // Texts of the device tree end in NUL (Devicetree Specification 0.4, section 2.2.4).
    text.replace(QChar(u'\0'), u' ');
    text.removeIf([](QChar character) { return !character.isPrint() && !character.isSpace(); });
    return text.simplified();
}

QString modelName(const QByteArray &cpuInfo)
{
    static const QRegularExpression line(QStringLiteral("^model name[ \\t]*:[ \\t]*(\\S.*)$"),
                                         QRegularExpression::MultilineOption);
    return line.match(QString::fromUtf8(cpuInfo)).captured(1).simplified();
}

bool listsSoundCard(const QByteArray &cards)
{
    static const QRegularExpression line(QStringLiteral("^\\s*\\d+\\s+\\["),
                                         QRegularExpression::MultilineOption);
    return line.match(QString::fromUtf8(cards)).hasMatch();
}

QString realMaker(const QString &name)
{
    static constexpr std::array placeholders{"default string",
                                             "system manufacturer",
                                             "to be filled by o.e.m.",
                                             "not specified",
                                             "not applicable",
                                             "none",
                                             "oem",
                                             "o.e.m.",
                                             "unknown",
                                             "n/a",
                                             "empty",
                                             "0"};
    const QString known = name.simplified();
    const bool isPlaceholder
        = std::any_of(placeholders.begin(), placeholders.end(), [&known](const char *words) {
              return known.compare(QLatin1String(words), Qt::CaseInsensitive) == 0;
          });
    return isPlaceholder ? QString() : known;
}

} // namespace vandrel
