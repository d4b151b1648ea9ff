#pragma once

#include <QObject>
#include <QTimer>

class QWebEnginePage;

namespace vandrel {

/// Cuts a page off from the network from inside the engine, as its own tools for developers can: what the page has in
/// the cache is still shown, however old it is. The tools work in a hidden page and open no port.
class NetworkEmulation : public QObject
{
    Q_OBJECT

public:
    explicit NetworkEmulation(QWebEnginePage *page, QObject *parent = nullptr);
    ~NetworkEmulation() override;

    /// Begins; finished() follows within a few seconds.
    void cut();

Q_SIGNALS:
    /// Whether the page is cut off; false where the engine's tools did not answer.
    void finished(bool cut);

private:
    void ask();
    void finish(bool cut);

    QWebEnginePage *m_page;
    QWebEnginePage *m_tools = nullptr;
    QTimer m_poll;
    int m_asked = 0;
};

} // namespace vandrel
