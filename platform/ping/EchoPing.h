#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "controls/Ping.h"
#include "platform/net/NameLookup.h"
#include "platform/ping/EchoWay.h"
#include "platform/ping/PingTarget.h"

namespace vandrel {

/// The suite's own ping. It waits without the event loop of its caller: a few dozen times a second it lets the windows
/// paint, and nothing else happens until the ping has ended.
class EchoPing final : public Ping
{
    Q_OBJECT

public:
    /// What it asks with, and whom it asks for names.
    struct Means {
        /// Tried in order, until one is permitted.
        std::vector<std::shared_ptr<EchoWay>> ways = EchoWay::ofSystem();
        NameLookup::Resolver resolver = NameLookup::systemResolver();
        /// The longest a name may take, in milliseconds.
        int lookupPatience = 5000;
    };

    EchoPing() : EchoPing(Means()) { }
    explicit EchoPing(Means means);
    ~EchoPing() override;

    QString EchoData() const override { return m_results.echo; }
    QString DataToSend() const override { return m_data; }
    void setDataToSend(const QString &data) override;
    QString StatusText() const override { return m_results.status; }
    void setHost(const QString &host) override;
    void setPing(bool start) override;
    quint16 DataSize() const override { return m_results.size; }
    qint32 RoundTripTime() const override { return m_results.milliseconds; }
    void setTimeOut(qint16 milliseconds) override;
    bool ErrorFlag() const override { return m_results.failed; }

private:
    class Wait;

    struct Results {
        QString echo;
        QString status;
        quint16 size = 0;
        qint32 milliseconds = 0;
        bool failed = false;

        /// These, where a ping has failed for that reason.
        Results failing(const QString &why) const;
        /// These, or those of a reply.
        Results after(const EchoOutcome &outcome, const QString &words) const;
    };

    static Results
    pinged(const Means &means, const QString &host, EchoQuestion question, const Results &before, Wait &wait);

    const std::shared_ptr<const Means> m_means;
    QString m_host;
    QString m_data;
    int m_timeOut = 1000;
    Results m_results;
    Wait *m_wait = nullptr;
};

} // namespace vandrel
