// The web browser's window on the page whose address is given, until somebody ends it: bench/browser looks at it from
// outside.

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>

#include "controls/DriveView.h"
#include "internet/frmBrowse.h"
#include "platform/web/EngineBrowser.h"

using namespace vandrel;

int main(int argc, char **argv)
{
    if (argc != 2)
        return 2;
    QApplication application(argc, argv);
    frmBrowse window(
        std::make_unique<EngineBrowser>(std::make_shared<DriveView>(), EngineBrowser::DialogMaker()));
    window.show();
    auto *address = window.findChild<QLineEdit *>(QStringLiteral("Text1"));
    address->setText(QString::fromLocal8Bit(argv[1]));
    QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"));
    QApplication::sendEvent(address, &enter);
    return QApplication::exec();
}
