#pragma once

#include <functional>
#include <memory>
#include <vector>

#include <QObject>
#include <QString>

class QDnsLookup;

namespace vandrel {

/// One host that takes mail for a domain.
struct MailExchanger {
    /// A name in its ASCII form, without a closing dot; empty in the one record by which a domain says that
    /// it takes no mail (RFC 7505).
    QString host;
    /// Lower is tried first.
    int preference = 0;
};

/// Asks the domain name system which hosts take mail for a domain. One question at a time.
class MailExchangers : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Asks; found() or failed() follows from the event loop. Destroying the object ends the question.
    virtual void ask(const QString &domain) = 0;

Q_SIGNALS:
    /// In no particular order; none when the domain names none.
    void found(const std::vector<vandrel::MailExchanger> &exchangers);
    /// The question was not answered; `reason` is a sentence.
    void failed(const QString &reason);
};

/// The system's resolver.
class DnsMailExchangers final : public MailExchangers
{
    Q_OBJECT

public:
    explicit DnsMailExchangers(QObject *parent = nullptr);
    ~DnsMailExchangers() override;

    /// Asks this name server instead of the system's, at the usual port.
    void setNameServer(const QString &address);
    void ask(const QString &domain) override;

private:
    void take();

    std::unique_ptr<QDnsLookup> m_lookup;
};

/// The hosts to try, in this order (RFC 5321 section 5.1): by preference, and in the order that `shuffle`
/// gives within the same preference. At most ten.
std::vector<QString> hostsInOrder(std::vector<MailExchanger> exchangers,
                                  const std::function<void(std::vector<MailExchanger> &)> &shuffle);

} // namespace vandrel
