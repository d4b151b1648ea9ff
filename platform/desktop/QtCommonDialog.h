#pragma once

#include <memory>

#include "controls/CommonDialog.h"
#include "controls/DriveView.h"

class QFileDialog;

namespace vandrel {

class DosFileDialog;

/// The file dialogs of the running desktop, or the toolkit's own where the desktop has none.
///
/// A FileName of patterns chooses the filter first shown: the entry of Filter with the same patterns, or an entry
/// of its own before the others. In a save dialog a name typed without an extension gets that of the filter.
/// Filters do not mind the case of names. A dialog shown again with the same InitDir starts in the folder last
/// chosen from.
///
/// Names typed into the toolkit's own dialog may be DOS-style paths ("c:\letters\a.rtf", "letters\a.rtf"); a
/// desktop's dialog takes the paths that the desktop takes.
class QtCommonDialog : public CommonDialog
{
    Q_OBJECT

public:
    explicit QtCommonDialog(std::shared_ptr<const DriveView> drives, QObject *parent = nullptr);

    void ShowOpen(QWidget *owner) override;
    void ShowSave(QWidget *owner) override;

private:
    void show(QWidget *owner, bool save);
    void setUp(DosFileDialog &dialog, bool save) const;
    void setUpFilters(QFileDialog &dialog, bool save) const;
    QString startFolder() const;

    std::shared_ptr<const DriveView> m_drives;
    QString m_lastInitDir;
    QString m_lastFolder;
};

} // namespace vandrel
