#pragma once

#include <QObject>
#include <QTimer>

namespace vandrel {

/// A form's timer: while it is enabled, it raises Elapsed each time its interval has passed. Starts disabled, with an
/// interval of 0. User-interface thread only.
class Timer : public QObject
{
    Q_OBJECT

public:
    static constexpr int LongestInterval = 65535;

    explicit Timer(QObject *parent = nullptr);

    /// In milliseconds; 0 raises nothing. Assigning it begins the interval anew. Raises Invalid property value (380)
    /// for less than 0 and for more than LongestInterval.
    int Interval() const { return m_interval; }
    void setInterval(int milliseconds);

    bool Enabled() const { return m_isEnabled; }
    void setEnabled(bool enabled);

Q_SIGNALS:
    void Elapsed();

private:
    void apply();

    QTimer m_timer;
    int m_interval = 0;
    bool m_isEnabled = false;
};

} // namespace vandrel
