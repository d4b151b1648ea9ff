#pragma once

#include <memory>

#include <QComboBox>
#include <QString>

#include "controls/LocalFolders.h"

namespace vandrel {

/// The drives there are, of which one is chosen. Drives that come and go do so in the open list; the chosen one stays
/// even when it goes.
///
/// A drive that the user chooses and that cannot be read is told in a message box, and the one before stays chosen.
/// Starts with the current drive, and raises no event for that.
class DriveListBox : public QComboBox
{
    Q_OBJECT

public:
    explicit DriveListBox(std::shared_ptr<LocalFolders> folders, QWidget *parent = nullptr);

    /// The chosen drive, as "c:".
    QString Drive() const;
    /// Chooses a drive by the letter that a text begins with, and raises Change; the same drive raises nothing.
    /// Raises Device unavailable (68) for a drive that there is not.
    void setDrive(const QString &drive);

Q_SIGNALS:
    void Change();
    /// Something is dragged over the list.
    void DragOver();

protected:
    void wheelEvent(QWheelEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;

private:
    void fill();
    void take(char letter);
    void userChose(int index);

    std::shared_ptr<LocalFolders> m_folders;
    char m_letter = 0;
};

} // namespace vandrel
