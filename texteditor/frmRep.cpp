#include "texteditor/frmRep.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QDialogButtonBox>
#include <QElapsedTimer>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScopeGuard>

#include "controls/RichTextBox.h"
#include "runtime/Events.h"
#include "runtime/Yield.h"
#include "texteditor/frmDoc.h"
#include "texteditor/frmText.h"

namespace vandrel {

namespace {

// How long a run may hold the window, in milliseconds.
constexpr int yieldInterval = 30;
constexpr int textWidth = 280;

} // namespace

frmRep::frmRep(frmText &frame) : QDialog(&frame), m_frame(frame)
{
    setObjectName(QStringLiteral("frmRep"));
    setWindowTitle(tr("Replace text.."));
    setAttribute(Qt::WA_DeleteOnClose);
    arrange();
    Command1.onEvent(&QPushButton::clicked, this, &frmRep::Command1_Click);
    onEvent(&frame, &frmText::textReadyChanged, this, &frmRep::updateOk);
    updateOk();
}

void frmRep::arrange()
{
    ControlArray<QLabel> Label1(QStringLiteral("Label1"));
    Label1.add(0, new QLabel(tr("Text to replace:"), this));
    Label1.add(1, new QLabel(tr("Text to replace with:"), this));
    auto *grid = new QGridLayout(this);
    for (const int index : {0, 1}) {
        QLineEdit *box = Text1.add(index, new QLineEdit(this));
        box->setMinimumWidth(textWidth);
        Label1[index]->setBuddy(box);
        grid->addWidget(Label1[index], index, 0);
        grid->addWidget(box, index, 1);
    }
    Check1 = new QCheckBox(tr("Replace all"), this);
    Check1->setObjectName(QStringLiteral("Check1"));
    grid->addWidget(Check1, 2, 1);

    auto *buttons = new QDialogButtonBox(this);
    Command1.add(0, new QPushButton(tr("&Ok"), this))->setDefault(true);
    Command1.add(1, new QPushButton(tr("&Cancel"), this));
    buttons->addButton(Command1[0], QDialogButtonBox::AcceptRole);
    buttons->addButton(Command1[1], QDialogButtonBox::RejectRole);
    grid->addWidget(buttons, 3, 0, 1, 2);
    grid->setRowStretch(2, 1);
    Text1[0]->setFocus();
}

void frmRep::updateOk()
{
    Command1[0]->setEnabled(m_frame.isTextReady() && !m_replacing);
}

void frmRep::Command1_Click(int Index)
{
    if (Index == 1) {
        close();
        return;
    }
    if (m_replacing)
        return;
    KeepGoing = true;
    if (Text1[0]->text().isEmpty())
        return;
    m_replacing = true;
    updateOk();
    const auto ended = qScopeGuard([this] {
        m_replacing = false;
        updateOk();
        Q_EMIT replacingEnded();
    });
    replaceIn(*m_frame.ActiveForm().rt1);
}

// Each pass searches the whole text again, so a replacement that holds the searched text is found itself and
// the run goes on until it is stopped. Nothing that the user closes meanwhile goes before the run has ended.
void frmRep::replaceIn(RichTextBox &rt1)
{
    RichTextBox::ChangeGroup group(rt1);
    QElapsedTimer sinceYield;
    sinceYield.start();
    while (KeepGoing) {
        FoundAt = rt1.find(Text1[0]->text());
        if (FoundAt == -1) {
            KeepGoing = false;
        } else {
            rt1.setSelText(Text1[1]->text());
            rt1.SetFocus();
            if (!Check1->isChecked())
                KeepGoing = false;
        }
        if (KeepGoing && sinceYield.elapsed() >= yieldInterval) {
            group.pause();
            yieldToEvents();
            group.resume();
            sinceYield.restart();
        }
    }
}

void frmRep::reject()
{
    close();
}

void frmRep::closeEvent(QCloseEvent *event)
{
    if (m_frame.closesAfterReplacing(this)) {
        event->ignore();
        return;
    }
    event->accept();
    Q_EMIT unloaded();
}

} // namespace vandrel
