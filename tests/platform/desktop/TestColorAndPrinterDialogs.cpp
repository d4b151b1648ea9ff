#include <functional>

#include <QApplication>
#include <QColorDialog>
#include <QPrintDialog>
#include <QPrinter>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include "platform/desktop/QtColorDialog.h"
#include "platform/desktop/SystemPrinter.h"
#include "runtime/EventGate.h"

using namespace vandrel;

/// The colour chooser and the print dialog, driven as a user would.
class TestColorAndPrinterDialogs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs); }

    void theChosenColorIsADecimalLong();
    void aCancelledChooserGivesTheColorItStartedWith();
    void aCancelledPrintDialogGivesNoDevice();
    void aPdfFileCanBePrintedWithoutAPrinter();
};

namespace {

template<typename Dialog>
void withDialog(QObject *context, const std::function<void(Dialog &)> &steps)
{
    QTimer::singleShot(0, context, [steps] {
        auto *dialog = qobject_cast<Dialog *>(QApplication::activeModalWidget());
        QVERIFY(dialog);
        QVERIFY(EventGate::isHeld());
        steps(*dialog);
    });
}

} // namespace

void TestColorAndPrinterDialogs::theChosenColorIsADecimalLong()
{
    QtColorDialog chooser;
    chooser.Color = 0x0000FF;
    withDialog<QColorDialog>(this, [](QColorDialog &shown) {
        QCOMPARE(shown.currentColor(), QColor(255, 0, 0));
        shown.setCurrentColor(QColor(1, 2, 3));
        shown.accept();
    });
    QCOMPARE(chooser.ShowColor(nullptr), QString::number(0x030201));
}

void TestColorAndPrinterDialogs::aCancelledChooserGivesTheColorItStartedWith()
{
    QtColorDialog chooser;
    chooser.Color = 0x123456;
    withDialog<QColorDialog>(this, [](QColorDialog &shown) {
        shown.setCurrentColor(QColor(1, 2, 3));
        shown.reject();
    });
    QCOMPARE(chooser.ShowColor(nullptr), QString::number(0x123456));
}

void TestColorAndPrinterDialogs::aCancelledPrintDialogGivesNoDevice()
{
    SystemPrinter printer;
    withDialog<QPrintDialog>(this, [](QPrintDialog &shown) { shown.reject(); });
    QVERIFY(!printer.hDC(nullptr, QStringLiteral("Untitled 1")));
}

void TestColorAndPrinterDialogs::aPdfFileCanBePrintedWithoutAPrinter()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("out.pdf"));
    SystemPrinter printer;
    withDialog<QPrintDialog>(this, [&file](QPrintDialog &shown) {
        shown.printer()->setOutputFormat(QPrinter::PdfFormat);
        shown.printer()->setOutputFileName(file);
        shown.done(QDialog::Accepted);
    });
    QPrinter *device = printer.hDC(nullptr, QStringLiteral("c:\\letter.rtf"));
    QVERIFY(device);
    QCOMPARE(device->docName(), QStringLiteral("letter.rtf"));
    QCOMPARE(device->outputFileName(), file);
}

QTEST_MAIN(TestColorAndPrinterDialogs)
#include "TestColorAndPrinterDialogs.moc"
