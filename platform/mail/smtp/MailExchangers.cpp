#include "platform/mail/smtp/MailExchangers.h"

#include <algorithm>

#include <QDnsLookup>
#include <QHostAddress>

#include "runtime/Events.h"

namespace vandrel {

namespace {

constexpr std::size_t mostHosts = 10;

} // namespace

DnsMailExchangers::DnsMailExchangers(QObject *parent)
    : MailExchangers(parent), m_lookup(std::make_unique<QDnsLookup>())
{
    m_lookup->setType(QDnsLookup::MX);
    onEvent(m_lookup.get(), &QDnsLookup::finished, this, [this] { take(); });
}

DnsMailExchangers::~DnsMailExchangers()
{
    m_lookup->disconnect(this);
    m_lookup->abort();
}

void DnsMailExchangers::setNameServer(const QString &address)
{
    m_lookup->setNameserver(QHostAddress(address));
}

void DnsMailExchangers::ask(const QString &domain)
{
    m_lookup->setName(domain);
    m_lookup->lookup();
}

void DnsMailExchangers::take()
{
    const QDnsLookup::Error error = m_lookup->error();
    if (error != QDnsLookup::NoError && error != QDnsLookup::NotFoundError) {
        Q_EMIT failed(m_lookup->errorString());
        return;
    }
    std::vector<MailExchanger> exchangers;
    for (const QDnsMailExchangeRecord &record : m_lookup->mailExchangeRecords()) {
        QString host = record.exchange();
        if (host.endsWith(u'.'))
            host.chop(1);
        exchangers.push_back({host, record.preference()});
    }
    Q_EMIT found(exchangers);
}

std::vector<QString> hostsInOrder(std::vector<MailExchanger> exchangers,
                                  const std::function<void(std::vector<MailExchanger> &)> &shuffle)
{
    shuffle(exchangers);
    std::stable_sort(exchangers.begin(), exchangers.end(),
                     [](const MailExchanger &one, const MailExchanger &other) {
                         return one.preference < other.preference;
                     });
    std::vector<QString> hosts;
    for (const MailExchanger &exchanger : exchangers) {
        const bool isNew = std::find(hosts.begin(), hosts.end(), exchanger.host) == hosts.end();
        if (isNew && !exchanger.host.isEmpty() && hosts.size() < mostHosts)
            hosts.push_back(exchanger.host);
    }
    return hosts;
}

} // namespace vandrel
