#include <QObject>

#include "app/TableModule.h"
#include "internet/frmBrowse.h"
#include "platform/web/EngineBrowser.h"

using namespace vandrel;

namespace {

QWidget *makeBrowser(const ToolServices &services)
{
    return new frmBrowse(std::make_unique<EngineBrowser>(services.drives, services.commonDialog));
}

/// The web browser, with the engine behind it, which is larger than the rest of the suite together.
class BrowserModule : public QObject, public TableModule
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "io.github.vandrel.ToolModule")
    Q_INTERFACES(vandrel::ToolModule)

public:
    BrowserModule() : TableModule({{QStringLiteral("frmBrowse"), makeBrowser}}) { }
};

} // namespace

#include "BrowserModule.moc"
