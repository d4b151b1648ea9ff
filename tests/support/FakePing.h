#pragma once

#include <functional>

#include <QStringList>

#include "controls/Ping.h"

namespace vandrel::test {

/// A ping control that sends nothing: it records what it is told, in order ("Host = 127.0.0. 1", "Ping = True"), and
/// answers each ping as `answer` says. Unless a test says otherwise every host sends back what it was sent.
class FakePing final : public Ping
{
    Q_OBJECT

public:
    /// What comes of one ping. A failed one has a status alone and leaves the last reply as it was.
    struct Outcome {
        QString status;
        bool failed = false;
        QString echo;
        quint16 size = 0;
        qint32 time = 0;
    };

    QString EchoData() const override { return m_outcome.echo; }
    QString DataToSend() const override { return m_data; }
    void setDataToSend(const QString &data) override;
    QString StatusText() const override { return m_outcome.status; }
    void setHost(const QString &host) override;
    void setPing(bool start) override;
    quint16 DataSize() const override { return m_outcome.size; }
    qint32 RoundTripTime() const override { return m_outcome.time; }
    void setTimeOut(qint16 milliseconds) override;
    bool ErrorFlag() const override { return m_outcome.failed; }

    /// What was told since the last time this was asked.
    QStringList takeCalls();

    /// The outcome of a ping of that host with that data.
    std::function<Outcome(const QString &host, const QString &data)> answer;
    /// Runs within every call, after it has been recorded.
    std::function<void(const QString &call)> onCall;

private:
    void record(const QString &member, const QString &value);
    void ping();

    QString m_host;
    QString m_data;
    Outcome m_outcome;
    QStringList m_calls;
};

} // namespace vandrel::test
