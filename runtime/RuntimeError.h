#pragma once

#include <exception>

#include <QString>

namespace vandrel {

/// A failure with the runtime's usual number and text. Thrown by controls and conversions; where no handler
/// traps it, the event boundary (Events.h) shows the default error box and ends the program.
class RuntimeError : public std::exception
{
public:
    /// An error with the number's usual text.
    explicit RuntimeError(int number);
    /// An error with a text of our own, which names what was attempted and what the user can do.
    RuntimeError(int number, const QString &text);

    int number() const noexcept { return m_number; }
    const QString &text() const noexcept { return m_text; }
    /// The text in UTF-8, for logs and test output.
    const char *what() const noexcept override { return m_what.constData(); }

private:
    int m_number;
    QString m_text;
    QByteArray m_what;
};

/// The numbers the suite raises. The texts are the runtime's own (see RuntimeError.cpp).
namespace error {
inline constexpr int InvalidProcedureCall = 5;
inline constexpr int Overflow = 6;
inline constexpr int OutOfMemory = 7;
inline constexpr int SubscriptOutOfRange = 9;
inline constexpr int DivisionByZero = 11;
inline constexpr int TypeMismatch = 13;
inline constexpr int InternalError = 51;
inline constexpr int BadFileName = 52;
inline constexpr int FileNotFound = 53;
inline constexpr int FileAlreadyOpen = 55;
inline constexpr int DeviceIoError = 57;
inline constexpr int FileAlreadyExists = 58;
inline constexpr int DiskFull = 61;
inline constexpr int DeviceUnavailable = 68;
inline constexpr int PermissionDenied = 70;
inline constexpr int DiskNotReady = 71;
inline constexpr int PathFileAccess = 75;
inline constexpr int PathNotFound = 76;
inline constexpr int ObjectNotSet = 91;
inline constexpr int InvalidUseOfNull = 94;
inline constexpr int InvalidFileFormat = 321;
inline constexpr int InvalidPropertyValue = 380;
inline constexpr int ObjectRequired = 424;
inline constexpr int CannotCreateObject = 429;
inline constexpr int NoSuchMember = 438;
inline constexpr int InvalidPicture = 481;
inline constexpr int PrinterError = 482;
} // namespace error

/// The usual text of an error number; "Application-defined or object-defined error" for one without a text.
QString runtimeErrorText(int number);

} // namespace vandrel
