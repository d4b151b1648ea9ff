#include "piceditor/WorkReport.h"

#include <cmath>

#include <QGuiApplication>

#include "controls/CImage.h"
#include "controls/Label.h"
#include "runtime/Events.h"

namespace vandrel {

WorkReport::WorkReport(Label &panel) : m_panel(panel) { }

WorkReport::~WorkReport()
{
    setBusy(false);
}

void WorkReport::follow(const CImage &image)
{
    onEvent(&image, &CImage::Progress, this, &WorkReport::showProgress);
    onEvent(&image, &CImage::Notice, this, [this](const QString &sentence) {
        m_notice = sentence;
        say(sentence);
    });
}

void WorkReport::clear()
{
    m_notice.clear();
    say({});
}

void WorkReport::showProgress(double done)
{
    const bool isBusy = done < 1;
    setBusy(isBusy);
    if (isBusy)
        say(tr("Working: %1 %").arg(static_cast<int>(std::floor(done * 100))));
    else
        say(m_notice);
}

// A sentence too long for the panel is in its tool tip.
void WorkReport::say(const QString &sentence)
{
    m_panel.setText(sentence);
    m_panel.setToolTip(sentence);
}

void WorkReport::setBusy(bool busy)
{
    if (busy == m_isBusy)
        return;
    m_isBusy = busy;
    if (busy)
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    else
        QGuiApplication::restoreOverrideCursor();
}

} // namespace vandrel
