#include "platform/desktop/DosFileDialog.h"

#include <utility>

#include <QAbstractItemView>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QHeaderView>
#include <QLineEdit>
#include <QPointer>
#include <QScreen>
#include <QTreeView>
#include <QUrl>

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
        if (typed != box->text()) {
            acceptInstead(*box, typed);
            return;
        }
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

// A dialog that stays open, for another name, goes on with what the user has typed, unless that was a folder to go to.
void DosFileDialog::acceptInstead(QLineEdit &box, const QString &native)
{
    const QString typed = box.text();
    const QString folder = directory().absolutePath();
    const QPointer<QLineEdit> stillThere(&box);
    box.setText(native);
    QFileDialog::accept();
    if (stillThere && isVisible())
        box.setText(directory().absolutePath() == folder ? typed : QString());
}

void DosFileDialog::showEvent(QShowEvent *event)
{
    if (!std::exchange(m_wasShown, true)) {
        guarded([this] {
            showDrives();
            showPlaces();
            makeRoom();
        });
    }
    QFileDialog::showEvent(event);
}

// Sizes, kinds and dates are readable without drawing the columns wider first.
void DosFileDialog::makeRoom()
{
    const auto *files = findChild<QTreeView *>(QStringLiteral("treeView"));
    if (!files)
        return;
    const int letter = fontMetrics().averageCharWidth();
    const int columns[] = {38 * letter, 12 * letter, 18 * letter, 24 * letter};
    int width = 30 * letter;
    for (int column = 0; column < static_cast<int>(std::size(columns)); ++column) {
        files->header()->resizeSection(column, columns[column]);
        width += columns[column];
    }
    const QSize screen = QWidget::screen()->availableSize();
    resize(size().expandedTo(QSize(width, width * 3 / 5)).boundedTo(screen));
}

// The side bar has a place for each drive.
void DosFileDialog::showDrives()
{
    const auto *bar = findChild<QAbstractItemView *>(QStringLiteral("sidebar"));
    if (!bar)
        return;
    QList<QUrl> roots;
    for (const auto &[letter, root] : m_drives->drives())
        roots.append(QUrl::fromLocalFile(root.isEmpty() ? QStringLiteral("/") : QFile::decodeName(root)));
    setSidebarUrls(roots);
    QAbstractItemModel *model = bar->model();
    const auto rename = [this, model] { renameDrives(*model); };
    onEvent(model, &QAbstractItemModel::dataChanged, this, rename);
    onEvent(model, &QAbstractItemModel::rowsInserted, this, rename);
    rename();
}

// The toolkit fills the list of places with native paths, again and again.
void DosFileDialog::showPlaces()
{
    const auto *places = findChild<QComboBox *>(QStringLiteral("lookInCombo"));
    if (!places)
        return;
    QAbstractItemModel *model = places->model();
    const auto rename = [this, model] { renamePlaces(*model); };
    onEvent(model, &QAbstractItemModel::dataChanged, this, rename);
    onEvent(model, &QAbstractItemModel::rowsInserted, this, rename);
    rename();
}

void DosFileDialog::renamePlaces(QAbstractItemModel &places) const
{
    for (int row = 0; row < places.rowCount(); ++row) {
        const QModelIndex place = places.index(row, 0);
        for (const int role : {int{Qt::DisplayRole}, int{Qt::ToolTipRole}}) {
            if (const QString path = place.data(role).toString(); path.startsWith(u'/'))
                places.setData(place, shown(path), role);
        }
    }
}

void DosFileDialog::renameDrives(QAbstractItemModel &drives) const
{
    const QList<QUrl> roots = sidebarUrls();
    for (int row = 0; row < drives.rowCount() && row < roots.size(); ++row) {
        const QString drive = shown(roots[row].toLocalFile());
        const QModelIndex index = drives.index(row, 0);
        for (const int role : {int{Qt::DisplayRole}, int{Qt::ToolTipRole}}) {
            if (index.data(role).toString() != drive)
                drives.setData(index, drive, role);
        }
    }
}

QString DosFileDialog::shown(const QString &native) const
{
    return m_drives->toDos(QFile::encodeName(native));
}

} // namespace vandrel
