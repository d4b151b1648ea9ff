#pragma once

#include <memory>

#include <QStringList>

#include "platform/mail/pop/PopMailbox.h"

namespace vandrel {

/// A mailbox whose events are written down in their order, such as "LoggedIn True".
struct PopRecorder {
    explicit PopRecorder(const PopLimits &limits = {});

    /// Assigns the properties and sets ConnectNow.
    void logIn(const QString &server,
               const QString &user = QStringLiteral("vandrel"),
               const QString &password = QStringLiteral("s3cret"));
    void retrieve(int number);
    void remove(int number);
    bool has(const QString &event) const { return events.contains(event); }
    int count(const QString &event) const { return static_cast<int>(events.count(event)); }
    /// True when one of the status texts contains `text`.
    bool hasStatus(const QString &text) const;
    /// Every text that was shown.
    QString shown() const;

    std::unique_ptr<PopMailbox> mailbox;
    /// All but StatusText.
    QStringList events;
    QStringList statuses;
    QStringList errors;
    QStringList mails;
    QString listing;
};

} // namespace vandrel
