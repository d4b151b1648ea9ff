#include "tests/texteditor/Editor.h"

namespace vandrel::test {

Editor::Editor(const QStringList &fonts) : files(std::make_shared<FakeDocumentFiles>())
{
    TextEditorControls controls;
    auto openDialog = std::make_unique<FakeCommonDialog>();
    auto saveDialog = std::make_unique<FakeCommonDialog>();
    auto colors = std::make_unique<FakeColorDialog>();
    auto printers = std::make_unique<FakePrinter>();
    cd1 = openDialog.get();
    cd2 = saveDialog.get();
    c1 = colors.get();
    printer = printers.get();
    controls.cd1 = std::move(openDialog);
    controls.cd2 = std::move(saveDialog);
    controls.c1 = std::move(colors);
    controls.printer = std::move(printers);
    controls.files = files;
    controls.screenFonts = fonts;
    frame = std::make_unique<frmText>(std::move(controls));
}

QStringList Editor::defaultFonts()
{
    return {QStringLiteral("First"), RichTextBox(std::make_shared<FakeDocumentFiles>()).font().Name,
            QStringLiteral("Last")};
}

bool Editor::show() const
{
    frame->show();
    frame->activateWindow();
    return QTest::qWaitForWindowActive(frame.get());
}

frmDoc &Editor::open(const QString &path, const FakeDocumentFiles::File &file)
{
    files->add(path, file);
    cd1->choose(path);
    frame->menus.open->trigger();
    return document();
}

void Editor::type(const QString &typed) const
{
    QTest::keyClicks(&text(), typed);
}

} // namespace vandrel::test
