#include "internet/frmBrowse.h"

#include <utility>

#include <QCloseEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QShortcut>
#include <QTimer>

#include "controls/CommandButton.h"
#include "controls/CoolBar.h"
#include "controls/Label.h"
#include "controls/StatusBar.h"
#include "runtime/Clock.h"
#include "runtime/Events.h"
#include "runtime/Numbers.h"
#include "runtime/Placement.h"
#include "runtime/RuntimeError.h"
#include "runtime/Twips.h"

namespace vandrel {

namespace {

// All measures in twips.
constexpr int clientWidth = 7905;
constexpr int clientHeight = 6540;
constexpr int bandLeft = 165;
constexpr int frameTop = 30;
constexpr int frameHeight = 360;
constexpr int addressTop = 420;
constexpr int addressHeight = 375;
constexpr int bandWidth = 7650;
constexpr int buttonWidth = 1095;
constexpr int buttonHeight = 375;
constexpr int buttonStep = 1080;
// What the page leaves free at the window's right edge.
constexpr int pageMargin = 100;
constexpr int layoutInterval = 200; // Milliseconds.
constexpr int layoutTicks = 5;
constexpr int enterKey = 13;
// An address can hold a whole page.
constexpr int longestAddress = 1'000'000;

enum Command { Back, Forward, Stop, Home, Search, Refresh };

double secondsOfDay()
{
    return Clock::now().time().msecsSinceStartOfDay() / 1000.0;
}

} // namespace

frmBrowse::frmBrowse(std::unique_ptr<WebBrowser> browser) : web(std::move(browser)), Timer1(new QTimer(this))
{
    setObjectName(QStringLiteral("frmBrowse"));
    setWindowTitle(tr("Internet - "));
    createBars();
    createPage();
    Timer1->setObjectName(QStringLiteral("Timer1"));
    Timer1->setInterval(layoutInterval);
    connectHandlers();
    addShortcuts();
    resize(pixels(clientWidth), pixels(clientHeight));
    Text1->clear();
    Text1->setFocus();
    Timer1->start();
}

frmBrowse::~frmBrowse() = default;

void frmBrowse::createBars()
{
    cb = new CoolBar(tr("Browser"), this);
    cb->setObjectName(QStringLiteral("cb"));
    cb->addBand(createBand());
    addToolBar(cb);
    sb = new StatusBar(this);
    sb->setObjectName(QStringLiteral("sb"));
    panel1 = sb->addPanel(QStringLiteral("panel1"), {}, 1);
    panel1->setAccessibleName(tr("Status"));
    panel1->setTextFormat(Qt::PlainText);
    panel2
        = sb->addPanel(QStringLiteral("panel2"), tr("Downloaded in %1 seconds").arg(QStringLiteral("0000")));
    panel2->setAccessibleName(tr("Download time"));
    setStatusBar(sb);
}

QWidget *frmBrowse::createBand()
{
    auto *band = new QWidget(cb);
    band->setMinimumSize(pixels(bandLeft + bandWidth), pixels(addressTop + addressHeight));
    band->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    Frame1 = new QWidget(band);
    Frame1->setObjectName(QStringLiteral("Frame1"));
    placeInTwips(Frame1, bandLeft, frameTop, bandWidth, frameHeight);
    createButtons();

    Text1 = new QLineEdit(band);
    Text1->setObjectName(QStringLiteral("Text1"));
    Text1->setAccessibleName(tr("Address"));
    Text1->setFont(fontOf({QStringLiteral("Arial"), 11.25}));
    Text1->setMaxLength(longestAddress);
    Text1->installEventFilter(this);
    placeInTwips(Text1, bandLeft, addressTop, bandWidth, addressHeight);
    band->installEventFilter(this);
    return band;
}

void frmBrowse::createButtons()
{
    const QString captions[]{tr("Back"),   tr("Forward"), tr("Stop"),   tr("Home"),
                             tr("Search"), tr("Refresh"), tr("Offline")};
    int index = 0;
    for (const QString &caption : captions) {
        CommandButton *button = Command1.add(index, new CommandButton(caption, Frame1));
        button->setFont(fontOf({QStringLiteral("Comic Sans MS"), 9.75}));
        placeInTwips(button, index * buttonStep, 0, buttonWidth, buttonHeight);
        ++index;
    }
}

void frmBrowse::createPage()
{
    web->setParent(this);
    web->setObjectName(QStringLiteral("web"));
    web->setAccessibleName(tr("Page"));
    // Behind the bars: for a moment the page may reach under the status bar.
    web->lower();
    web->show();
    web->setFocusPolicy(Qt::StrongFocus);
}

void frmBrowse::connectHandlers()
{
    Command1.onEvent(&CommandButton::clicked, this, &frmBrowse::Command1_Click);
    onEvent(web.get(), &WebBrowser::StatusTextChange, this, &frmBrowse::web_StatusTextChange);
    onEvent(web.get(), &WebBrowser::DownloadBegin, this, &frmBrowse::web_DownloadBegin);
    onEvent(web.get(), &WebBrowser::DownloadComplete, this, &frmBrowse::web_DownloadComplete);
    onEvent(web.get(), &WebBrowser::DocumentComplete, this, &frmBrowse::web_DocumentComplete);
    onEvent(cb, &CoolBar::HeightChanged, this, &frmBrowse::cb_HeightChanged);
    onEvent(Timer1, &QTimer::timeout, this, &frmBrowse::Timer1_Timer);
}

// The keys that every browser has for its address box.
void frmBrowse::addShortcuts()
{
    for (const QKeySequence &keys : {QKeySequence(Qt::CTRL | Qt::Key_L), QKeySequence(Qt::Key_F6)}) {
        auto *shortcut = new QShortcut(keys, this);
        onEvent(shortcut, &QShortcut::activated, this, [this] {
            Text1->setFocus(Qt::ShortcutFocusReason);
            Text1->selectAll();
        });
    }
}

void frmBrowse::Command1_Click(int Index)
{
    try {
        perform(Index);
    } catch (const RuntimeError &) {
        // A command that cannot be carried out, such as Back on the first page, does nothing.
        return;
    }
}

void frmBrowse::perform(int command)
{
    switch (command) {
    case Back:
        return web->GoBack();
    case Forward:
        return web->GoForward();
    case Stop:
        return web->Stop();
    case Home:
        return web->GoHome();
    case Search:
        return web->GoSearch();
    case Refresh:
        return web->Refresh();
    default:
        return web->setOffline(true);
    }
}

void frmBrowse::Text1_KeyPress(int KeyAscii)
{
    if (KeyAscii == enterKey)
        web->Navigate(Text1->text());
}

void frmBrowse::web_StatusTextChange(const QString &Text)
{
    panel1->setText(Text);
}

void frmBrowse::web_DownloadBegin()
{
    DownloadStart = CLng(secondsOfDay());
    panel2->setText({});
}

// The start was rounded before it is taken away, so that a short download can take 0 seconds or 1.
void frmBrowse::web_DownloadComplete()
{
    DownloadStart = CLng(secondsOfDay() - DownloadStart);
    const QString address = web->LocationURL();
    Text1->setText(address == QStringLiteral("http:///") ? QString() : address);
    Text1->setCursorPosition(0);
    panel2->setText(tr("Downloaded in %1 seconds").arg(DownloadStart));
}

void frmBrowse::web_DocumentComplete()
{
    setWindowTitle(tr("Internet - ") + web->LocationName());
}

void frmBrowse::Form_Resize()
{
    // One that runs goes on in its own time: it would never come to an end while the window is being sized.
    if (!Timer1->isActive())
        Timer1->start();
    if (!isMinimized()) {
        web->setWidth(twips(frameGeometry().width()) - pageMargin);
        web->setHeight(twips(sb->y()) - twips(cb->height()));
    }
    web->setTop(twips(cb->height()));
    web->setLeft(0);
}

void frmBrowse::Timer1_Timer()
{
    Form_Resize();
    ++ResizeTicks;
    if (ResizeTicks > layoutTicks) {
        Timer1->stop();
        ResizeTicks = 0;
    }
}

void frmBrowse::cb_HeightChanged()
{
    web->setTop(twips(cb->height()));
    web->setLeft(0);
    web->setWidth(twips(frameGeometry().width()));
    web->setHeight(twips(frameGeometry().height()) - twips(cb->height()));
}

void frmBrowse::resizeEvent(QResizeEvent *event)
{
    QMainWindow::resizeEvent(event);
    guarded([this] {
        if (web)
            Form_Resize();
    });
}

// The address box grows with the bar. The Enter key goes on to the box, as every key does.
bool frmBrowse::eventFilter(QObject *watched, QEvent *event)
{
    guarded([&] {
        if (watched == Text1 && event->type() == QEvent::KeyPress) {
            const QString text = static_cast<QKeyEvent *>(event)->text();
            if (!text.isEmpty())
                Text1_KeyPress(text[0].unicode());
        } else if (event->type() == QEvent::Resize && Text1 && watched == Text1->parent()) {
            Text1->resize(Text1->parentWidget()->width() - Text1->x(), Text1->height());
        }
    });
    return QMainWindow::eventFilter(watched, event);
}

// The page goes with the window, not with its memory, which the toolkit frees some time later.
void frmBrowse::closeEvent(QCloseEvent *event)
{
    event->accept();
    Timer1->stop();
    web.reset();
}

} // namespace vandrel
