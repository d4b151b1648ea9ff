#include "app/Suite.h"

#include "files/frmFile.h"
#include "launcher/Form1.h"
#include "launcher/frmPanel.h"
#include "platform/desktop/DesktopControlPanel.h"
#include "platform/desktop/QtColorDialog.h"
#include "platform/desktop/QtCommonDialog.h"
#include "platform/desktop/SystemPrinter.h"
#include "platform/filesystem/NativeFileOperations.h"
#include "platform/filesystem/NativeFolders.h"
#include "platform/richtext/RichTextFiles.h"
#include "texteditor/frmText.h"

namespace vandrel {

namespace {

frmText *makeTextEditor(const std::shared_ptr<DriveView> &drives)
{
    TextEditorControls controls;
    controls.cd1 = std::make_unique<QtCommonDialog>(drives);
    controls.cd2 = std::make_unique<QtCommonDialog>(drives);
    controls.c1 = std::make_unique<QtColorDialog>();
    controls.printer = std::make_unique<SystemPrinter>();
    controls.files = std::make_shared<RichTextFiles>(drives);
    return new frmText(std::move(controls));
}

frmFile *makeFileManager(const std::shared_ptr<DriveView> &drives, DriveTable &table)
{
    return new frmFile(std::make_shared<NativeFolders>(drives, table),
                       std::make_unique<NativeFileOperations>(drives));
}

} // namespace

Suite::Suite(const QDir &modules)
    : m_modules(modules),
      m_thumbnails([this] { return makeTool(QStringLiteral("pictures"), QStringLiteral("frmPic")); }),
      m_launcher([this] { return new frmPanel(m_tools, std::make_unique<DesktopControlPanel>()); }),
      m_about([this] { return new Form1(m_launcher); })
{
    addTools(QStringLiteral("browser"), {QStringLiteral("frmBrowse")});
    addTools(QStringLiteral("internet"),
             {QStringLiteral("frmFTP"), QStringLiteral("frmPOP"), QStringLiteral("frmSend"),
              QStringLiteral("frmPing"), QStringLiteral("frmIP")});
    addTools(QStringLiteral("system"),
             {QStringLiteral("frmCapture"), QStringLiteral("frmInfo"), QStringLiteral("frmRes")});
    addTools(QStringLiteral("piceditor"), {QStringLiteral("frmPicEdit")});
    addTools(QStringLiteral("pictures"), {QStringLiteral("frmView")});
    m_tools.setFactory(QStringLiteral("frmFile"),
                       [this] { return makeFileManager(drives(), *m_driveTable); });
    m_tools.setFactory(QStringLiteral("frmText"), [this] { return makeTextEditor(drives()); });
}

std::shared_ptr<DriveView> Suite::drives()
{
    m_driveTable->follow();
    return m_drives;
}

void Suite::addTools(const QString &module, const QStringList &windows)
{
    for (const QString &window : windows)
        m_tools.setFactory(window, [this, module, window] { return makeTool(module, window); });
}

QWidget *Suite::makeTool(const QString &module, const QString &window)
{
    const std::shared_ptr<DriveView> view = drives();
    return m_modules.load(module).make(window,
                                       {view, std::make_shared<NativeFolders>(view, *m_driveTable),
                                        std::make_shared<RichTextFiles>(view),
                                        [view] { return std::make_unique<QtCommonDialog>(view); },
                                        std::make_shared<SystemPrinter>(), &m_thumbnails});
}

} // namespace vandrel
