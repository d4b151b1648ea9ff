#pragma once

#include <memory>

#include <QFileDialog>

#include "controls/DriveView.h"

class QAbstractItemModel;
class QLineEdit;

namespace vandrel {

/// The toolkit's file dialog as a user of DOS-style paths sees it: they can be typed, the list of places shows them, and
/// the side bar has the drives.
class DosFileDialog : public QFileDialog
{
    Q_OBJECT

public:
    DosFileDialog(std::shared_ptr<const DriveView> drives, QWidget *owner);

    void accept() override;

protected:
    void done(int result) override;
    void showEvent(QShowEvent *event) override;

private:
    QLineEdit *nameBox() const;
    bool translateTyped(QString &typed) const;
    void acceptInstead(QLineEdit &box, const QString &native);
    void makeRoom();
    void showDrives();
    void showPlaces();
    void renamePlaces(QAbstractItemModel &places) const;
    void renameDrives(QAbstractItemModel &drives) const;
    QString shown(const QString &native) const;

    std::shared_ptr<const DriveView> m_drives;
    bool m_wasShown = false;
};

/// The native path that a text typed while `folder` (native) is shown stands for. A text that is not DOS-style
/// is returned as it is. Raises what DriveView::toNative raises.
QString nativeTyped(const DriveView &drives, const QString &folder, const QString &typed);

} // namespace vandrel
