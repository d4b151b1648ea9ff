#pragma once

#include <memory>

#include <QMainWindow>

#include "controls/ControlArray.h"
#include "controls/WebBrowser.h"
#include "runtime/Integer.h"

class QLineEdit;
class QTimer;

namespace vandrel {

class CommandButton;
class CoolBar;
class Label;
class StatusBar;

/// The web browser: a box for the address, seven buttons, the page, and a status bar that tells what is going on and how
/// long the last page took.
class frmBrowse : public QMainWindow
{
    Q_OBJECT

public:
    explicit frmBrowse(std::unique_ptr<WebBrowser> browser);
    ~frmBrowse() override;

    CoolBar *cb = nullptr;
    QWidget *Frame1 = nullptr;
    /// Back, Forward, Stop, Home, Search, Refresh, Offline.
    ControlArray<CommandButton> Command1{QStringLiteral("Command1")};
    QLineEdit *Text1 = nullptr;
    std::unique_ptr<WebBrowser> web;
    StatusBar *sb = nullptr;
    /// The status text, and how long the last page took.
    Label *panel1 = nullptr;
    Label *panel2 = nullptr;
    QTimer *Timer1 = nullptr;

    /// While a page is loaded, the time of day at which that began, and afterwards how long it took, in whole seconds.
    qint32 DownloadStart = 0;
    /// How often Timer1 has laid the window out since it was started.
    Integer ResizeTicks;

    /// Failures of the browser are passed over.
    void Command1_Click(int Index);
    void Text1_KeyPress(int KeyAscii);
    void web_StatusTextChange(const QString &Text);
    void web_DownloadBegin();
    void web_DownloadComplete();
    void web_DocumentComplete();
    void Form_Resize();
    void Timer1_Timer();
    void cb_HeightChanged();

protected:
    void resizeEvent(QResizeEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void createBars();
    QWidget *createBand();
    void createButtons();
    void createPage();
    void connectHandlers();
    void addShortcuts();
    void perform(int command);
};

} // namespace vandrel
