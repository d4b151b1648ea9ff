#include <QObject>

#include "app/TableModule.h"
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
class PicturesModule : public QObject, public TableModule
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "io.github.vandrel.ToolModule")
    Q_INTERFACES(vandrel::ToolModule)

public:
    PicturesModule()
        : TableModule({
            {QStringLiteral("frmView"), makeViewer},
            {QStringLiteral("frmPic"), makeThumbnails},
        })
    { }
};

} // namespace

#include "PicturesModule.moc"
