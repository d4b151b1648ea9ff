#pragma once

#include <vector>

#include <QDeadlineTimer>
#include <QObject>

#include "platform/mail/pop/PopDialogue.h"
#include "platform/mail/pop/PopLimits.h"

namespace vandrel {

/// Lists a mailbox: number and size of every message, and sender and subject where the server gives them cheaply.
class PopListing : public QObject
{
    Q_OBJECT

public:
    PopListing(PopDialogue &dialogue,
               const PopCapabilities &offered,
               const PopLimits &limits,
               QObject *parent = nullptr);

    void start();
    /// Asks nothing more; cancelled() follows when what has been asked is answered.
    void cancel();

Q_SIGNALS:
    void status(const QString &text);
    /// One line a message, each ended by CR LF.
    void listed(const QString &listing);
    void refused(const QString &text);
    void cancelled();

private:
    struct Entry {
        qint64 number = 0;
        qint64 octets = 0;
        QString from;
        QString subject;
    };

    void listAnswered(const PopReply &reply);
    void addEntry(const QByteArray &line);
    void askMoreHeaders();
    void askHeader(std::size_t index);
    void headerAnswered(std::size_t index, const PopReply &reply);
    void finish();

    PopDialogue &m_dialogue;
    const PopLimits m_limits;
    const bool m_asksHeaders;
    const std::size_t m_atOnce;
    std::vector<Entry> m_entries;
    // The header whose lines are coming.
    QByteArray m_header;
    bool m_inHeader = true;
    std::size_t m_asked = 0;
    std::size_t m_answered = 0;
    std::size_t m_toAsk = 0;
    QDeadlineTimer m_end;
    bool m_cancelled = false;
};

} // namespace vandrel
