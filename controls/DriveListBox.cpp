#include "controls/DriveListBox.h"

#include <algorithm>
#include <utility>

#include <QDragEnterEvent>
#include <QSignalBlocker>
#include <QWheelEvent>

#include "runtime/EventGate.h"
#include "runtime/Events.h"
#include "runtime/Prompts.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

QString textOf(char letter)
{
    return {1, QLatin1Char(letter)};
}

QString nameOf(char letter)
{
    return textOf(letter) + u':';
}

QString lineOf(const LocalFolders::Drive &drive)
{
    return drive.label.isEmpty() ? nameOf(drive.letter)
                                 : QStringLiteral("%1 [%2]").arg(nameOf(drive.letter), drive.label);
}

} // namespace

DriveListBox::DriveListBox(std::shared_ptr<LocalFolders> folders, QWidget *parent)
    : QComboBox(parent), m_folders(std::move(folders)), m_letter(m_folders->view().currentDrive())
{
    setAccessibleName(tr("Drive"));
    // A long label must not make the window wide.
    setSizeAdjustPolicy(AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(6);
    setAcceptDrops(true);
    fill();
    onEvent(m_folders.get(), &LocalFolders::drivesChanged, this, &DriveListBox::fill);
    onEvent(this, &QComboBox::activated, this, &DriveListBox::userChose);
}

QString DriveListBox::Drive() const
{
    return nameOf(m_letter);
}

void DriveListBox::setDrive(const QString &drive)
{
    const QString letter = drive.left(1).toLower();
    const int index = letter.isEmpty() ? -1 : findData(letter);
    const auto present = m_folders->drives();
    const bool isThere
        = std::any_of(present.begin(), present.end(), [&letter](const LocalFolders::Drive &known) {
              return letter == QLatin1Char(known.letter);
          });
    if (index < 0 || !isThere)
        throw RuntimeError(error::DeviceUnavailable);
    if (letter != QLatin1Char(m_letter))
        take(letter[0].toLatin1());
}

void DriveListBox::fill()
{
    const QSignalBlocker quiet(this);
    clear();
    for (const LocalFolders::Drive &drive : m_folders->drives())
        addItem(lineOf(drive), textOf(drive.letter));
    const QString chosen = textOf(m_letter);
    if (findData(chosen) < 0)
        addItem(lineOf({m_letter, tr("not available")}), chosen);
    setCurrentIndex(findData(chosen));
}

void DriveListBox::take(char letter)
{
    m_letter = letter;
    setCurrentIndex(findData(textOf(letter)));
    Q_EMIT Change();
}

// What is shown may be gone by now, which must not end in the runtime's error box.
void DriveListBox::userChose(int index)
{
    const QString letter = itemData(index).toString();
    if (letter.isEmpty() || letter == QLatin1Char(m_letter))
        return;
    try {
        (void)m_folders->folderNames(fullDosPath(m_folders->view(), letter + u':'));
    } catch (const RuntimeError &failure) {
        setCurrentIndex(findData(textOf(m_letter)));
        MsgBox(failure.text(), Buttons::OkOnly, BoxIcon::Information);
        return;
    }
    take(letter[0].toLatin1());
}

// The wheel turns over a list in passing; it chooses only in a list that has the focus.
void DriveListBox::wheelEvent(QWheelEvent *event)
{
    if (hasFocus())
        QComboBox::wheelEvent(event);
    else
        event->ignore();
}

// Nothing can be dropped here. The event is raised once the drag can take an answer.
void DriveListBox::dragEnterEvent(QDragEnterEvent *event)
{
    event->ignore();
    EventGate::raise(this, [this] { Q_EMIT DragOver(); });
}

} // namespace vandrel
