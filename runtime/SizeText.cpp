#include "runtime/SizeText.h"

#include <QLocale>

namespace vandrel {

QString sizeText(qint64 octets)
{
    return QLocale::c().formattedDataSize(octets, 1, QLocale::DataSizeSIFormat);
}

} // namespace vandrel
