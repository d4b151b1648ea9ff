#pragma once

#include <QString>
#include <QStringList>

#include "controls/Smtp.h"

namespace vandrel {

/// Writes down what a sender raises, in order: "Busy True", "Status ...", "Sent ...", "Error ...",
/// "Disconnected True".
class SmtpEvents : public QObject
{
    Q_OBJECT

public:
    explicit SmtpEvents(const Smtp &smtp);

    const QStringList &all() const { return m_all; }
    /// The events without the status texts.
    QStringList main() const;
    /// The status texts, each with its own line break.
    QString log() const { return m_log; }
    /// What the first event of a kind carries; empty when there was none.
    QString sent() const { return argumentOf(QStringLiteral("Sent ")); }
    QString error() const { return argumentOf(QStringLiteral("Error ")); }
    /// True once as many sends have ended.
    bool haveEnded(int sends = 1) const;

private:
    QString argumentOf(const QString &kind) const;

    QStringList m_all;
    QString m_log;
};

} // namespace vandrel
