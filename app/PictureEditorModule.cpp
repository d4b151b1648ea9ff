#include <QObject>

#include "app/ToolModule.h"
#include "app/ToolTable.h"
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
class PictureEditorModule : public QObject, public ToolModule
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "io.github.vandrel.ToolModule")
    Q_INTERFACES(vandrel::ToolModule)

public:
    QWidget *make(const QString &window, const ToolServices &services) override
    {
        return makeTool(m_tools, window, services);
    }

private:
    const ToolTable m_tools{{QStringLiteral("frmPicEdit"), makePictureEditor}};
};

} // namespace

#include "PictureEditorModule.moc"
