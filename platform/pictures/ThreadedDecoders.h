#pragma once

#include <memory>

#include "controls/DriveView.h"
#include "controls/PictureDecoder.h"

namespace vandrel {

class PictureStore;

/// Decoders that decode on threads of their own, no larger than is needed, and share a bounded memory.
class ThreadedDecoders final : public PictureDecoders
{
public:
    /// What the pixels of thumbnails may take, in octets.
    static constexpr qint64 UsualBudget = 64 * 1024 * 1024;

    explicit ThreadedDecoders(std::shared_ptr<DriveView> view, qint64 budget = UsualBudget);
    ~ThreadedDecoders() override;

    std::unique_ptr<PictureDecoder> make() override;

    /// How many octets the pixels of the thumbnails take now.
    qint64 size() const;

private:
    std::shared_ptr<PictureStore> m_store;
};

} // namespace vandrel
