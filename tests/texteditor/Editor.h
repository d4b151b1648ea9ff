#pragma once

#include <memory>

#include <QAction>
#include <QMdiSubWindow>
#include <QTest>

#include "controls/ComboBox.h"
#include "controls/Label.h"
#include "controls/RichTextBox.h"
#include "tests/support/FakeDialogs.h"
#include "tests/support/FakeDocumentFiles.h"
#include "tests/support/ScriptedPrompts.h"
#include "texteditor/StyleButton.h"
#include "texteditor/frmDoc.h"
#include "texteditor/frmRep.h"
#include "texteditor/frmText.h"

namespace vandrel::test {

/// The text editor on scripted controls, and the hands of its user.
class Editor
{
public:
    /// The families of the list of fonts; the document's own is among them.
    explicit Editor(const QStringList &fonts = defaultFonts());

    static QStringList defaultFonts();

    /// Shows the frame and waits until it is active.
    bool show() const;

    frmDoc &document() const { return frame->ActiveForm(); }
    RichTextBox &text() const { return *document().rt1; }
    const TextToolBar &toolbar() const { return frame->toolbar; }

    /// Puts a file there and opens it.
    frmDoc &open(const QString &path, const FakeDocumentFiles::File &file);
    /// Types at the caret.
    void type(const QString &typed) const;
    /// Closes the child window of a document as its close box does.
    static void close(frmDoc &document) { document.unload(); }

    ScriptedPrompts prompts;
    ProgramEndSpy end;
    FakeCommonDialog *cd1 = nullptr;
    FakeCommonDialog *cd2 = nullptr;
    FakeColorDialog *c1 = nullptr;
    FakePrinter *printer = nullptr;
    std::shared_ptr<FakeDocumentFiles> files;
    std::unique_ptr<frmText> frame;
};

} // namespace vandrel::test
