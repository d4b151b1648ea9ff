#include <QObject>

#include "app/ToolModule.h"
#include "app/ToolTable.h"
#include "files/frmPic.h"
#include "files/frmView.h"
#include "platform/filesystem/NativeFileOperations.h"
#include "platform/pictures/ThreadedDecoders.h"

using namespace vandrel;

namespace {

QWidget *makeViewer(const ToolServices &services)
{
    return new frmView({services.folders, std::make_unique<NativeFileOperations>(services.drives),
                        std::make_shared<ThreadedDecoders>(services.drives), services.thumbnails});
}

QWidget *makeThumbnails(const ToolServices &)
{
    return new frmPic;
}

/// The tools that show pictures, with the libraries that decode them behind them.
class PicturesModule : public QObject, public ToolModule
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
    const ToolTable m_tools{
        {QStringLiteral("frmView"), makeViewer},
        {QStringLiteral("frmPic"), makeThumbnails},
    };
};

} // namespace

#include "PicturesModule.moc"
