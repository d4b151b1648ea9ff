#pragma once

#include <memory>

#include <QWidget>

#include "controls/ControlArray.h"
#include "controls/bLSSystemInfo.h"

class QLabel;
class QLineEdit;

namespace vandrel {

/// "System Info": thirteen facts about the computer, read once when the window is made.
class frmInfo : public QWidget
{
    Q_OBJECT

public:
    explicit frmInfo(std::unique_ptr<bLSSystemInfo> systemInfo);
    ~frmInfo() override;

    /// The captions, 0 to 12.
    ControlArray<QLabel> Label1{QStringLiteral("Label1")};
    /// The facts beside them.
    ControlArray<QLineEdit> Text1{QStringLiteral("Text1")};
    std::unique_ptr<bLSSystemInfo> sys1;

private:
    void arrange();
    void FillSystemInfo();
};

} // namespace vandrel
