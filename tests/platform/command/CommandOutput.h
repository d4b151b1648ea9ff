#pragma once

#include <QByteArray>
#include <QProcessEnvironment>
#include <QStringList>

namespace vandrel::test {

/// What a command writes to its standard output, never null; null, with a warning that holds its errors, where it does not
/// end well within a minute.
QByteArray commandOutput(const QStringList &command,
                         const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment());

} // namespace vandrel::test
