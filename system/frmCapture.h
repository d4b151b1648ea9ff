#pragma once

#include <memory>

#include <QWidget>

#include "controls/CommonDialog.h"
#include "controls/ControlArray.h"
#include "controls/ScreenCapture.h"

class QCheckBox;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QPushButton;

namespace vandrel {

/// "Screen Capture": saves a picture of the whole screen to a file, at once or after a delay.
class frmCapture : public QWidget
{
    Q_OBJECT

public:
    frmCapture(std::unique_ptr<ScreenCapture> capture, std::unique_ptr<CommonDialog> dialog);
    ~frmCapture() override;

    QLineEdit *FileNameText = nullptr;
    QPushButton *Command1 = nullptr;
    QLineEdit *TimeDelayText = nullptr;
    QCheckBox *Check1 = nullptr;
    /// 0 captures now, 1 later.
    ControlArray<QPushButton> com{QStringLiteral("com")};
    std::unique_ptr<ScreenCapture> ScreenCapture1;
    std::unique_ptr<CommonDialog> CommonDialog1;

    void Check1_Click();
    /// Raises Overflow (6) for a number that is too large for a double.
    void TimeDelayText_Change();
    void FileNameText_Change();
    void Command1_Click();
    void com_Click(int index);

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void arrange();
    QHBoxLayout *arrangeFile();
    QHBoxLayout *arrangeDelay();
    QHBoxLayout *arrangeCommands();
    QLabel *addLabel(const QString &name, const QString &caption, QWidget *buddy = nullptr);
    QLineEdit *addBox(const QString &name, const QString &text);
    QPushButton *prepared(QPushButton *button);
    void load();
    void connectHandlers();
};

} // namespace vandrel
