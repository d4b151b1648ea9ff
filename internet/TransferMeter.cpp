#include "internet/TransferMeter.h"

#include <algorithm>

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>

#include "runtime/SizeText.h"

namespace vandrel {

namespace {

constexpr int barWidth = 120;
constexpr int wholeBar = 1000;

QString durationText(qint64 seconds)
{
    constexpr qint64 minute = 60;
    const qint64 hours = seconds / (minute * minute);
    const QString tail = QStringLiteral("%1:%2")
                             .arg(seconds / minute % minute, hours > 0 ? 2 : 1, 10, QLatin1Char('0'))
                             .arg(seconds % minute, 2, 10, QLatin1Char('0'));
    return hours > 0 ? QStringLiteral("%1:%2").arg(hours).arg(tail) : tail;
}

} // namespace

QString transferText(qint64 transferred, qint64 total, qint64 milliseconds)
{
    constexpr qint64 second = 1000;
    if (milliseconds < second / 2)
        return sizeText(transferred);
    const double perSecond = static_cast<double>(transferred) * second / static_cast<double>(milliseconds);
    const QString rate = QObject::tr("%1/s").arg(sizeText(static_cast<qint64>(perSecond)));
    if (total < 0 || perSecond < 1)
        return rate;
    const auto left
        = static_cast<qint64>(static_cast<double>(std::max<qint64>(0, total - transferred)) / perSecond);
    return QObject::tr("%1, %2 left").arg(rate, durationText(left));
}

TransferMeter::TransferMeter(QWidget *parent)
    : QWidget(parent), m_bar(new QProgressBar(this)), m_rate(new QLabel(this))
{
    m_bar->setAccessibleName(tr("Transfer"));
    m_bar->setFixedWidth(barWidth);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins({});
    row->addWidget(m_rate);
    row->addWidget(m_bar);
    hide();
}

void TransferMeter::report(qint64 transferred, qint64 total)
{
    if (transferred == 0 && total == 0) {
        m_running.invalidate();
        hide();
        return;
    }
    if (!m_running.isValid())
        m_running.start();
    m_bar->setRange(0, total > 0 ? wholeBar : 0);
    if (total > 0)
        m_bar->setValue(
            static_cast<int>(static_cast<double>(transferred) * wholeBar / static_cast<double>(total)));
    m_rate->setText(transferText(transferred, total, m_running.elapsed()));
    show();
}

} // namespace vandrel
