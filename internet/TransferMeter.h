#pragma once

#include <QElapsedTimer>
#include <QWidget>

class QLabel;
class QProgressBar;

namespace vandrel {

/// How far a transfer has come, beside a status text: a bar, the rate, and the time left. Hidden while no transfer
/// runs.
class TransferMeter : public QWidget
{
    Q_OBJECT

public:
    explicit TransferMeter(QWidget *parent = nullptr);

    /// Takes what FTPClient::TransferProgress carries.
    void report(qint64 transferred, qint64 total);

private:
    QProgressBar *m_bar;
    QLabel *m_rate;
    QElapsedTimer m_running;
};

/// What is told beside the bar: "12.3 MB/s, 0:42 left"; without the time left where the total (-1) is not known, and
/// only what has come so far, as "1.5 MB", in the first half second.
QString transferText(qint64 transferred, qint64 total, qint64 milliseconds);

} // namespace vandrel
