#include <QObject>

#include "app/TableModule.h"
#include "internet/frmFTP.h"
#include "internet/frmIP.h"
#include "internet/frmPOP.h"
#include "internet/frmPing.h"
#include "internet/frmSend.h"
#include "platform/ftp/SocketFTPClient.h"
#include "platform/localip/LocalIP.h"
#include "platform/mail/pop/PopMailbox.h"
#include "platform/mail/smtp/SmtpSender.h"
#include "platform/ping/EchoPing.h"

using namespace vandrel;

namespace {

QWidget *makeFtpClient(const ToolServices &services)
{
    return new frmFTP(std::make_unique<SocketFTPClient>(services.drives), services.folders);
}

QWidget *makeMailReader(const ToolServices &services)
{
    return new frmPOP(std::make_unique<PopMailbox>(), services.documents);
}

QWidget *makeMailSender(const ToolServices &services)
{
    return new frmSend(std::make_unique<SmtpSender>(services.drives), services.commonDialog);
}

QWidget *makePing(const ToolServices &)
{
    return new frmPing(std::make_unique<EchoPing>());
}

QWidget *makeMyIP(const ToolServices &)
{
    return new frmIP(std::make_unique<LocalIP>());
}

/// The tools that speak to other machines, with the network, mail and security libraries behind them.
class InternetModule : public QObject, public TableModule
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "io.github.vandrel.ToolModule")
    Q_INTERFACES(vandrel::ToolModule)

public:
    InternetModule()
        : TableModule({
            {QStringLiteral("frmFTP"), makeFtpClient},
            {QStringLiteral("frmPOP"), makeMailReader},
            {QStringLiteral("frmSend"), makeMailSender},
            {QStringLiteral("frmPing"), makePing},
            {QStringLiteral("frmIP"), makeMyIP},
        })
    { }
};

} // namespace

#include "InternetModule.moc"
