#pragma once

#include <exception>

#include <QCoreApplication>
#include <QString>

namespace vandrel {

/// What the codecs say of a file, in the user's language.
inline QString pictureText(const char *source)
{
    return QCoreApplication::translate("PictureFiles", source);
}

/// Why a file cannot be decoded or written: the end of a sentence that begins with the file's name ("... holds no
/// picture."). Thrown inside the codecs; PictureFiles.h turns it into a runtime error.
class PictureFailure : public std::exception
{
public:
    explicit PictureFailure(QString reason) : m_reason(std::move(reason)) { }

    const QString &reason() const noexcept { return m_reason; }

private:
    QString m_reason;
};

/// Decoding was given up because its result is no longer wanted.
class DecodingCancelled : public std::exception
{ };

} // namespace vandrel
