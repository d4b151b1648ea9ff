#pragma once

#include <memory>
#include <mutex>

#include <QIODevice>
#include <tiffio.h>

namespace vandrel {

struct CloseTiff {
    void operator()(TIFF *tiff) const { TIFFClose(tiff); }
};
using TiffHandle = std::unique_ptr<TIFF, CloseTiff>;

/// What the library complained about first.
struct TiffComplaints {
    QString first;
    bool hasErrors = false;
};

/// Opens a TIFF file on a device that can go to any position; `mode` as the library has it. The device and the
/// complaints must stay as long as the handle. Null where the device holds none.
TiffHandle openTiff(QIODevice &device, const char *mode, TiffComplaints &complaints);

/// The octets of a device, for one of several readers on threads of their own: each has its own position, and reads while
/// the others wait.
class SharedOctets final : public QIODevice
{
public:
    /// The device and the lock are those of all readers, and outlive them.
    SharedOctets(QIODevice &device, std::mutex &lock);

    qint64 size() const override { return m_size; }

protected:
    qint64 readData(char *data, qint64 mostOctets) override;
    qint64 writeData(const char *data, qint64 octets) override;

private:
    QIODevice &m_device;
    std::mutex &m_lock;
    qint64 m_size;
};

} // namespace vandrel
