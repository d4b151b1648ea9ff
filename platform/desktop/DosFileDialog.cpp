#include "platform/desktop/DosFileDialog.h"

#include <utility>

#include <QDir>
#include <QFile>
#include <QLineEdit>

#include "runtime/Events.h"
#include "runtime/Prompts.h"

namespace vandrel {

namespace {

bool namesDrive(const QString &path)
{
    return path.size() >= 2 && path[1] == u':' && path[0].isLetter() && path[0] < u'\x80';
}

} // namespace

QString nativeTyped(const DriveView &drives, const QString &folder, const QString &typed)
{
    QString dos;
    if (namesDrive(typed)) {
        dos = typed;
    } else if (typed.contains(u'\\') && !typed.startsWith(u'/')) {
        const QString dosFolder = drives.toDos(QFile::encodeName(folder));
        if (!namesDrive(dosFolder))
            return typed;
        dos = typed.startsWith(u'\\') ? dosFolder.left(2) + typed : dosFolder + u'\\' + typed;
    } else {
        return typed;
    }
    return QFile::decodeName(drives.toNative(dos));
}

DosFileDialog::DosFileDialog(std::shared_ptr<const DriveView> drives, QWidget *owner)
    : QFileDialog(owner), m_drives(std::move(drives))
{ }

// A path that leads nowhere keeps the dialog open: taken as a name it would save a file called like it.
bool DosFileDialog::translateTyped(QString &typed) const
{
    try {
        typed = nativeTyped(*m_drives, directory().absolutePath(), typed);
        return true;
    } catch (const RuntimeError &failure) {
        MsgBox(QStringLiteral("%1\n%2").arg(typed, failure.text()), Buttons::OkOnly, BoxIcon::Critical);
        return false;
    }
}

// Only the toolkit's own dialog has this box.
QLineEdit *DosFileDialog::nameBox() const
{
    return findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
}

void DosFileDialog::accept()
{
    if (QLineEdit *box = nameBox()) {
        QString typed = box->text();
        bool understood = false;
        guarded([&] { understood = translateTyped(typed); });
        if (!understood)
            return;
        if (typed != box->text())
            box->setText(typed);
    }
    QFileDialog::accept();
}

// The names offered while one types would stay open, or open once more, over a dialog that has left: the window
// below is then activated beside an open pop-up, and the toolkit gives none of its widgets the focus.
void DosFileDialog::done(int result)
{
    if (QLineEdit *box = nameBox())
        box->setCompleter(nullptr);
    QFileDialog::done(result);
}

} // namespace vandrel
