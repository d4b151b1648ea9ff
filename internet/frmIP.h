#pragma once

#include <memory>

#include <QWidget>

#include "controls/MyIP.h"

class QGridLayout;
class QLabel;
class QPushButton;

namespace vandrel {

/// "My IP": shows the computer's address and domain name at the press of one button.
class frmIP : public QWidget
{
    Q_OBJECT

public:
    explicit frmIP(std::unique_ptr<vandrel::MyIP> myIP);
    ~frmIP() override;

    QPushButton *GETMyIP = nullptr;
    QLabel *Label1 = nullptr;
    QLabel *MyIP = nullptr;
    QLabel *Label2 = nullptr;
    QLabel *MyDomain = nullptr;
    std::unique_ptr<vandrel::MyIP> MyIP1;

    void GETMyIP_Click();
    void MyIP1_SocketError(bool failed);
    void MyIP1_NoDomainName();
    void MyIP1_NoIPAddress();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void arrange();
    QLabel *addValue(const QString &name);
    void connectControls();
    void growToAnswers();
};

} // namespace vandrel
