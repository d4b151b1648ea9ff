#include "platform/pictures/PictureStore.h"

#include <utility>

#include "runtime/RuntimeError.h"

namespace vandrel {

StoredPicture::StoredPicture(std::shared_ptr<PictureStore> store,
                             QString dosPath,
                             const PictureWish &wish,
                             bool isKept)
    : m_store(std::move(store)), m_path(std::move(dosPath)), m_wish(wish), m_isKept(isKept)
{
    enqueue();
}

StoredPicture::~StoredPicture()
{
    drop();
}

void StoredPicture::enqueue()
{
    m_ticket = std::make_shared<DecodingTicket>();
    try {
        m_ticket->nativePath = m_store->m_view->toNative(m_path);
    } catch (const RuntimeError &) {
        m_ticket.reset();
        m_state = State::Unreadable;
        return;
    }
    m_ticket->shownPath = m_path;
    m_ticket->wish = m_wish;
    m_ticket->isSeen = m_isSeen;
    m_store->m_awaited[m_ticket.get()] = this;
    m_store->m_queue->add(m_ticket);
}

void StoredPicture::setSeen(bool seen)
{
    if (seen == m_isSeen)
        return;
    m_isSeen = seen;
    if (m_isListed)
        m_store->touch(*this);
    if (m_ticket) {
        m_ticket->isSeen = seen;
        if (seen)
            m_store->m_queue->promote(m_ticket);
    } else if (seen && m_state == State::Coming) {
        enqueue();
    }
    if (!seen)
        m_store->makeRoom();
}

QImage StoredPicture::scaledTo(const QSize &size) const
{
    return m_shown.size() == size ? m_shown : ComingPicture::scaledTo(size);
}

void StoredPicture::arrive(const ReadPicture &read)
{
    m_ticket.reset();
    m_image = read.image;
    m_shown = read.shown;
    m_state = m_image.isNull() ? State::Unreadable : State::Ready;
    if (!m_isKept && !m_image.isNull())
        m_store->enter(*this);
    Q_EMIT changed();
}

// Gives up what it has and what it waits for.
void StoredPicture::drop()
{
    if (m_ticket) {
        m_ticket->isCancelled = true;
        m_store->m_awaited.erase(m_ticket.get());
        m_ticket.reset();
    }
    if (m_isListed)
        m_store->leave(*this);
    m_image = {};
    m_shown = {};
}

PictureStore::PictureStore(std::shared_ptr<DriveView> view, qint64 budget)
    : m_view(std::move(view)), m_budget(budget),
      m_queue(std::make_shared<DecodingQueue>(
          [this](const DecodingQueue::Ticket &ticket, const ReadPicture &read) {
              QMetaObject::invokeMethod(
                  this, [this, ticket, read] { deliver(ticket, read); }, Qt::QueuedConnection);
          }))
{ }

PictureStore::~PictureStore()
{
    m_queue->stop();
}

void PictureStore::deliver(const DecodingQueue::Ticket &ticket, const ReadPicture &read)
{
    m_queue->delivered();
    const auto found = m_awaited.find(ticket.get());
    if (found == m_awaited.end())
        return;
    StoredPicture *picture = found->second;
    m_awaited.erase(found);
    picture->arrive(read);
}

void PictureStore::enter(StoredPicture &picture)
{
    picture.m_place = m_pictures.insert(m_pictures.end(), &picture);
    picture.m_isListed = true;
    m_size += picture.octets();
    makeRoom();
}

void PictureStore::leave(StoredPicture &picture)
{
    m_pictures.erase(picture.m_place);
    picture.m_isListed = false;
    m_size -= picture.octets();
    tellRoom();
}

// Far enough below the budget that what nobody sees yet never drives out what somebody has seen.
void PictureStore::tellRoom()
{
    m_queue->setRoom(m_size < m_budget / 4 * 3);
}

void PictureStore::touch(StoredPicture &picture)
{
    m_pictures.splice(m_pictures.end(), m_pictures, picture.m_place);
}

void PictureStore::makeRoom()
{
    for (auto next = m_pictures.begin(); m_size > m_budget && next != m_pictures.end();) {
        StoredPicture &picture = **next++;
        if (picture.m_isSeen)
            continue;
        picture.drop();
        picture.m_state = ComingPicture::State::Coming;
    }
    tellRoom();
}

} // namespace vandrel
