#include <functional>

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QCompleter>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QListView>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include "platform/desktop/DosFileDialog.h"
#include "platform/desktop/FileDialogFilters.h"
#include "platform/desktop/QtCommonDialog.h"
#include "runtime/EventGate.h"
#include "runtime/RuntimeError.h"
#include "tests/support/ScriptedPrompts.h"

using namespace vandrel;
using namespace vandrel::test;

/// The open and save dialogs, the toolkit's own ones, driven as a user would.
class TestFileDialogs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void emptyFieldsOfAFilterAreFilledFromTheDescriptions();
    void filtersMayHaveDescriptionsAndSeveralPatterns();
    void aFileNameOfPatternsIsNoName();
    void filtersDoNotMindTheCase();

    void openReturnsADosStylePath();
    void aDialogWithoutATitleSaysWhatItDoes();
    void aCancelledDialogLeavesTheFileName();
    void theOpenDialogFirstShowsThePatternsOfTheFileName();
    void theSaveDialogStartsWithItsFilterAndNoName();
    void aNameWithoutExtensionGetsThatOfTheFilter();
    void anotherFilterGivesItsOwnExtension();
    void anExistingFileIsAskedFor();
    void theNamesOfferedWhileTypingGoWithTheDialog();
    void aFolderThatDoesNotExistFallsBackToTheHome();
    void theFolderLastChosenFromComesAgain();
    void dosStylePathsCanBeTyped();
    void placesAreShownAsDosStylePaths();
    void theSideBarHasTheDrives();
    void aNameThatIsNotTakenStaysAsItWasTyped();
    void aFolderThatIsTypedIsGoneTo();
    void aPathOnAnUnknownDriveKeepsTheDialogOpen();
    void typedPathsAreUnderstood_data();
    void typedPathsAreUnderstood();
    void eventsWaitWhileADialogIsOpen();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    void make(const QString &name) const;
    /// Runs in the file dialog that opens next; `steps` must end it.
    void withDialog(const std::function<void(QFileDialog &, QLineEdit &)> &steps);

    /// Types the beginning of a name until the dialog offers the whole names.
    static void typeUntilNamesAreOffered(const QFileDialog &dialog, QLineEdit &name);

    std::unique_ptr<QTemporaryDir> m_folder;
    std::shared_ptr<DriveView> m_drives;
    bool m_driven = false;
};

void TestFileDialogs::initTestCase()
{
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
}

void TestFileDialogs::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    m_drives = std::make_shared<DriveView>();
    m_drives->setDrive('c', QFile::encodeName(m_folder->path()));
    m_drives->setDrive('z', QByteArray());
    m_driven = false;
}

void TestFileDialogs::make(const QString &name) const
{
    QFile file(path(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("x");
}

void TestFileDialogs::withDialog(const std::function<void(QFileDialog &, QLineEdit &)> &steps)
{
    QTimer::singleShot(0, this, [this, steps] {
        auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        QVERIFY(dialog);
        auto *name = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
        QVERIFY(name);
        m_driven = true;
        // A step that fails must not leave the test waiting for the dialog's end.
        const auto end = qScopeGuard([open = QPointer<QFileDialog>(dialog)] {
            if (open && open->isVisible())
                open->reject();
        });
        steps(*dialog, *name);
    });
}

namespace {

void accept(QDialog &dialog)
{
    dialog.accept();
}

QtCommonDialog &withTextFilters(QtCommonDialog &dialog)
{
    dialog.DialogTitle = QStringLiteral("Save");
    dialog.FileName = QStringLiteral("*.rtf");
    dialog.Filter = QStringLiteral("*.rtf||*.txt");
    dialog.InitDir = QStringLiteral("c:\\");
    return dialog;
}

} // namespace

void TestFileDialogs::emptyFieldsOfAFilterAreFilledFromTheDescriptions()
{
    const QList<FileDialogFilter> expected{{QStringLiteral("*.txt"), {QStringLiteral("*.txt")}},
                                           {QStringLiteral("*.rtf"), {QStringLiteral("*.rtf")}},
                                           {QStringLiteral("*.wri"), {QStringLiteral("*.wri")}},
                                           {QStringLiteral("*.doc"), {QStringLiteral("*.doc")}}};
    QCOMPARE(fileDialogFilters(QStringLiteral("*.txt||*.rtf||*.wri||*.doc")), expected);
}

void TestFileDialogs::filtersMayHaveDescriptionsAndSeveralPatterns()
{
    const QList<FileDialogFilter> expected{
        {QStringLiteral("Pictures"), {QStringLiteral("*.bmp"), QStringLiteral("*.jpg")}},
        {QStringLiteral("*.*"), {QStringLiteral("*.*")}}};
    QCOMPARE(fileDialogFilters(QStringLiteral("Pictures|*.bmp; *.jpg|nothing||*.*")), expected);
    QVERIFY(fileDialogFilters(QString()).isEmpty());
}

void TestFileDialogs::aFileNameOfPatternsIsNoName()
{
    QCOMPARE(patternsOf(QStringLiteral("*.txt;*.doc")),
             QStringList({QStringLiteral("*.txt"), QStringLiteral("*.doc")}));
    QVERIFY(patternsOf(QStringLiteral("c:\\a.txt")).isEmpty());
    QVERIFY(patternsOf(QStringLiteral("a.txt;*.doc")).isEmpty());
    QVERIFY(patternsOf(QString()).isEmpty());
}

void TestFileDialogs::filtersDoNotMindTheCase()
{
    QCOMPARE(toolkitFilter({QStringLiteral("*.Rtf"), {QStringLiteral("*.Rtf")}}),
             QStringLiteral("*.Rtf (*.Rtf *.rtf *.RTF)"));
}

void TestFileDialogs::openReturnsADosStylePath()
{
    make(QStringLiteral("letter.txt"));
    QtCommonDialog dialog(m_drives);
    withTextFilters(dialog).DialogTitle = QStringLiteral("Open");
    withDialog([](QFileDialog &shown, QLineEdit &name) {
        QCOMPARE(shown.windowTitle(), QStringLiteral("Open"));
        QCOMPARE(shown.acceptMode(), QFileDialog::AcceptOpen);
        name.setText(QStringLiteral("letter.txt"));
        accept(shown);
    });
    dialog.ShowOpen(nullptr);
    QVERIFY(m_driven);
    QCOMPARE(dialog.FileName, QStringLiteral("c:\\letter.txt"));
}

void TestFileDialogs::aDialogWithoutATitleSaysWhatItDoes()
{
    QtCommonDialog dialog(m_drives);
    const auto expectTitle = [this](const QString &title) {
        withDialog([title](QFileDialog &shown, QLineEdit &) {
            QCOMPARE(shown.windowTitle(), title);
            shown.reject();
        });
    };
    expectTitle(QStringLiteral("Open"));
    dialog.ShowOpen(nullptr);
    QVERIFY(m_driven);
    expectTitle(QStringLiteral("Save As"));
    dialog.ShowSave(nullptr);
    QVERIFY(m_driven);
}

void TestFileDialogs::aCancelledDialogLeavesTheFileName()
{
    QtCommonDialog dialog(m_drives);
    withTextFilters(dialog);
    withDialog([](QFileDialog &shown, QLineEdit &name) {
        name.setText(QStringLiteral("letter.rtf"));
        shown.reject();
    });
    dialog.ShowSave(nullptr);
    QVERIFY(m_driven);
    QCOMPARE(dialog.FileName, QStringLiteral("*.rtf"));
}

void TestFileDialogs::theOpenDialogFirstShowsThePatternsOfTheFileName()
{
    QtCommonDialog dialog(m_drives);
    withTextFilters(dialog).FileName = QStringLiteral("*.txt;*.rtf");
    withDialog([](QFileDialog &shown, QLineEdit &name) {
        QVERIFY(name.text().isEmpty());
        QCOMPARE(shown.nameFilters().size(), 3);
        QCOMPARE(shown.nameFilters().first(), QStringLiteral("*.txt; *.rtf (*.txt *.TXT *.rtf *.RTF)"));
        QCOMPARE(shown.selectedNameFilter(), QStringLiteral("*.txt; *.rtf"));
        shown.reject();
    });
    dialog.ShowOpen(nullptr);
    QVERIFY(m_driven);
}

void TestFileDialogs::theSaveDialogStartsWithItsFilterAndNoName()
{
    QtCommonDialog dialog(m_drives);
    withTextFilters(dialog).FileName = QStringLiteral("*.txt");
    withDialog([](QFileDialog &shown, QLineEdit &name) {
        QVERIFY(name.text().isEmpty());
        QCOMPARE(shown.acceptMode(), QFileDialog::AcceptSave);
        QCOMPARE(shown.nameFilters().size(), 2);
        QCOMPARE(shown.selectedNameFilter(), QStringLiteral("*.txt"));
        shown.reject();
    });
    dialog.ShowSave(nullptr);
    QVERIFY(m_driven);
}

void TestFileDialogs::aNameWithoutExtensionGetsThatOfTheFilter()
{
    QtCommonDialog dialog(m_drives);
    withTextFilters(dialog);
    withDialog([](QFileDialog &shown, QLineEdit &name) {
        name.setText(QStringLiteral("letter"));
        accept(shown);
    });
    dialog.ShowSave(nullptr);
    QCOMPARE(dialog.FileName, QStringLiteral("c:\\letter.rtf"));
}

void TestFileDialogs::anotherFilterGivesItsOwnExtension()
{
    QtCommonDialog dialog(m_drives);
    withTextFilters(dialog);
    withDialog([](QFileDialog &shown, QLineEdit &name) {
        auto *types = shown.findChild<QComboBox *>(QStringLiteral("fileTypeCombo"));
        QVERIFY(types);
        QTest::keyClick(types, Qt::Key_Down);
        name.setText(QStringLiteral("letter"));
        accept(shown);
    });
    dialog.ShowSave(nullptr);
    QCOMPARE(dialog.FileName, QStringLiteral("c:\\letter.txt"));
}

void TestFileDialogs::anExistingFileIsAskedFor()
{
    make(QStringLiteral("letter.rtf"));
    QtCommonDialog dialog(m_drives);
    withTextFilters(dialog);
    bool asked = false;
    withDialog([&](QFileDialog &shown, QLineEdit &name) {
        name.setText(QStringLiteral("letter"));
        QTimer::singleShot(0, &shown, [&asked] {
            auto *question = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            asked = question != nullptr;
            if (question)
                question->button(QMessageBox::No)->click();
        });
        accept(shown);
        QVERIFY(shown.isVisible());
        shown.reject();
    });
    dialog.ShowSave(nullptr);
    QVERIFY(asked);
    QCOMPARE(dialog.FileName, QStringLiteral("*.rtf"));
}

void TestFileDialogs::typeUntilNamesAreOffered(const QFileDialog &dialog, QLineEdit &name)
{
    const auto *files = dialog.findChild<QListView *>(QStringLiteral("listView"));
    QVERIFY(files);
    QTRY_COMPARE(files->model()->rowCount(files->rootIndex()), 1);
    QTest::keyClicks(&name, QStringLiteral("let"));
    QTRY_VERIFY(QApplication::activePopupWidget());
    QCOMPARE(QApplication::activePopupWidget(), name.completer()->popup());
}

// A pop-up that outlives the dialog keeps the window below from getting the focus.
void TestFileDialogs::theNamesOfferedWhileTypingGoWithTheDialog()
{
    make(QStringLiteral("letter.rtf"));
    for (const bool accepted : {true, false}) {
        bool openAtTheEnd = true;
        QtCommonDialog dialog(m_drives);
        withTextFilters(dialog);
        withDialog([&](QFileDialog &shown, QLineEdit &name) {
            typeUntilNamesAreOffered(shown, name);
            connect(&shown, &QDialog::finished, this,
                    [&openAtTheEnd] { openAtTheEnd = QApplication::activePopupWidget() != nullptr; });
            name.setText(QStringLiteral("letter.rtf"));
            if (accepted)
                accept(shown);
            else
                shown.reject();
        });
        dialog.ShowOpen(nullptr);
        QVERIFY(!openAtTheEnd);
    }
}

void TestFileDialogs::aFolderThatDoesNotExistFallsBackToTheHome()
{
    for (const QString &folder : {QStringLiteral("c:\\windows"), QStringLiteral("q:\\windows"), QString()}) {
        m_driven = false;
        QtCommonDialog dialog(m_drives);
        withTextFilters(dialog).InitDir = folder;
        withDialog([](QFileDialog &shown, QLineEdit &) {
            QCOMPARE(shown.directory(), QDir::home());
            shown.reject();
        });
        dialog.ShowOpen(nullptr);
        QVERIFY(m_driven);
    }
}

void TestFileDialogs::theFolderLastChosenFromComesAgain()
{
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("letters")));
    make(QStringLiteral("letters/a.rtf"));
    QtCommonDialog dialog(m_drives);
    withTextFilters(dialog);
    withDialog([](QFileDialog &shown, QLineEdit &name) {
        shown.setDirectory(shown.directory().filePath(QStringLiteral("letters")));
        name.setText(QStringLiteral("a.rtf"));
        accept(shown);
    });
    dialog.ShowOpen(nullptr);
    QCOMPARE(dialog.FileName, QStringLiteral("c:\\letters\\a.rtf"));
    dialog.FileName = QStringLiteral("*.rtf");
    withDialog([this](QFileDialog &shown, QLineEdit &) {
        QCOMPARE(shown.directory(), QDir(path(QStringLiteral("letters"))));
        shown.reject();
    });
    dialog.ShowOpen(nullptr);
}

void TestFileDialogs::dosStylePathsCanBeTyped()
{
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("letters")));
    QtCommonDialog dialog(m_drives);
    withTextFilters(dialog);
    withDialog([](QFileDialog &shown, QLineEdit &name) {
        name.setText(QStringLiteral("C:\\letters\\b"));
        accept(shown);
    });
    dialog.ShowSave(nullptr);
    QCOMPARE(dialog.FileName, QStringLiteral("c:\\letters\\b.rtf"));
}

void TestFileDialogs::placesAreShownAsDosStylePaths()
{
    QVERIFY(QDir(m_folder->path()).mkpath(QStringLiteral("letters/old")));
    QtCommonDialog dialog(m_drives);
    withTextFilters(dialog);
    withDialog([this](QFileDialog &shown, QLineEdit &) {
        auto *places = shown.findChild<QComboBox *>(QStringLiteral("lookInCombo"));
        QVERIFY(places);
        QTRY_COMPARE(places->currentText(), QStringLiteral("c:\\"));
        shown.setDirectory(path(QStringLiteral("letters/old")));
        QTRY_COMPARE(places->currentText(), QStringLiteral("c:\\letters\\old"));
        places->showPopup();
        QVERIFY(places->count() > 3);
        QVERIFY(places->findText(QStringLiteral("c:\\letters")) >= 0);
        for (int i = 0; i < places->count(); ++i)
            QVERIFY2(!places->itemText(i).contains(u'/'), qPrintable(places->itemText(i)));
        places->hidePopup();
        // A place that is chosen is gone to.
        places->setCurrentIndex(places->findText(QStringLiteral("c:\\letters")));
        Q_EMIT places->textActivated(places->currentText());
        QTRY_COMPARE(shown.directory().path(), path(QStringLiteral("letters")));
        QTRY_COMPARE(places->currentText(), QStringLiteral("c:\\letters"));
        shown.reject();
    });
    dialog.ShowSave(nullptr);
    QVERIFY(m_driven);
}

void TestFileDialogs::theSideBarHasTheDrives()
{
    QtCommonDialog dialog(m_drives);
    withTextFilters(dialog);
    withDialog([](QFileDialog &shown, QLineEdit &) {
        const auto *bar = shown.findChild<QAbstractItemView *>(QStringLiteral("sidebar"));
        QVERIFY(bar);
        QTRY_COMPARE(bar->model()->rowCount(), 2);
        QTRY_COMPARE(bar->model()->index(0, 0).data().toString(), QStringLiteral("c:\\"));
        QTRY_COMPARE(bar->model()->index(1, 0).data().toString(), QStringLiteral("z:\\"));
        QCOMPARE(bar->model()->index(1, 0).data(Qt::ToolTipRole).toString(), QStringLiteral("z:\\"));
        shown.reject();
    });
    dialog.ShowSave(nullptr);
    QVERIFY(m_driven);
}

void TestFileDialogs::aNameThatIsNotTakenStaysAsItWasTyped()
{
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("letters")));
    make(QStringLiteral("letters/a.rtf"));
    QtCommonDialog dialog(m_drives);
    withTextFilters(dialog);
    withDialog([this](QFileDialog &shown, QLineEdit &name) {
        name.setText(QStringLiteral("c:\\letters\\a.rtf"));
        QTimer::singleShot(0, this, [] {
            auto *question = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            QVERIFY(question);
            question->button(QMessageBox::No)->click();
        });
        accept(shown);
        QVERIFY(shown.isVisible());
        QCOMPARE(name.text(), QStringLiteral("c:\\letters\\a.rtf"));
        QTimer::singleShot(0, this, [] {
            auto *question = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            QVERIFY(question);
            question->button(QMessageBox::Yes)->click();
        });
        accept(shown);
        QVERIFY(!shown.isVisible());
    });
    dialog.ShowSave(nullptr);
    QCOMPARE(dialog.FileName, QStringLiteral("c:\\letters\\a.rtf"));
}

void TestFileDialogs::aFolderThatIsTypedIsGoneTo()
{
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("letters")));
    QtCommonDialog dialog(m_drives);
    withTextFilters(dialog);
    withDialog([this](QFileDialog &shown, QLineEdit &name) {
        name.setText(QStringLiteral("c:\\letters"));
        accept(shown);
        QVERIFY(shown.isVisible());
        QCOMPARE(shown.directory().path(), path(QStringLiteral("letters")));
        QCOMPARE(name.text(), QString());
        shown.reject();
    });
    dialog.ShowSave(nullptr);
    QVERIFY(m_driven);
}

void TestFileDialogs::aPathOnAnUnknownDriveKeepsTheDialogOpen()
{
    ScriptedPrompts prompts;
    prompts.expect(QStringLiteral("q:\\b.rtf\n") + runtimeErrorText(error::DeviceUnavailable),
                   QStringLiteral("Vandrel"));
    QtCommonDialog dialog(m_drives);
    withTextFilters(dialog);
    withDialog([](QFileDialog &shown, QLineEdit &name) {
        name.setText(QStringLiteral("q:\\b.rtf"));
        accept(shown);
        QVERIFY(shown.isVisible());
        shown.reject();
    });
    dialog.ShowSave(nullptr);
    QVERIFY(prompts.allShown());
    QCOMPARE(dialog.FileName, QStringLiteral("*.rtf"));
}

void TestFileDialogs::typedPathsAreUnderstood_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("native");
    QTest::newRow("name") << QStringLiteral("a.rtf") << QStringLiteral("a.rtf");
    QTest::newRow("native") << QStringLiteral("/tmp/a\\b.rtf") << QStringLiteral("/tmp/a\\b.rtf");
    QTest::newRow("drive") << QStringLiteral("d:\\a.rtf") << QStringLiteral("/disk/a.rtf");
    QTest::newRow("slashes") << QStringLiteral("d:/x/a.rtf") << QStringLiteral("/disk/x/a.rtf");
    QTest::newRow("relative") << QStringLiteral("x\\a.rtf") << QStringLiteral("/home/u/docs/x/a.rtf");
    QTest::newRow("rooted") << QStringLiteral("\\a.rtf") << QStringLiteral("/home/u/a.rtf");
    QTest::newRow("up") << QStringLiteral("..\\a.rtf") << QStringLiteral("/home/u/a.rtf");
}

void TestFileDialogs::typedPathsAreUnderstood()
{
    QFETCH(const QString, typed);
    QFETCH(const QString, native);
    DriveView drives;
    drives.setDrive('c', "/home/u");
    drives.setDrive('d', "/disk");
    QCOMPARE(nativeTyped(drives, QStringLiteral("/home/u/docs"), typed), native);
}

void TestFileDialogs::eventsWaitWhileADialogIsOpen()
{
    QtCommonDialog dialog(m_drives);
    withTextFilters(dialog);
    bool held = false;
    withDialog([&held](QFileDialog &shown, QLineEdit &) {
        held = EventGate::isHeld();
        shown.reject();
    });
    dialog.ShowOpen(nullptr);
    QVERIFY(held);
    QVERIFY(!EventGate::isHeld());
}

QTEST_MAIN(TestFileDialogs)
#include "TestFileDialogs.moc"
