#include <QObject>

#include "app/SharedAdapters.h"
#include "app/TableModule.h"
#include "files/frmFile.h"
#include "platform/desktop/QtColorDialog.h"
#include "platform/desktop/QtCommonDialog.h"
#include "platform/desktop/SystemPrinter.h"
#include "platform/filesystem/DriveTable.h"
#include "platform/filesystem/NativeFileOperations.h"
#include "platform/filesystem/NativeFolders.h"
#include "platform/richtext/RichTextFiles.h"
#include "texteditor/frmText.h"

using namespace vandrel;

namespace {

QWidget *makeFileManager(const ToolServices &services)
{
    return new frmFile(services.folders, std::make_unique<NativeFileOperations>(services.drives));
}

QWidget *makeTextEditor(const ToolServices &services)
{
    TextEditorControls controls;
    controls.cd1 = services.commonDialog();
    controls.cd2 = services.commonDialog();
    controls.c1 = std::make_unique<QtColorDialog>();
    controls.printer = services.printer;
    controls.files = services.documents;
    return new frmText(std::move(controls));
}

/// The adapters to the system that the suite runs on.
class SystemAdapters final : public SharedAdapters
{
public:
    ToolServices services(WindowSlot &thumbnails) override
    {
        m_table->follow();
        const std::shared_ptr<DriveView> view = m_drives;
        return {view,
                std::make_shared<NativeFolders>(view, *m_table),
                std::make_shared<RichTextFiles>(view),
                [view] { return std::make_unique<QtCommonDialog>(view); },
                std::make_shared<SystemPrinter>(),
                &thumbnails};
    }

private:
    std::shared_ptr<DriveView> m_drives = std::make_shared<DriveView>();
    std::unique_ptr<DriveTable> m_table = DriveTable::create(*m_drives);
};

/// What the tools have in common, and the two tools that need no more than that.
class CommonModule : public QObject, public TableModule, public SharedAdaptersModule
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "io.github.vandrel.ToolModule")
    Q_INTERFACES(vandrel::ToolModule vandrel::SharedAdaptersModule)

public:
    CommonModule()
        : TableModule({
            {QStringLiteral("frmFile"), makeFileManager},
            {QStringLiteral("frmText"), makeTextEditor},
        })
    { }

    std::unique_ptr<SharedAdapters> makeAdapters() override { return std::make_unique<SystemAdapters>(); }
};

} // namespace

#include "CommonModule.moc"
