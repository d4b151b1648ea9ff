#pragma once

#include <memory>

#include <QFileDialog>

#include "controls/DriveView.h"

class QLineEdit;

namespace vandrel {

/// The toolkit's file dialog, into which DOS-style paths can be typed.
class DosFileDialog : public QFileDialog
{
    Q_OBJECT

public:
    DosFileDialog(std::shared_ptr<const DriveView> drives, QWidget *owner);

    void accept() override;

protected:
    void done(int result) override;

private:
    QLineEdit *nameBox() const;
    bool translateTyped(QString &typed) const;

    std::shared_ptr<const DriveView> m_drives;
};

/// The native path that a text typed while `folder` (native) is shown stands for. A text that is not DOS-style
/// is returned as it is. Raises what DriveView::toNative raises.
QString nativeTyped(const DriveView &drives, const QString &folder, const QString &typed);

} // namespace vandrel
