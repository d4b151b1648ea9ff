#include "platform/mail/pop/PopRetrieval.h"

#include <utility>

#include <QCoreApplication>
#include <QPointer>
#include <QThreadPool>

#include "platform/mail/text/MailText.h"

namespace vandrel {

namespace {

constexpr qint64 statusInterval = 500;
constexpr double megabyte = 1'000'000;

} // namespace

// What the two threads share. Each side holds it, so neither outlives it.
struct PopRetrieval::Conversion {
    explicit Conversion(std::shared_ptr<MailSpool> from) : spool(std::move(from)) { }

    void run(qint64 inMemory)
    {
        SpooledMail mail(spool, inMemory);
        result = readableMail(mail, stop.get_token(), {}, &mail);
        problem = mail.problem();
    }

    const std::shared_ptr<MailSpool> spool;
    std::stop_source stop;
    ReadableMail result;
    QString problem;
};

PopRetrieval::PopRetrieval(PopDialogue &dialogue, qint64 number, const PopLimits &limits, QObject *parent)
    : QObject(parent), m_dialogue(dialogue), m_number(number), m_limits(limits),
      m_spool(std::make_shared<MailSpool>()), m_conversion(std::make_shared<Conversion>(m_spool))
{ }

PopRetrieval::~PopRetrieval()
{
    giveUp();
}

// The other thread may be waiting for octets, or may be at work on them.
void PopRetrieval::giveUp()
{
    m_spool->discard();
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
    giveUp();
    if (m_isWhole)
        QMetaObject::invokeMethod(this, &PopRetrieval::cancelled, Qt::QueuedConnection);
}

void PopRetrieval::received(QByteArrayView octets)
{
    m_spool->add(octets);
    m_size += octets.size();
    if (m_size > m_limits.largestMail && !m_endless) {
        m_endless = true;
        giveUp();
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
    if (m_size > m_limits.convertedAtOnce && !m_cancelled && !m_endless)
        convertMeanwhile();
    showProgress();
}

void PopRetrieval::showProgress()
{
    if (m_cancelled || m_sinceStatus.elapsed() < statusInterval)
        return;
    m_sinceStatus.restart();
    Q_EMIT status(tr("Fetching message %1: %2 MB")
                      .arg(m_number)
                      .arg(static_cast<double>(m_size) / megabyte, 0, 'f', 1));
}

void PopRetrieval::answered(const PopReply &reply)
{
    if (m_endless)
        return;
    if (m_cancelled) {
        Q_EMIT cancelled();
    } else if (!reply.isOk()) {
        Q_EMIT refused(tr("The server does not give message %1: %2").arg(m_number).arg(reply.text()), true);
    } else {
        m_isWhole = true;
        m_spool->finish();
        if (!m_isConverting) {
            m_conversion->run(m_limits.mailInMemory);
            m_isConverted = true;
        }
        deliver();
    }
}

// The mail is read while it comes, and written to its file, on a thread of its own.
void PopRetrieval::convertMeanwhile()
{
    if (std::exchange(m_isConverting, true))
        return;
    const QPointer<PopRetrieval> self(this);
    // The result travels through the application object: this one may be gone by then, which only its own thread can
    // tell. The thread mostly waits for the network, so that another one may work beside it.
    QThreadPool::globalInstance()->start([conversion = m_conversion, inMemory = m_limits.mailInMemory, self] {
        QThreadPool::globalInstance()->releaseThread();
        conversion->run(inMemory);
        QThreadPool::globalInstance()->reserveThread();
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self] {
                if (self)
                    self->converted();
            },
            Qt::QueuedConnection);
    });
}

void PopRetrieval::converted()
{
    m_isConverted = true;
    deliver();
}

// The end of the message is awaited even where it could not be kept, since what follows it is the next answer.
void PopRetrieval::deliver()
{
    if (!m_isWhole || !m_isConverted || m_cancelled)
        return;
    if (!m_conversion->problem.isEmpty()) {
        Q_EMIT refused(tr("Message %1 could not be kept in the folder for temporary files: %2.")
                           .arg(m_number)
                           .arg(m_conversion->problem),
                       false);
        return;
    }
    Q_EMIT status(tr("Message %1 was fetched: %2 octets.").arg(m_number).arg(m_size));
    Q_EMIT retrieved(m_conversion->result.text);
}

} // namespace vandrel
