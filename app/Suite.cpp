#include "app/Suite.h"

#include "launcher/Form1.h"
#include "launcher/frmPanel.h"
#include "platform/controlpanel/DesktopControlPanel.h"

namespace vandrel {

Suite::Suite(const QDir &modules)
    : m_modules(modules),
      m_thumbnails([this] { return makeTool(QStringLiteral("pictures"), QStringLiteral("frmPic")); }),
      m_launcher([this] { return new frmPanel(m_tools, std::make_unique<DesktopControlPanel>()); }),
      m_about([this] { return new Form1(m_launcher); })
{
    addTools(QStringLiteral("browser"), {QStringLiteral("frmBrowse")});
    addTools(QStringLiteral("common"), {QStringLiteral("frmFile"), QStringLiteral("frmText")});
    addTools(QStringLiteral("internet"),
             {QStringLiteral("frmFTP"), QStringLiteral("frmPOP"), QStringLiteral("frmSend"),
              QStringLiteral("frmPing"), QStringLiteral("frmIP")});
    addTools(QStringLiteral("system"),
             {QStringLiteral("frmCapture"), QStringLiteral("frmInfo"), QStringLiteral("frmRes")});
    addTools(QStringLiteral("piceditor"), {QStringLiteral("frmPicEdit")});
    addTools(QStringLiteral("pictures"), {QStringLiteral("frmView")});
}

void Suite::addTools(const QString &module, const QStringList &windows)
{
    for (const QString &window : windows)
        m_tools.setFactory(window, [this, module, window] { return makeTool(module, window); });
}

QWidget *Suite::makeTool(const QString &module, const QString &window)
{
    if (!m_adapters)
        m_adapters = m_modules.loadAdapters();
    return m_modules.load(module).make(window, m_adapters->services(m_thumbnails));
}

} // namespace vandrel
