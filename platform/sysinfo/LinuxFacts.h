#pragma once

#include <QByteArray>
#include <QString>

namespace vandrel {

/// The first octets of a file of the kernel's, which tells no size beforehand; empty when it cannot be read.
QByteArray kernelFile(const QString &path);
/// The same as one line of text, with what is no visible character taken out.
QString kernelText(const QString &path);

/// The first "model name" of /proc/cpuinfo (proc(5)); empty where the processor has none there.
QString modelName(const QByteArray &cpuInfo);

/// Whether /proc/asound/cards lists a card: a line that begins with a number.
bool listsSoundCard(const QByteArray &cards);

/// A maker's name as firmware gives it; empty for the words that stand there when nobody has filled it in.
QString realMaker(const QString &name);

} // namespace vandrel
