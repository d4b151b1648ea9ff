#include <memory>

#include "app/ToolModules.h"
#include "controls/DriveView.h"
#include "files/frmFile.h"
#include "launcher/Form1.h"
#include "launcher/SuiteIcon.h"
#include "launcher/ToolSlots.h"
#include "launcher/frmPanel.h"
#include "platform/desktop/DesktopControlPanel.h"
#include "platform/desktop/QtColorDialog.h"
#include "platform/desktop/QtCommonDialog.h"
#include "platform/desktop/SystemPrinter.h"
#include "platform/filesystem/DriveTable.h"
#include "platform/filesystem/NativeFileOperations.h"
#include "platform/filesystem/NativeFolders.h"
#include "platform/richtext/RichTextFiles.h"
#include "runtime/Events.h"
#include "runtime/SuiteApplication.h"
#include "texteditor/frmText.h"

using namespace vandrel;

namespace {

/// Which adapter serves which control, and how each tool window is put together. Nothing is looked up before a
/// tool asks for it, so that the first window is there at once.
class Composition
{
public:
    Composition()
    {
        addTools(QStringLiteral("browser"), {QStringLiteral("frmBrowse")});
        addTools(QStringLiteral("internet"),
                 {QStringLiteral("frmFTP"), QStringLiteral("frmPOP"), QStringLiteral("frmSend"),
                  QStringLiteral("frmPing"), QStringLiteral("frmIP")});
        addTools(QStringLiteral("system"),
                 {QStringLiteral("frmCapture"), QStringLiteral("frmInfo"), QStringLiteral("frmRes")});
        addTools(QStringLiteral("piceditor"), {QStringLiteral("frmPicEdit")});
        addTools(QStringLiteral("pictures"), {QStringLiteral("frmView")});
        m_tools.setFactory(QStringLiteral("frmFile"), [this] { return makeFileManager(); });
        m_tools.setFactory(QStringLiteral("frmText"), [this] { return makeTextEditor(); });
    }

    WindowSlot about{[this] { return new Form1(launcher); }};

private:
    std::shared_ptr<DriveView> drives()
    {
        m_driveTable->follow();
        return m_drives;
    }

    void addTools(const QString &module, const QStringList &windows)
    {
        for (const QString &window : windows)
            m_tools.setFactory(window, [this, module, window] { return makeTool(module, window); });
    }

    QWidget *makeTool(const QString &module, const QString &window)
    {
        const std::shared_ptr<DriveView> view = drives();
        return m_modules.load(module).make(window,
                                           {view, std::make_shared<NativeFolders>(view, *m_driveTable),
                                            std::make_shared<RichTextFiles>(view),
                                            [view] { return std::make_unique<QtCommonDialog>(view); },
                                            std::make_shared<SystemPrinter>(), &m_thumbnails});
    }

    frmFile *makeFileManager()
    {
        const std::shared_ptr<DriveView> view = drives();
        return new frmFile(std::make_shared<NativeFolders>(view, *m_driveTable),
                           std::make_unique<NativeFileOperations>(view));
    }

    frmText *makeTextEditor()
    {
        TextEditorControls controls;
        controls.cd1 = std::make_unique<QtCommonDialog>(drives());
        controls.cd2 = std::make_unique<QtCommonDialog>(drives());
        controls.c1 = std::make_unique<QtColorDialog>();
        controls.printer = std::make_unique<SystemPrinter>();
        controls.files = std::make_shared<RichTextFiles>(drives());
        return new frmText(std::move(controls));
    }

    std::shared_ptr<DriveView> m_drives = std::make_shared<DriveView>();
    std::unique_ptr<DriveTable> m_driveTable = DriveTable::create(*m_drives);
    ToolModules m_modules{ToolModules::ownFolder()};
    ToolSlots m_tools;
    WindowSlot m_thumbnails{
        [this] { return makeTool(QStringLiteral("pictures"), QStringLiteral("frmPic")); }};
    WindowSlot launcher{[this] { return new frmPanel(m_tools, std::make_unique<DesktopControlPanel>()); }};
};

} // namespace

int main(int argc, char **argv)
{
    SuiteApplication application(argc, argv);
    SuiteApplication::setWindowIcon(suiteIcon());
    Composition suite;
    guarded([&suite] { suite.about.show(); });
    return SuiteApplication::exec();
}
