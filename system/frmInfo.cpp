#include "system/frmInfo.h"

#include <algorithm>
#include <array>
#include <utility>

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>

namespace vandrel {

namespace {

constexpr std::array captions{
    QT_TR_NOOP("CPU Type"),
    QT_TR_NOOP("Total Physical Memory"),
    QT_TR_NOOP("Total Virtual Memory"),
    QT_TR_NOOP("Operating System"),
    QT_TR_NOOP("Current Display"),
    QT_TR_NOOP("Printer"),
    QT_TR_NOOP("Sound Card"),
    QT_TR_NOOP("Available Physical Memory"),
    QT_TR_NOOP("Available Virtual Memory"),
    QT_TR_NOOP("Computer Manufacturer"),
    QT_TR_NOOP("Computer Name"),
    QT_TR_NOOP("User"),
    QT_TR_NOOP("Company"),
};

constexpr int soundCard = 6;
// Boxes are as wide as the longest fact, between these, in average characters.
constexpr int fewestColumns = 32;
constexpr int mostColumns = 72;

} // namespace

frmInfo::frmInfo(std::unique_ptr<bLSSystemInfo> systemInfo) : sys1(std::move(systemInfo))
{
    setObjectName(QStringLiteral("frmInfo"));
    setWindowTitle(tr("System Info"));
    setFont(QFont(QStringLiteral("MS Sans Serif")));
    arrange();
    FillSystemInfo();
}

frmInfo::~frmInfo() = default;

void frmInfo::arrange()
{
    auto *grid = new QGridLayout(this);
    for (int index = 0; index < static_cast<int>(captions.size()); ++index) {
        auto *box = Text1.add(index, new QLineEdit(QStringLiteral("Text1"), this));
        box->setReadOnly(true);
        auto *label = Label1.add(index, new QLabel(tr(captions.at(static_cast<std::size_t>(index))), this));
        label->setBuddy(box);
        grid->addWidget(label, index, 0);
        grid->addWidget(box, index, 1);
    }
    grid->setColumnStretch(1, 1);
    grid->setRowStretch(static_cast<int>(captions.size()), 1);
}

void frmInfo::FillSystemInfo()
{
    Text1[0]->setText(sys1->CPUType());
    Text1[1]->setText(sys1->TotalPhysicalMemory());
    Text1[2]->setText(sys1->TotalVirtualMemory());
    Text1[3]->setText(sys1->OperatingSystem());
    Text1[4]->setText(sys1->CurrentDisplay());
    Text1[5]->setText(sys1->Printer());
    if (sys1->SoundCardPresent())
        Text1[soundCard]->setText(tr("Present"));
    Text1[7]->setText(sys1->AvailablePhysicalMemory());
    Text1[8]->setText(sys1->AvailableVirtualMemory());
    Text1[9]->setText(sys1->ComputerManufacturer());
    Text1[10]->setText(sys1->ComputerName());
    Text1[11]->setText(sys1->User());
    Text1[12]->setText(sys1->Company());

    qsizetype columns = fewestColumns;
    for (const auto &[index, box] : Text1) {
        columns = std::max(columns, box->text().size() + 2);
        box->setCursorPosition(0);
    }
    Text1[0]->setMinimumWidth(fontMetrics().averageCharWidth()
                              * static_cast<int>(std::min<qsizetype>(columns, mostColumns)));
}

} // namespace vandrel
