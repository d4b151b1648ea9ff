#pragma once

#include <memory>

#include <QElapsedTimer>
#include <QFile>
#include <QObject>
#include <QTimer>

#include "platform/filesystem/AtomicFile.h"
#include "platform/ftp/FtpData.h"
#include "platform/ftp/FtpLink.h"
#include "platform/ftp/LineEnds.h"
#include "platform/ftp/ListingParser.h"
#include "platform/ftp/ListingText.h"

namespace vandrel {

/// An operation with a data connection: TYPE, perhaps SIZE, the connection, the command, the data, the final reply. It
/// is complete when both the data and the reply have come to their end, in whichever order. Ends with exactly one of
/// done(), failed() and interrupted().
class FtpTransfer : public QObject
{
    Q_OBJECT

public:
    FtpTransfer(FtpLink &link, FtpDataRules &rules, QObject *parent);

    void start();
    /// Ends the transfer at once and raises nothing more.
    void cancel();

Q_SIGNALS:
    /// `text` is a listing; "" for the others.
    void done(const QString &text);
    /// The command has failed; the session goes on.
    void failed(const vandrel::FtpOutcome &why);
    /// What is on this side has failed while the server goes on sending or awaiting data.
    void interrupted(const vandrel::FtpOutcome &why);
    void progress(qint64 transferred, qint64 total);

protected:
    FtpData &data() { return m_data; }

    /// Makes the local side ready. Raises a RuntimeError.
    virtual void prepare() { }
    virtual bool isAscii() const { return true; }
    /// The name whose size is asked for; empty where that says nothing.
    virtual QByteArray sizedName() const { return {}; }
    virtual QByteArray command() const = 0;
    /// The data connection stands and the server awaits or sends data.
    virtual void opened() { }
    /// Takes data. Raises a RuntimeError.
    virtual void take(QByteArrayView octets) = 0;
    /// The data is complete and the server content. Raises a RuntimeError, or an FtpOutcome.
    virtual QString complete(bool isWhole) = 0;
    /// The command was refused with that reply. True when command() is another one now, which is to be tried.
    virtual bool tryAnother(const FtpReply &) { return false; }

    void count(qint64 octets);
    /// Octets transferred, and the size where it is known (else -1).
    qint64 transferred() const { return m_transferred; }
    qint64 total() const { return m_total; }
    void setTotal(qint64 total) { m_total = total; }
    bool isOver() const { return m_isOver; }
    /// Ends the transfer from this side.
    void interrupt(const FtpOutcome &why);

private:
    void chooseType();
    void askSize();
    void sendCommand();
    void takeReply(const FtpReply &reply);
    void openIfAccepted();
    void beginAgain();
    void takeData(QByteArrayView octets);
    void dataFailed(const FtpOutcome &why);
    void completeIfBoth();
    void fail(const FtpOutcome &why);

    FtpLink &m_link;
    FtpData m_data;
    qint64 m_transferred = 0;
    qint64 m_total = -1;
    QElapsedTimer m_sinceProgress;
    bool m_isCommandSent = false;
    bool m_isAccepted = false;
    bool m_isDataOpen = false;
    bool m_isOpened = false;
    bool m_hasReply = false;
    bool m_hasData = false;
    bool m_isWhole = true;
    bool m_isOver = false;
    std::unique_ptr<FtpOutcome> m_dataFailure;
};

/// Receives a file into a temporary one beside its target, which is replaced when everything has come.
class FtpDownload final : public FtpTransfer
{
public:
    FtpDownload(
        FtpLink &link, FtpDataRules &rules, const FtpRequest &request, QByteArray name, QObject *parent);

protected:
    void prepare() override;
    bool isAscii() const override { return m_isAscii; }
    QByteArray sizedName() const override { return m_isAscii ? QByteArray() : m_name; }
    QByteArray command() const override { return "RETR " + m_name; }
    void take(QByteArrayView octets) override;
    QString complete(bool isWhole) override;

private:
    void write(QByteArrayView octets);

    QByteArray m_name;
    bool m_isAscii;
    AtomicFile m_file;
    LineEndsReceived m_lineEnds;
};

/// Sends a file.
class FtpUpload final : public FtpTransfer
{
public:
    FtpUpload(FtpLink &link, FtpDataRules &rules, FtpRequest request, QByteArray name, QObject *parent);

protected:
    void prepare() override;
    bool isAscii() const override { return m_request.isAscii; }
    QByteArray command() const override { return "STOR " + m_name; }
    void opened() override;
    void take(QByteArrayView octets) override;
    QString complete(bool isWhole) override;

private:
    void sendTurn();
    bool sendNext();
    bool readMore();

    FtpRequest m_request;
    QByteArray m_name;
    std::unique_ptr<QFile> m_file;
    LineEndsSent m_lineEnds;
    // What has been read; the rest of it that is to be sent begins at m_unsent.
    QByteArray m_pending;
    qsizetype m_unsent = 0;
    QTimer m_nextTurn;
    bool m_isSent = false;
};

/// Receives the listing of the current directory.
class FtpListing final : public FtpTransfer
{
public:
    FtpListing(FtpLink &link, FtpDataRules &rules, bool offersMachineForm, QObject *parent);

protected:
    QByteArray command() const override;
    void take(QByteArrayView octets) override;
    QString complete(bool isWhole) override;
    bool tryAnother(const FtpReply &reply) override;

private:
    void begin(ListingParser::Format format);
    void append(const std::vector<ListingEntry> &entries);

    ListingParser::Format m_format;
    std::unique_ptr<ListingParser> m_parser;
    ListingLines m_lines;
    qsizetype m_size = 0;
};

} // namespace vandrel
