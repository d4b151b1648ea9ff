#pragma once

#include <QObject>
#include <QString>

class QWidget;

namespace vandrel {

/// The open and save dialogs. There is no cancel error: a cancelled dialog leaves FileName as it was.
/// Paths are DOS-style, as everywhere the user sees them. User-interface thread only; the show operations
/// return when the dialog is closed, and the EventGate is held meanwhile.
class CommonDialog : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// The dialog's title; empty stands for "Open" or "Save As".
    QString DialogTitle;
    /// What the dialog starts with (a name, or patterns separated by ";" that choose the files first shown);
    /// after an accepted dialog the chosen file's full path.
    QString FileName;
    /// Descriptions and patterns in turn, separated by bars; a description with an empty pattern that reads
    /// as a pattern itself is one.
    QString Filter;
    /// The folder first shown; the user's home where it does not exist.
    QString InitDir;

    /// Shows the Open dialog over `owner`; accepts an existing file only.
    virtual void ShowOpen(QWidget *owner) = 0;
    /// Shows the Save As dialog over `owner`; asks before an existing file is chosen.
    virtual void ShowSave(QWidget *owner) = 0;
};

} // namespace vandrel
