#pragma once

#include <QString>

#include "platform/ping/EchoWay.h"

namespace vandrel {

/// Asks through the system's ping command, which has the right where this program has none. Data of up to fifteen
/// octets travels as it is; of longer data only the length does, since the command fills requests in its own way.
class PosixPingCommand final : public EchoWay
{
public:
    /// `program` is the command's path; looked for where programs are when empty.
    explicit PosixPingCommand(QString program = {});

    EchoOutcome ask(const EchoQuestion &question, EchoPause &pause) override;

private:
    QString m_program;
};

} // namespace vandrel
