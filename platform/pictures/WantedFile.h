#pragma once

#include <functional>
#include <memory>

#include <QFile>

namespace vandrel {

/// A file that reads as broken once nobody wants it any more, so that a decoder deep in it comes to an end. Usable on
/// any one thread.
class WantedFile final : public QIODevice
{
public:
    WantedFile(std::unique_ptr<QFile> file, std::function<bool()> isWanted);

    bool isSequential() const override { return false; }
    qint64 size() const override { return m_file->size(); }
    bool seek(qint64 position) override;

protected:
    qint64 readData(char *data, qint64 maxSize) override;
    qint64 writeData(const char *data, qint64 size) override;

private:
    std::unique_ptr<QFile> m_file;
    std::function<bool()> m_isWanted;
};

} // namespace vandrel
