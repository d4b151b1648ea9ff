#include "platform/mail/pop/PopRetrieval.h"

#include <QCoreApplication>
#include <QPointer>
#include <QThreadPool>

#include "platform/mail/text/MailText.h"

namespace vandrel {

namespace {

constexpr qint64 statusEvery = 500;
constexpr double megabyte = 1'000'000;

} // namespace

// What the two threads share. Each side holds it, so neither outlives it.
struct PopRetrieval::Conversion {
    std::unique_ptr<QIODevice> mail;
    std::stop_source stop;
    ReadableMail result;
};

PopRetrieval::PopRetrieval(PopDialogue &dialogue, qint64 number, const PopLimits &limits, QObject *parent)
    : QObject(parent), m_dialogue(dialogue), m_number(number), m_limits(limits), m_spool(limits.mailInMemory)
{ }

PopRetrieval::~PopRetrieval()
{
    if (m_conversion)
        m_conversion->stop.request_stop();
}

void PopRetrieval::start()
{
    m_sinceStatus.start();
    Q_EMIT status(tr("Fetching message %1...").arg(m_number));
    m_dialogue.askMessage(
        "RETR " + QByteArray::number(m_number), tr("message %1").arg(m_number),
        [this](QByteArrayView octets) { received(octets); },
        [this](const PopReply &reply) { answered(reply); });
}

void PopRetrieval::cancel()
{
    m_cancelled = true;
    m_spool.discard();
    if (!m_conversion)
        return;
    m_conversion->stop.request_stop();
    m_conversion.reset();
    QMetaObject::invokeMethod(this, &PopRetrieval::cancelled, Qt::QueuedConnection);
}

void PopRetrieval::received(QByteArrayView octets)
{
    m_spool.write(octets);
    if (m_spool.size() > m_limits.largestMail && !m_endless) {
        m_endless = true;
        m_spool.discard();
        // Not from here: who hears it ends the dialogue, which is still reading.
        QMetaObject::invokeMethod(
            this,
            [this] {
                Q_EMIT tooLarge(tr("Message %1 is larger than %2 octets and was given up.")
                                    .arg(m_number)
                                    .arg(m_limits.largestMail));
            },
            Qt::QueuedConnection);
    }
    if (m_cancelled || m_sinceStatus.elapsed() < statusEvery)
        return;
    m_sinceStatus.restart();
    Q_EMIT status(tr("Fetching message %1: %2 MB")
                      .arg(m_number)
                      .arg(static_cast<double>(m_spool.size()) / megabyte, 0, 'f', 1));
}

void PopRetrieval::answered(const PopReply &reply)
{
    if (m_endless)
        return;
    if (m_cancelled)
        Q_EMIT cancelled();
    else if (!reply.isOk())
        Q_EMIT refused(tr("The server does not give message %1: %2").arg(m_number).arg(reply.text()), true);
    else
        convert();
}

void PopRetrieval::convert()
{
    const auto conversion = std::make_shared<Conversion>();
    conversion->mail = m_spool.take();
    if (!m_spool.problem().isEmpty()) {
        Q_EMIT refused(tr("Message %1 could not be kept in the folder for temporary files: %2.")
                           .arg(m_number)
                           .arg(m_spool.problem()),
                       false);
        return;
    }
    m_conversion = conversion;
    const QPointer<PopRetrieval> self(this);
    // The result travels through the application object: this one may be gone by then, which only its own thread can
    // tell.
    QThreadPool::globalInstance()->start([conversion, self] {
        conversion->result = readableMail(*conversion->mail, conversion->stop.get_token());
        conversion->mail.reset();
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [conversion, self] {
                if (self)
                    self->converted(conversion);
            },
            Qt::QueuedConnection);
    });
}

void PopRetrieval::converted(const std::shared_ptr<Conversion> &conversion)
{
    if (conversion != m_conversion)
        return;
    m_conversion.reset();
    Q_EMIT status(tr("Message %1 was fetched: %2 octets.").arg(m_number).arg(m_spool.size()));
    Q_EMIT retrieved(conversion->result.text);
}

} // namespace vandrel
