#include "platform/mail/pop/PopLogin.h"

#include <algorithm>
#include <array>

#include <QCoreApplication>
#include <QCryptographicHash>

#include "platform/net/ServerLine.h"

namespace vandrel {

namespace {

constexpr std::array strongestFirst{PopLogin::CramMd5, PopLogin::Apop, PopLogin::Plain, PopLogin::Login,
                                    PopLogin::UserAndPass};
constexpr std::array usualFirst{PopLogin::Plain, PopLogin::Login, PopLogin::UserAndPass, PopLogin::CramMd5,
                                PopLogin::Apop};

bool isOffered(PopLogin way, const PopCapabilities &offered, bool stamped)
{
    switch (way) {
    case PopLogin::Plain:
        return offered.sasl.contains("PLAIN");
    case PopLogin::Login:
        return offered.sasl.contains("LOGIN");
    case PopLogin::CramMd5:
        return offered.sasl.contains("CRAM-MD5");
    case PopLogin::Apop:
        return stamped;
    case PopLogin::UserAndPass:
        return offered.user || !offered.stated || offered.sasl.isEmpty();
    case PopLogin::None:
        break;
    }
    return false;
}

} // namespace

PopLogin chooseLogin(const PopCapabilities &offered, bool encrypted, bool stamped)
{
    const auto &order = encrypted ? usualFirst : strongestFirst;
    const auto found = std::find_if(order.begin(), order.end(),
                                    [&](PopLogin way) { return isOffered(way, offered, stamped); });
    return found == order.end() ? PopLogin::None : *found;
}

QByteArray apopDigest(const QByteArray &stamp, const QByteArray &password)
{
    return QCryptographicHash::hash(stamp + password, QCryptographicHash::Md5).toHex();
}

QString loginProblem(const QString &user, const QString &password)
{
    if (breaksTheLine(user))
        return QCoreApplication::translate("PopLogin", "The user name holds a line break.");
    if (breaksTheLine(password))
        return QCoreApplication::translate("PopLogin", "The password holds a line break.");
    return {};
}

} // namespace vandrel
