#include "platform/imaging/codecs/TiffLibrary.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>

namespace vandrel {

namespace {

/// No single piece of a file needs more.
constexpr tmsize_t longestPiece = 256 * 1024 * 1024;

QIODevice *deviceOf(thandle_t handle)
{
    return static_cast<QIODevice *>(handle);
}

tmsize_t readDevice(thandle_t handle, void *to, tmsize_t count)
{
    return deviceOf(handle)->read(static_cast<char *>(to), count);
}

tmsize_t writeDevice(thandle_t handle, void *from, tmsize_t count)
{
    return deviceOf(handle)->write(static_cast<const char *>(from), count);
}

toff_t seekDevice(thandle_t handle, toff_t offset, int whence)
{
    QIODevice *device = deviceOf(handle);
    auto position = static_cast<qint64>(offset);
    if (whence == SEEK_CUR)
        position += device->pos();
    else if (whence == SEEK_END)
        position += device->size();
    if (position < 0)
        return static_cast<toff_t>(-1);
    // Damaged files send the reader behind their end, where there is nothing to read.
    const qint64 reachable = device->isWritable() ? position : std::min(position, device->size());
    return device->seek(reachable) ? static_cast<toff_t>(position) : static_cast<toff_t>(-1);
}

int closeDevice(thandle_t)
{
    return 0;
}

toff_t sizeOfDevice(thandle_t handle)
{
    return static_cast<toff_t>(deviceOf(handle)->size());
}

int complain(TiffComplaints &complaints, bool isError, const char *format, va_list arguments)
{
    if (complaints.first.isEmpty()) {
        std::array<char, 400> sentence{};
        std::vsnprintf(sentence.data(), sentence.size(), format, arguments);
        complaints.first = QString::fromLatin1(sentence.data());
    }
    complaints.hasErrors = complaints.hasErrors || isError;
    return 1;
}

int onError(TIFF *, void *complaints, const char *, const char *format, va_list arguments)
{
    return complain(*static_cast<TiffComplaints *>(complaints), true, format, arguments);
}

int onWarning(TIFF *, void *, const char *, const char *, va_list)
{
    // Unknown tags and the like harm no picture.
    return 1;
}

} // namespace

TiffHandle openTiff(QIODevice &device, const char *mode, TiffComplaints &complaints)
{
    const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(TIFFOpenOptionsAlloc(),
                                                                                   TIFFOpenOptionsFree);
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), longestPiece);
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), onError, &complaints);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), onWarning, nullptr);
    return TiffHandle(TIFFClientOpenExt("picture", mode, &device, readDevice, writeDevice, seekDevice,
                                        closeDevice, sizeOfDevice, nullptr, nullptr, options.get()));
}

SharedOctets::SharedOctets(QIODevice &device, std::mutex &lock)
    : m_device(device), m_lock(lock), m_size(device.size())
{
    open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

qint64 SharedOctets::readData(char *data, qint64 mostOctets)
{
    const std::lock_guard guard(m_lock);
    return m_device.seek(pos()) ? m_device.read(data, mostOctets) : -1;
}

qint64 SharedOctets::writeData(const char *, qint64)
{
    // Never opened for writing.
    return -1;
}

} // namespace vandrel
