#include "runtime/RuntimeError.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace vandrel {

namespace {

struct NumberedText {
    int number;
    const char16_t *text;
};

constexpr std::array texts{
    NumberedText{error::InvalidProcedureCall, u"Invalid procedure call or argument"},
    NumberedText{error::Overflow, u"Overflow"},
    NumberedText{error::OutOfMemory, u"Out of memory"},
    NumberedText{error::SubscriptOutOfRange, u"Subscript out of range"},
    NumberedText{error::DivisionByZero, u"Division by zero"},
    NumberedText{error::TypeMismatch, u"Type mismatch"},
    NumberedText{error::InternalError, u"Internal error"},
    NumberedText{error::BadFileName, u"Bad file name or number"},
    NumberedText{error::FileNotFound, u"File not found"},
    NumberedText{error::FileAlreadyOpen, u"File already open"},
    NumberedText{error::DeviceIoError, u"Device I/O error"},
    NumberedText{error::FileAlreadyExists, u"File already exists"},
    NumberedText{error::DiskFull, u"Disk full"},
    NumberedText{error::DeviceUnavailable, u"Device unavailable"},
    NumberedText{error::PermissionDenied, u"Permission denied"},
    NumberedText{error::DiskNotReady, u"Disk not ready"},
    NumberedText{error::PathFileAccess, u"Path/File access error"},
    NumberedText{error::PathNotFound, u"Path not found"},
    NumberedText{error::ObjectNotSet, u"Object variable or With block variable not set"},
    NumberedText{error::InvalidUseOfNull, u"Invalid use of Null"},
    NumberedText{error::InvalidFileFormat, u"Invalid file format"},
    NumberedText{error::InvalidPropertyValue, u"Invalid property value"},
    NumberedText{error::ObjectRequired, u"Object required"},
    NumberedText{error::CannotCreateObject, u"Component can't create object"},
    NumberedText{error::NoSuchMember, u"Object doesn't support this property or method"},
    NumberedText{error::InvalidPicture, u"Invalid picture"},
    NumberedText{error::PrinterError, u"Printer error"},
};

} // namespace

QString runtimeErrorText(int number)
{
    const auto found = std::find_if(texts.begin(), texts.end(),
                                    [number](const NumberedText &entry) { return entry.number == number; });
    return QString::fromUtf16(found != texts.end() ? found->text
                                                   : u"Application-defined or object-defined error");
}

RuntimeError::RuntimeError(int number) : RuntimeError(number, runtimeErrorText(number)) { }

RuntimeError::RuntimeError(int number, const QString &text)
    : m_number(number), m_text(text), m_what(text.toUtf8())
{ }

} // namespace vandrel
