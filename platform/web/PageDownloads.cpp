#include "platform/web/PageDownloads.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include <QCoreApplication>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>
#include <QWebEngineDownloadRequest>

#include "controls/CommonDialog.h"
#include "controls/DriveView.h"
#include "runtime/Events.h"
#include "runtime/SizeText.h"

namespace vandrel {

namespace {

constexpr qsizetype longestName = 200;
constexpr qsizetype longestProposal = 1000;

} // namespace

/// One file's row.
class DownloadRow : public QWidget
{
    Q_OBJECT

public:
    DownloadRow(const QString &path, QWidget *parent)
        : QWidget(parent), m_path(path), m_text(new QLabel(this)), m_bar(new QProgressBar(this)),
          m_again(new QPushButton(tr("Try again"), this)), m_button(new QPushButton(tr("Cancel"), this))
    {
        m_text->setTextFormat(Qt::PlainText);
        m_bar->setAccessibleName(tr("Progress of %1").arg(path));
        auto *row = new QHBoxLayout(this);
        row->setContentsMargins(4, 2, 4, 2);
        row->addWidget(m_text, 1);
        row->addWidget(m_bar);
        row->addWidget(m_again);
        row->addWidget(m_button);
        onEvent(m_again, &QPushButton::clicked, this, [this] {
            if (m_download)
                m_download->resume();
        });
        onEvent(m_button, &QPushButton::clicked, this, [this] { press(); });
    }

    /// Shows this download from now on, in place of the one before.
    void follow(QWebEngineDownloadRequest *download)
    {
        if (m_download)
            m_download->disconnect(this);
        m_download = download;
        m_id = download->id();
        onEvent(download, &QWebEngineDownloadRequest::receivedBytesChanged, this, [this] { showProgress(); });
        onEvent(download, &QWebEngineDownloadRequest::stateChanged, this, [this] { showState(); });
        // A cancelled download changes its state without saying so.
        onEvent(download, &QWebEngineDownloadRequest::isFinishedChanged, this, [this] { showState(); });
        showProgress();
    }

    quint32 id() const { return m_id; }
    const QString &path() const { return m_path; }

private:
    void showProgress()
    {
        const qint64 total = m_download->totalBytes();
        constexpr int whole = 1000;
        m_bar->setRange(0, total > 0 ? whole : 0);
        if (total > 0)
            m_bar->setValue(static_cast<int>(static_cast<double>(m_download->receivedBytes())
                                             / static_cast<double>(total) * whole));
        const bool interrupted = m_download->state() == QWebEngineDownloadRequest::DownloadInterrupted;
        const QString size = sizeText(m_download->receivedBytes());
        m_text->setText(
            interrupted
                ? tr("%1: %2, interrupted (%3)").arg(m_path, size, m_download->interruptReasonString())
                : tr("%1: %2").arg(m_path, size));
        m_again->setVisible(interrupted);
    }

    void showState()
    {
        if (!m_download->isFinished()) {
            showProgress();
            return;
        }
        m_bar->hide();
        m_again->hide();
        m_button->setText(tr("Close"));
        switch (m_download->state()) {
        case QWebEngineDownloadRequest::DownloadCompleted:
            m_text->setText(tr("%1: saved, %2").arg(m_path, sizeText(m_download->receivedBytes())));
            break;
        case QWebEngineDownloadRequest::DownloadCancelled:
            m_text->setText(tr("%1: cancelled").arg(m_path));
            break;
        default:
            m_text->setText(tr("%1: failed (%2)").arg(m_path, m_download->interruptReasonString()));
        }
    }

    void press()
    {
        if (m_download && !m_download->isFinished())
            m_download->cancel();
        else
            deleteLater();
    }

    QPointer<QWebEngineDownloadRequest> m_download;
    quint32 m_id = 0;
    QString m_path;
    QLabel *m_text;
    QProgressBar *m_bar;
    // There while a download has broken off and may go on.
    QPushButton *m_again;
    QPushButton *m_button;
};

namespace {

bool isHarmless(char32_t character)
{
    return QChar::isPrint(character)
        && std::u32string_view(U"<>:\"|?*").find(character) == std::u32string_view::npos;
}

bool isPointOrBlank(char32_t character)
{
    return character == U'.' || character == U' ';
}

qsizetype octetsOf(const std::u32string &name)
{
    return QString::fromStdU32String(name).toUtf8().size();
}

} // namespace

QString safeFileName(const QString &proposed)
{
    const QString last = proposed.mid(std::max(proposed.lastIndexOf(u'/'), proposed.lastIndexOf(u'\\')) + 1);
    std::u32string name = last.left(longestProposal).toStdU32String();
    std::replace_if(
        name.begin(), name.end(), [](char32_t character) { return !isHarmless(character); }, U'_');
    const auto begin = std::find_if_not(name.begin(), name.end(), isPointOrBlank);
    const auto end = std::find_if_not(name.rbegin(), name.rend(), isPointOrBlank).base();
    if (begin >= end)
        return QStringLiteral("download");
    name = std::u32string(begin, end);
    // From the middle, so that the extension stays.
    while (octetsOf(name) > longestName)
        name.erase(name.size() / 2, 1);
    return QString::fromStdU32String(name);
}

PageDownloads::PageDownloads(std::shared_ptr<DriveView> drives, DialogMaker makeDialog, QWidget *parent)
    : QWidget(parent), m_drives(std::move(drives)), m_makeDialog(std::move(makeDialog)),
      m_rows(new QVBoxLayout(this))
{
    setObjectName(QStringLiteral("PageDownloads"));
    m_rows->setContentsMargins(0, 0, 0, 0);
    m_rows->setSpacing(0);
}

// What broke off and goes on is offered once more.
void PageDownloads::take(QWebEngineDownloadRequest *download)
{
    const auto rows = findChildren<DownloadRow *>(QString(), Qt::FindDirectChildrenOnly);
    const auto known = std::find_if(
        rows.begin(), rows.end(), [download](const DownloadRow *row) { return row->id() == download->id(); });
    if (known != rows.end())
        begin(download, **known);
    else
        offer(download);
}

void PageDownloads::offer(QWebEngineDownloadRequest *download)
{
    const QPointer<PageDownloads> alive(this);
    const QPointer<QWebEngineDownloadRequest> offered(download);
    const QString path = askForPlace(safeFileName(download->suggestedFileName()));
    if (!alive || !offered)
        return;
    if (path.isEmpty()) {
        download->cancel();
        return;
    }
    auto *row = new DownloadRow(path, this);
    m_rows->addWidget(row);
    begin(download, *row);
}

void PageDownloads::begin(QWebEngineDownloadRequest *download, DownloadRow &row)
{
    const QFileInfo place(QString::fromUtf8(m_drives->toNative(row.path())));
    download->setDownloadDirectory(place.absolutePath());
    download->setDownloadFileName(place.fileName());
    row.follow(download);
    download->accept();
}

// The path as the user sees it; empty where the dialog was cancelled.
QString PageDownloads::askForPlace(const QString &proposed)
{
    const std::unique_ptr<CommonDialog> dialog = m_makeDialog();
    dialog->DialogTitle = tr("Save As");
    dialog->FileName = proposed;
    dialog->Filter = tr("All files") + QStringLiteral("|*.*");
    dialog->ShowSave(window());
    return dialog->FileName == proposed ? QString() : dialog->FileName;
}

} // namespace vandrel

#include "PageDownloads.moc"
