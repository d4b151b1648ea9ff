#include "controls/LoadProgress.h"

#include <cmath>

#include <QHBoxLayout>
#include <QProgressBar>
#include <QPushButton>

namespace vandrel {

namespace {

constexpr int barSteps = 1000;

} // namespace

LoadProgress::LoadProgress(QWidget *parent) : QFrame(parent), m_bar(new QProgressBar(this))
{
    setObjectName(QStringLiteral("LoadProgress"));
    setFrameShape(QFrame::StyledPanel);
    setAutoFillBackground(true);
    // The viewport's own palette is the paper's.
    setBackgroundRole(QPalette::Window);
    setForegroundRole(QPalette::WindowText);

    m_bar->setObjectName(QStringLiteral("LoadProgressBar"));
    m_bar->setAccessibleName(tr("Opening the document"));
    m_bar->setFormat(tr("Opening: %p%"));
    m_bar->setMinimumWidth(220);
    auto *cancel = new QPushButton(tr("&Cancel"), this);
    cancel->setObjectName(QStringLiteral("CancelLoading"));
    cancel->setCursor(Qt::ArrowCursor);
    connect(cancel, &QPushButton::clicked, this, &LoadProgress::cancelled);

    auto *row = new QHBoxLayout(this);
    row->addWidget(m_bar);
    row->addWidget(cancel);
    setProgress(-1);
    adjustSize();
}

void LoadProgress::setProgress(double progress)
{
    m_bar->setRange(0, progress < 0 ? 0 : barSteps);
    if (progress >= 0)
        m_bar->setValue(static_cast<int>(std::lround(std::fmin(progress, 1.0) * barSteps)));
}

void LoadProgress::center()
{
    const QRect area = parentWidget()->rect();
    move(area.center() - rect().center());
}

} // namespace vandrel
