// What the items of the menus and the controls of the tool bar do.

#include <QLocale>

#include "controls/Clipboard.h"
#include "controls/ComboBox.h"
#include "controls/Label.h"
#include "controls/MdiArea.h"
#include "controls/RichTextBox.h"
#include "runtime/Clock.h"
#include "runtime/Numbers.h"
#include "runtime/Prompts.h"
#include "texteditor/StyleButton.h"
#include "texteditor/frmDoc.h"
#include "texteditor/frmText.h"

namespace vandrel {

void frmText::new_Click()
{
    NewDocument();
}

void frmText::open_Click()
{
    const QString nothingChosen = QStringLiteral("*.txt;*.doc;*.wri;*.rtf");
    cd1->ShowOpen(this);
    if (cd1->FileName == nothingChosen)
        return;
    frmDoc *document = newChild(cd1->FileName);
    showChild(document);
    document->rt1->LoadFile(cd1->FileName);
    cd1->FileName = nothingChosen;
    childrenChanged();
}

void frmText::save_Click()
{
    if (ActiveForm().isUntitled()) {
        saveas_Click();
        return;
    }
    activeText().SaveFile(ActiveForm().Caption());
    ActiveForm().Tag = QStringLiteral("0");
}

// The dialog's former file name is remembered in SearchText, where Find Next looks for it afterwards.
void frmText::saveas_Click()
{
    SearchText = cd2->FileName;
    cd2->ShowSave(this);
    if (cd2->FileName == SearchText)
        return;
    activeText().SaveFile(cd2->FileName);
    ActiveForm().setCaption(cd2->FileName);
    cd2->FileName = SearchText;
    ActiveForm().Tag = QStringLiteral("0");
}

void frmText::print_Click()
{
    activeText().SelPrint(m_printer->hDC(this, ActiveForm().Caption()));
}

void frmText::exit_Click()
{
    close();
}

void frmText::copy_Click()
{
    Clipboard::SetText(activeText().SelText(), CLng(activeText().Tag));
    activeText().SetFocus();
}

void frmText::cut_Click()
{
    Clipboard::SetText(activeText().SelText(), CLng(activeText().Tag));
    activeText().setSelText(QString());
    activeText().SetFocus();
}

void frmText::paste_Click()
{
    activeText().setSelText(Clipboard::GetText(CLng(activeText().Tag)));
    activeText().SetFocus();
}

void frmText::delete_Click()
{
    activeText().setSelText(QString());
    activeText().SetFocus();
}

void frmText::clear_Click()
{
    const QString question
        = tr("Are you sure you want to clear the document %1?").arg(ActiveForm().Caption());
    if (MsgBox(question, Buttons::YesNo, BoxIcon::None, QString()) == Answer::Yes)
        activeText().setText(QString());
    activeText().SetFocus();
}

void frmText::timedate_Click()
{
    const QDateTime now = Clock::now();
    const QLocale locale = QLocale::system();
    activeText().setSelText(locale.toString(now.time(), QLocale::ShortFormat) + u' '
                            + locale.toString(now.date(), QLocale::ShortFormat));
    activeText().SetFocus();
}

void frmText::selall_Click()
{
    activeText().setSelStart(0);
    activeText().setSelLength(activeText().textLength());
}

void frmText::find_Click()
{
    SearchText = InputBox(tr("Enter the text to search for:"), tr("Find"));
    if (SearchText.isEmpty())
        return;
    activeText().find(SearchText);
    activeText().SetFocus();
}

void frmText::findn_Click()
{
    if (SearchText.isEmpty())
        return;
    activeText().find(SearchText, activeText().SelStart() + 1, activeText().textLength());
    activeText().SetFocus();
}

void frmText::tile_Click()
{
    m_area->Arrange(MdiArea::Arrangement::TileHorizontal);
}

void frmText::cascade_Click()
{
    m_area->Arrange(MdiArea::Arrangement::Cascade);
}

void frmText::cb1_Click()
{
    if (m_showingSelection)
        return;
    activeText().setSelFontName(toolbar.cb1->Text());
    activeText().SetFocus();
}

void frmText::cb2_Click()
{
    if (m_showingSelection)
        return;
    activeText().setSelFontSize(static_cast<float>(Val(toolbar.cb2->Text())));
    activeText().SetFocus();
}

// Applying a style moves the buttons to the selection's styles at once, so what the button gives is read before.
void frmText::Command2_Click()
{
    const bool bold = toolbar.Command2->FontStyle();
    activeText().setSelBold(bold);
    toolbar.Command2->setFontStyle(!bold);
    activeText().SetFocus();
}

void frmText::Command3_Click()
{
    const bool italic = toolbar.Command3->FontStyle();
    activeText().setSelItalic(italic);
    toolbar.Command3->setFontStyle(!italic);
    activeText().SetFocus();
}

void frmText::Command4_Click()
{
    const bool underline = toolbar.Command4->FontStyle();
    activeText().setSelUnderline(underline);
    toolbar.Command4->setFontStyle(!underline);
    activeText().SetFocus();
}

void frmText::Label1_Click()
{
    activeText().setSelColor(toolbar.Label1->ForeColor());
    activeText().SetFocus();
}

void frmText::Label1_DblClick()
{
    c1->Color = toolbar.Label1->ForeColor();
    toolbar.Label1->setForeColor(CLng(c1->ShowColor(this)));
    activeText().setSelColor(toolbar.Label1->ForeColor());
    activeText().SetFocus();
}

} // namespace vandrel
