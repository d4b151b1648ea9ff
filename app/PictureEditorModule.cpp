#include <QObject>

#include "app/TableModule.h"
#include "piceditor/frmPicEdit.h"
#include "platform/imaging/control/EngineImage.h"

using namespace vandrel;

namespace {

QWidget *makePictureEditor(const ToolServices &services)
{
    const EngineServices engine{services.drives, services.printer, {}};
    return new frmPicEdit({std::make_unique<EngineImage>(engine), std::make_unique<EngineImage>(engine),
                           services.commonDialog(), services.commonDialog(), services.drives});
}

/// The tool that changes pictures, with the libraries that process them behind it.
class PictureEditorModule : public QObject, public TableModule
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "io.github.vandrel.ToolModule")
    Q_INTERFACES(vandrel::ToolModule)

public:
    PictureEditorModule() : TableModule({{QStringLiteral("frmPicEdit"), makePictureEditor}}) { }
};

} // namespace

#include "PictureEditorModule.moc"
