#pragma once

#include <memory>

#include "controls/ChangeRes.h"
#include "platform/display/DisplayFacts.h"
#include "platform/display/PrimaryMonitor.h"

namespace vandrel {

/// The display of the computer that the program runs on.
class SystemDisplay final : public ChangeRes
{
    Q_OBJECT

public:
    explicit SystemDisplay(std::unique_ptr<PrimaryMonitor> monitor = PrimaryMonitor::ofDesktop(),
                           DisplayFactsReader readFacts = systemDisplayFacts);

    void setRead(bool start) override;
    void setApply(bool start) override;
    bool Failed() const override { return m_failed; }
    QString DeviceDescription() const override { return m_facts.description; }
    QString DisplayDriver() const override { return m_facts.driver; }
    QString HardwareID() const override { return m_facts.hardwareId; }
    QString Manufacturer() const override { return m_facts.manufacturer; }
    qint32 Width() const override { return m_width; }
    void setWidth(qint32 pixels) override { m_width = pixels; }
    qint32 Height() const override { return m_height; }
    void setHeight(qint32 pixels) override { m_height = pixels; }

private:
    void readResolution();

    const std::unique_ptr<PrimaryMonitor> m_monitor;
    const DisplayFactsReader m_readFacts;
    DisplayFacts m_facts;
    qint32 m_width = 0;
    qint32 m_height = 0;
    bool m_failed = false;
};

} // namespace vandrel
