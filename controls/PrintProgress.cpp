#include "controls/PrintProgress.h"

#include <cmath>

#include <QCoreApplication>
#include <QEventLoop>
#include <QProgressDialog>

#include "runtime/Events.h"

namespace vandrel {

namespace {

// Most prints are done before anyone wonders.
constexpr int progressDelay = 500;
// How long the windows may go without taking events, in milliseconds.
constexpr int eventInterval = 30;
constexpr int dialogSteps = 1000;

} // namespace

PrintProgress::PrintProgress(QWidget &owner) : m_owner(&owner)
{
    m_sinceStart.start();
    m_sinceLast.start();
}

PrintProgress::~PrintProgress()
{
    delete m_dialog.data();
}

bool PrintProgress::goOn(double done)
{
    if (m_sinceLast.elapsed() < eventInterval)
        return !m_isCancelled;
    if (!m_dialog && m_sinceStart.elapsed() >= progressDelay)
        show();
    if (m_dialog) {
        m_dialog->setValue(static_cast<int>(std::lround(done * (dialogSteps - 1))));
        QCoreApplication::processEvents();
    } else {
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    }
    m_sinceLast.restart();
    return !m_isCancelled;
}

void PrintProgress::show()
{
    QWidget *window = m_owner ? m_owner->window() : nullptr;
    m_dialog = new QProgressDialog(QProgressDialog::tr("Printing the document"),
                                   QProgressDialog::tr("&Cancel"), 0, dialogSteps, window);
    m_dialog->setObjectName(QStringLiteral("PrintProgress"));
    m_dialog->setWindowTitle(QProgressDialog::tr("Print"));
    m_dialog->setWindowModality(Qt::ApplicationModal);
    m_dialog->setAutoClose(false);
    m_dialog->setAutoReset(false);
    onEvent(m_dialog.data(), &QProgressDialog::canceled, m_dialog.data(), [this] { m_isCancelled = true; });
    m_dialog->show();
}

} // namespace vandrel
