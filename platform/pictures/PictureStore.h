#pragma once

#include <list>
#include <map>
#include <memory>

#include <QObject>

#include "controls/DriveView.h"
#include "controls/PictureDecoder.h"
#include "platform/pictures/DecodingQueue.h"

namespace vandrel {

class PictureStore;

/// A picture of the store's.
class StoredPicture final : public ComingPicture
{
    Q_OBJECT

public:
    /// One that is to be decoded. `isKept`: its pixels stay as long as anybody holds it, seen or not.
    StoredPicture(std::shared_ptr<PictureStore> store, QString dosPath, const PictureWish &wish, bool isKept);
    ~StoredPicture() override;

    State state() const override { return m_state; }
    QImage image() const override { return m_image; }
    QImage scaledTo(const QSize &size) const override;
    void setSeen(bool seen) override;

    const QString &path() const { return m_path; }

private:
    friend class PictureStore;
    void enqueue();
    void arrive(const ReadPicture &read);
    void drop();
    qint64 octets() const { return m_image.sizeInBytes() + m_shown.sizeInBytes(); }

    std::shared_ptr<PictureStore> m_store;
    QString m_path;
    PictureWish m_wish;
    bool m_isKept;
    bool m_isSeen = false;
    State m_state = State::Coming;
    QImage m_image;
    QImage m_shown;
    DecodingQueue::Ticket m_ticket;
    /// Its place among those whose pixels can go, the one seen longest ago first.
    std::list<StoredPicture *>::iterator m_place;
    bool m_isListed = false;
};

/// The memory of the pictures that can be decoded again, and the way from the decoding threads back to them. When the
/// pixels take more than the budget, those go that were not seen for the longest time. Once they take three quarters of
/// it, only what is seen is decoded.
class PictureStore final : public QObject, public std::enable_shared_from_this<PictureStore>
{
    Q_OBJECT

public:
    /// `budget` is in octets.
    PictureStore(std::shared_ptr<DriveView> view, qint64 budget);
    ~PictureStore() override;

    /// How many octets the pixels take that can go.
    qint64 size() const { return m_size; }

private:
    friend class StoredPicture;
    void enter(StoredPicture &picture);
    void leave(StoredPicture &picture);
    void touch(StoredPicture &picture);
    void makeRoom();
    void tellRoom();
    void deliver(const DecodingQueue::Ticket &ticket, const ReadPicture &read);

    std::shared_ptr<DriveView> m_view;
    qint64 m_budget;
    qint64 m_size = 0;
    std::list<StoredPicture *> m_pictures;
    std::map<DecodingTicket *, StoredPicture *> m_awaited;
    std::shared_ptr<DecodingQueue> m_queue;
};

} // namespace vandrel
