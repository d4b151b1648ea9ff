#pragma once

#include <functional>
#include <memory>

#include <QPointer>
#include <QWidget>

class QVBoxLayout;
class QWebEngineDownloadRequest;

namespace vandrel {

class CommonDialog;
class DownloadRow;
class DriveView;

/// The last part of a name that a server proposes for a file, made harmless: nothing of a path is left, nor characters
/// that files of some systems cannot have; never empty, never a hidden file, at most 200 octets.
QString safeFileName(const QString &proposed);

/// The files that pages offer, each in a row with its progress and a button that stops it. The user says where each
/// goes, and is asked before anything is overwritten; it is written beside its place and put there when it is whole.
class PageDownloads : public QWidget
{
    Q_OBJECT

public:
    using DialogMaker = std::function<std::unique_ptr<CommonDialog>()>;

    PageDownloads(std::shared_ptr<DriveView> drives, DialogMaker makeDialog, QWidget *parent = nullptr);

    /// Asks for the place and begins, or drops the file where the user cancels. A download that goes on after it broke
    /// off keeps its place and its row.
    void take(QWebEngineDownloadRequest *download);

private:
    QString askForPlace(const QString &proposed);
    void offer(QWebEngineDownloadRequest *download);
    void begin(QWebEngineDownloadRequest *download, DownloadRow &row);

    std::shared_ptr<DriveView> m_drives;
    DialogMaker m_makeDialog;
    QVBoxLayout *m_rows;
};

} // namespace vandrel
