#pragma once

#include <memory>
#include <optional>

#include <QElapsedTimer>
#include <QWidget>

#include "controls/Ping.h"
#include "internet/CommandGroup.h"
#include "runtime/Integer.h"

class QGridLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QVBoxLayout;

namespace vandrel {

class ListBox;
class TextBox;

/// The ping tool: asks one host for an echo, or in turn all addresses of a range that differ in their last part, and
/// lists those that answer. A scan goes on while its button is disabled, and ends at the next address once it is
/// enabled again.
class frmPing : public QWidget
{
    Q_OBJECT

public:
    explicit frmPing(std::unique_ptr<Ping> ping);
    ~frmPing() override;

    QLineEdit *HostIP = nullptr;
    QPushButton *PingCommand = nullptr;
    QPushButton *StopCommand = nullptr;
    QLineEdit *PingingDataText = nullptr;
    QLineEdit *TimeOutText = nullptr;
    QLineEdit *DataSizeText = nullptr;
    QLineEdit *EchoDataText = nullptr;
    QLineEdit *RoundTripTimeText = nullptr;
    TextBox *StatusText = nullptr;
    QLineEdit *IP = nullptr;
    QLineEdit *IPfrom = nullptr;
    QLineEdit *IPto = nullptr;
    /// Two notes of the prefix beside the ends of the range, which nothing reads.
    QLineEdit *Text1 = nullptr;
    QLineEdit *Text2 = nullptr;
    QPushButton *ScanCommand = nullptr;
    QLineEdit *LastIPScan = nullptr;
    ListBox *UserList = nullptr;
    std::unique_ptr<Ping> Ping1;

    void HostIP_Change();
    void PingingDataText_Change();
    /// Raises Type mismatch (13) for a text that is no number and Overflow (6) for one beyond 16 bits.
    void TimeOutText_Change();
    void PingCommand_Click();
    void StopCommand_Click();
    /// Raises Overflow (6) where an end of the range, or the address after the last, is beyond 16 bits.
    void ScanCommand_Click();

protected:
    bool event(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void arrange();
    QVBoxLayout *arrangePing();
    QGridLayout *arrangeParameters();
    QVBoxLayout *arrangeScan();
    QGridLayout *arrangeRange();
    QVBoxLayout *arrangeStatus();
    QLabel *addHeading(const QString &name, const QString &caption);
    QLineEdit *addBox(const QString &name, const QString &text = {});
    QLineEdit *addDisplay(const QString &name);
    QPushButton *addButton(const QString &name, const QString &caption);
    void connectHandlers();
    void setTabOrders();
    void fitToScreen();

    bool ping();
    bool mayGoOn();
    bool scan(Integer i);
    void logLine(const QString &line);
    void showResults();

    /// Since the window was last painted between two addresses.
    QElapsedTimer m_sincePainting;
    bool m_isBetweenAddresses = false;
    bool m_owesPainting = false;
    std::optional<CommandGroup> m_pingCommands;
    std::optional<CommandGroup> m_scanCommands;
};

} // namespace vandrel
