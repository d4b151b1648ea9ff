#include "platform/web/NetworkEmulation.h"

#include <QPointer>
#include <QWebEnginePage>

#include "runtime/Events.h"

namespace vandrel {

namespace {

constexpr int pollInterval = 50; // Milliseconds.
// A minute: the tools are a large page, which a busy computer takes its time to load.
constexpr int mostPolls = 1200;

// The tools' page speaks to the engine in messages, each with a number that its answer bears. What is sent before the
// engine listens is lost, and the tools' own start may take the answers away, so that both are done anew until there is an
// answer to the second command. The script comes to true then.
const char *const commands = R"((function() {
    if (typeof InspectorFrontendHost === 'undefined' || typeof DevToolsAPI === 'undefined' || window.vandrelIsCut)
        return window.vandrelIsCut === true;
    if (DevToolsAPI.dispatchMessage !== window.vandrelDispatch) {
        const forward = DevToolsAPI.dispatchMessage;
        window.vandrelDispatch = function(message) {
            const answer = typeof message === 'string' ? JSON.parse(message) : message;
            if (answer.id !== 900001 && answer.id !== 900002)
                return forward.apply(this, arguments);
            if (answer.id === 900002 && !answer.error)
                window.vandrelIsCut = true;
        };
        DevToolsAPI.dispatchMessage = window.vandrelDispatch;
    }
    const send = function(command) { InspectorFrontendHost.sendMessageToBackend(JSON.stringify(command)); };
    send({id: 900001, method: 'Network.enable', params: {}});
    send({id: 900002, method: 'Network.emulateNetworkConditions',
          params: {offline: true, latency: 0, downloadThroughput: -1, uploadThroughput: -1}});
    return false;
})())";

} // namespace

NetworkEmulation::NetworkEmulation(QWebEnginePage *page, QObject *parent) : QObject(parent), m_page(page)
{
    m_poll.setInterval(pollInterval);
    onEvent(&m_poll, &QTimer::timeout, this, &NetworkEmulation::ask);
}

NetworkEmulation::~NetworkEmulation()
{
    delete m_tools;
}

void NetworkEmulation::cut()
{
    m_tools = new QWebEnginePage(m_page->profile());
    m_tools->setInspectedPage(m_page);
    m_poll.start();
}

// The tools say nothing when they are ready.
void NetworkEmulation::ask()
{
    if (++m_asked > mostPolls)
        return finish(false);
    m_tools->runJavaScript(QString::fromLatin1(commands), [alive = QPointer(this)](const QVariant &done) {
        if (alive && done.toBool())
            alive->finish(true);
    });
}

void NetworkEmulation::finish(bool cut)
{
    if (!m_poll.isActive())
        return;
    m_poll.stop();
    Q_EMIT finished(cut);
}

} // namespace vandrel
