#pragma once

#include <cstdint>

#include <QByteArray>
#include <QMetaType>
#include <QString>

namespace vandrel {

/// One operation, with everything that it needs as it stood when it was asked for.
struct FtpRequest {
    enum class Kind {
        Connect,
        Upload,
        Download,
        List,
        ReportDirectory,
        ChangeDirectory,
        RemoveDirectory,
        CreateDirectory,
        Delete,
        Rename,
    };

    Kind kind = Kind::List;
    /// As typed; for Connect.
    QString server;
    QString user;
    QString password;
    /// The remote name or path, and the new name of a Rename, as shown or typed.
    QString name;
    QString newName;
    /// The local file, native octets; empty where `problem` says why there is none.
    QByteArray localPath;
    QString localName;
    /// Line ends are converted.
    bool isAscii = false;
    /// What made the request impossible before it began; 0 when nothing did.
    std::int32_t problem = 0;
    QString problemText;
};

/// How an operation ended.
struct FtpOutcome {
    FtpRequest::Kind kind = FtpRequest::Kind::List;
    bool isDone = false;
    /// A listing or a directory; for a failure what went wrong.
    QString text;
    /// The server's reply number, a runtime error's number for a local file, or an FtpProblem.
    std::int32_t number = 0;
};

/// The control's own numbers for failures without a reply of the server.
enum class FtpProblem : std::int32_t {
    BadAddress = 1001,
    UnknownHost = 1002,
    Refused = 1003,
    TimedOut = 1004,
    Encryption = 1005,
    Protocol = 1006,
    Lost = 1007,
    NotConnected = 1008,
    DataConnection = 1009,
    Incomplete = 1010,
    TooLarge = 1011,
};

/// The failure of an operation; its kind is filled in by whoever runs it.
FtpOutcome ftpFailure(std::int32_t number, const QString &text);
FtpOutcome ftpFailure(FtpProblem problem, const QString &text);
/// That of a command whose name would end its line.
FtpOutcome ftpUnsendableName();

} // namespace vandrel

Q_DECLARE_METATYPE(vandrel::FtpOutcome)
