#pragma once

#include <memory>

#include <QWidget>

#include "controls/ChangeRes.h"
#include "runtime/Integer.h"

class QGridLayout;
class QLabel;
class QPushButton;
class QVBoxLayout;

namespace vandrel {

class ComboBox;

/// "Screen resolution control": shows facts of the display adapter and switches the screen to one of three
/// resolutions; Esc goes back to the one before the last switch.
class frmRes : public QWidget
{
    Q_OBJECT

public:
    explicit frmRes(std::unique_ptr<ChangeRes> changeRes);
    ~frmRes() override;

    QLabel *driver = nullptr;
    QLabel *desc = nullptr;
    QLabel *id = nullptr;
    QLabel *manufacturer = nullptr;
    QLabel *width1 = nullptr;
    QLabel *height1 = nullptr;
    ComboBox *Combo1 = nullptr;
    QPushButton *NewSettingCommand = nullptr;
    /// The cancel button, out of sight: Esc presses it.
    QPushButton *Command1 = nullptr;
    std::unique_ptr<ChangeRes> ChangeRes1;

    /// The resolution before the last change; 0 until the first.
    Integer OldWidth;
    Integer OldHeight;

    /// Raises Object required (424) after a refused change, and Overflow (6) where the resolution in force is beyond
    /// 16 bits.
    void NewSettingCommand_Click();
    void Command1_Click();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void arrange();
    QGridLayout *arrangeFacts();
    QVBoxLayout *arrangeChange();
    QLabel *addLabel(const QString &name, const QString &caption, QWidget *buddy = nullptr);
    QLabel *addFact(QGridLayout *grid, const QString &labelName, const QString &caption, const QString &name);
    void Form_Load();
};

} // namespace vandrel
