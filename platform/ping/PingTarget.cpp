#include "platform/ping/PingTarget.h"

#include <algorithm>

#include <QCoreApplication>
#include <QRegularExpression>

#include "platform/net/ServerAddress.h"

namespace vandrel {

namespace {

// More than any name or address has; what is longer is not repeated to the user in full.
constexpr qsizetype longestShown = 80;

QString targetText(const char *text)
{
    return QCoreApplication::translate("PingTarget", text);
}

QString withoutBlankBeforeNumber(const QString &typed)
{
    static const QRegularExpression form(QStringLiteral("\\s+(\\d+)$"));
    QString text = typed.trimmed();
    return text.replace(form, QStringLiteral("\\1"));
}

// Four decimal numbers and nothing else. Shorter and octal forms mean different addresses to different programs.
QHostAddress ipv4(const QString &text)
{
    static const QRegularExpression form(
        QStringLiteral("^(\\d{1,3})\\.(\\d{1,3})\\.(\\d{1,3})\\.(\\d{1,3})$"));
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch())
        return {};
    quint32 address = 0;
    for (int part = 1; part <= 4; ++part) {
        const QString digits = match.captured(part);
        const uint number = digits.toUInt();
        if (number > 255 || (digits.size() > 1 && digits.startsWith(u'0')))
            return {};
        address = (address << 8U) | number;
    }
    return QHostAddress(address);
}

// A name whose last part is a number would be taken for an address by one program and for a name by another.
bool endsInNumber(const QString &name)
{
    const QString last = name.mid(name.lastIndexOf(u'.') + 1);
    return std::all_of(last.begin(), last.end(),
                       [](QChar c) { return (c >= u'0' && c <= u'9') || c == u'-'; });
}

} // namespace

PingTarget PingTarget::parse(const QString &typed)
{
    PingTarget target;
    const QString text = withoutBlankBeforeNumber(typed);
    target.shown = text.size() > longestShown ? text.left(longestShown) + u'…' : text;
    if (text.isEmpty()) {
        target.problem = targetText("No host was named.");
        return target;
    }
    target.address = text.contains(u':') ? QHostAddress(text) : ipv4(text);
    if (!target.address.isNull())
        return target;
    target.name = hostNameInAscii(text);
    if (target.name.isEmpty() || endsInNumber(target.name)) {
        target.name.clear();
        target.problem = targetText("\"%1\" is neither an address nor the name of a host.").arg(target.shown);
    }
    return target;
}

} // namespace vandrel
