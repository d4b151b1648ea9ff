#include "platform/display/WlrOutputs.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

#include <poll.h>
#include <wayland-client.h>
#include <wlr-output-management-client-protocol.h>

#include <QDeadlineTimer>

namespace vandrel {

namespace {

// In milliseconds. A compositor that does not answer shows nothing either.
constexpr int patience = 5000;
// The version in which an output tells its name.
constexpr uint32_t versionWithNames = 4;

template<auto destroy>
struct Destroyer {
    template<typename Object>
    void operator()(Object *object) const
    {
        destroy(object);
    }
};

using DisplayPointer = std::unique_ptr<wl_display, Destroyer<wl_display_disconnect>>;
using RegistryPointer = std::unique_ptr<wl_registry, Destroyer<wl_registry_destroy>>;
using ManagerPointer = std::unique_ptr<zwlr_output_manager_v1, Destroyer<zwlr_output_manager_v1_destroy>>;
using HeadPointer = std::unique_ptr<zwlr_output_head_v1, Destroyer<zwlr_output_head_v1_destroy>>;
using ModePointer = std::unique_ptr<zwlr_output_mode_v1, Destroyer<zwlr_output_mode_v1_destroy>>;
using OutputPointer = std::unique_ptr<wl_output, Destroyer<wl_output_release>>;
using ConfigurationPointer
    = std::unique_ptr<zwlr_output_configuration_v1, Destroyer<zwlr_output_configuration_v1_destroy>>;
using CallbackPointer = std::unique_ptr<wl_callback, Destroyer<wl_callback_destroy>>;

// The transforms that turn a picture by a quarter, mirrored or not, have odd numbers.
bool isQuarterTurn(int32_t transform)
{
    return transform % 2 == 1;
}

/// A mode as the compositor tells of it.
struct Mode {
    ModePointer proxy;
    WlrMode told;
};

/// A monitor as the manager tells of it.
struct Head {
    HeadPointer proxy;
    std::vector<std::unique_ptr<Mode>> modes;
    zwlr_output_mode_v1 *current = nullptr;
    QString name;
    QPoint place;
    bool isEnabled = false;
    bool isUpright = false;
    bool hasMeasure = false;
    bool isGone = false;

    const Mode *currentMode() const
    {
        const auto found = std::find_if(modes.begin(), modes.end(),
                                        [this](const auto &mode) { return mode->proxy.get() == current; });
        return found == modes.end() ? nullptr : found->get();
    }
};

/// A monitor that is on, as the desktop tells every program. Virtual ones are told here as they are, where the manager of
/// older compositors says that they are off and without a mode.
struct Output {
    OutputPointer proxy;
    uint32_t number = 0;
    QString name;
    WlrMode current;
    bool isUpright = false;
};

} // namespace

class WlrOutputs::Private
{
public:
    Private();

    bool isThere() const { return m_manager != nullptr; }
    WlrState state() const;
    WlrAnswer ask(const QString &head, const WlrMode &mode, void (*question)(zwlr_output_configuration_v1 *));
    bool await(const std::function<bool()> &isSo);

private:
    bool roundTrip();
    bool readEvents(const QDeadlineTimer &deadline);
    void addGlobal(uint32_t number, const char *interface, uint32_t version);
    void addHead(zwlr_output_head_v1 *proxy);
    const Output *outputNamedAs(const Head &head) const;
    WlrHead told(const Head &head) const;
    void describe(zwlr_output_configuration_v1 *configuration,
                  const Head &head,
                  const std::optional<WlrMode> &mode) const;

    static const wl_registry_listener registryListener;
    static const wl_output_listener outputListener;
    static const zwlr_output_manager_v1_listener managerListener;
    static const zwlr_output_head_v1_listener headListener;
    static const zwlr_output_mode_v1_listener modeListener;

    // Before everything that is reached through it.
    DisplayPointer m_display{wl_display_connect(nullptr)};
    RegistryPointer m_registry;
    ManagerPointer m_manager;
    std::vector<std::unique_ptr<Output>> m_outputs;
    std::vector<std::unique_ptr<Head>> m_heads;
    uint32_t m_serial = 0;
};

namespace {

Head &headOf(void *data)
{
    return *static_cast<Head *>(data);
}

Output &outputOf(void *data)
{
    return *static_cast<Output *>(data);
}

Mode &modeOf(void *data)
{
    return *static_cast<Mode *>(data);
}

} // namespace

const wl_registry_listener WlrOutputs::Private::registryListener = {
    [](void *self, wl_registry *, uint32_t number, const char *interface, uint32_t version) {
        static_cast<Private *>(self)->addGlobal(number, interface, version);
    },
    [](void *self, wl_registry *, uint32_t number) {
        auto &outputs = static_cast<Private *>(self)->m_outputs;
        outputs.erase(std::remove_if(outputs.begin(), outputs.end(),
                                     [number](const auto &output) { return output->number == number; }),
                      outputs.end());
    },
};

const wl_output_listener WlrOutputs::Private::outputListener = {
    [](void *output,
       wl_output *,
       int32_t,
       int32_t,
       int32_t,
       int32_t,
       int32_t,
       const char *,
       const char *,
       int32_t transform) { outputOf(output).isUpright = isQuarterTurn(transform); },
    [](void *output, wl_output *, uint32_t flags, int32_t width, int32_t height, int32_t frequency) {
        if (flags & WL_OUTPUT_MODE_CURRENT)
            outputOf(output).current = {QSize(width, height), frequency};
    },
    [](void *, wl_output *) {},
    [](void *, wl_output *, int32_t) {},
    [](void *output, wl_output *, const char *name) { outputOf(output).name = QString::fromUtf8(name); },
    [](void *, wl_output *, const char *) {},
};

const zwlr_output_manager_v1_listener WlrOutputs::Private::managerListener = {
    [](void *self, zwlr_output_manager_v1 *, zwlr_output_head_v1 *head) {
        static_cast<Private *>(self)->addHead(head);
    },
    [](void *self, zwlr_output_manager_v1 *, uint32_t serial) {
        auto *d = static_cast<Private *>(self);
        d->m_serial = serial;
        d->m_heads.erase(std::remove_if(d->m_heads.begin(), d->m_heads.end(),
                                        [](const auto &head) { return head->isGone; }),
                         d->m_heads.end());
    },
    [](void *, zwlr_output_manager_v1 *) {},
};

const zwlr_output_head_v1_listener WlrOutputs::Private::headListener = {
    [](void *head, zwlr_output_head_v1 *, const char *name) { headOf(head).name = QString::fromUtf8(name); },
    [](void *, zwlr_output_head_v1 *, const char *) {},
    [](void *head, zwlr_output_head_v1 *, int32_t width, int32_t height) {
        headOf(head).hasMeasure = width > 0 && height > 0;
    },
    [](void *head, zwlr_output_head_v1 *, zwlr_output_mode_v1 *mode) {
        auto &modes = headOf(head).modes;
        modes.push_back(std::make_unique<Mode>());
        modes.back()->proxy.reset(mode);
        zwlr_output_mode_v1_add_listener(mode, &modeListener, modes.back().get());
    },
    [](void *head, zwlr_output_head_v1 *, int32_t enabled) { headOf(head).isEnabled = enabled != 0; },
    [](void *head, zwlr_output_head_v1 *, zwlr_output_mode_v1 *mode) { headOf(head).current = mode; },
    [](void *head, zwlr_output_head_v1 *, int32_t x, int32_t y) {
        headOf(head).place = {x, y};
    },
    [](void *head, zwlr_output_head_v1 *, int32_t transform) {
        headOf(head).isUpright = isQuarterTurn(transform);
    },
    [](void *, zwlr_output_head_v1 *, wl_fixed_t) {},
    [](void *head, zwlr_output_head_v1 *) { headOf(head).isGone = true; },
};

// A mode that is gone must not be named any more, which a size that nobody asks for sees to.
const zwlr_output_mode_v1_listener WlrOutputs::Private::modeListener = {
    [](void *mode, zwlr_output_mode_v1 *, int32_t width, int32_t height) {
        modeOf(mode).told.size = {width, height};
    },
    [](void *mode, zwlr_output_mode_v1 *, int32_t frequency) { modeOf(mode).told.frequency = frequency; },
    [](void *, zwlr_output_mode_v1 *) {},
    [](void *mode, zwlr_output_mode_v1 *) { modeOf(mode).told = {}; },
};

// Two round trips: what there is, and what each of it tells when it is bound.
WlrOutputs::Private::Private()
{
    if (!m_display)
        return;
    m_registry.reset(wl_display_get_registry(m_display.get()));
    wl_registry_add_listener(m_registry.get(), &registryListener, this);
    if (!roundTrip() || !roundTrip())
        m_manager.reset();
}

void WlrOutputs::Private::addGlobal(uint32_t number, const char *interface, uint32_t version)
{
    if (std::strcmp(interface, zwlr_output_manager_v1_interface.name) == 0) {
        m_manager.reset(static_cast<zwlr_output_manager_v1 *>(
            wl_registry_bind(m_registry.get(), number, &zwlr_output_manager_v1_interface, 1)));
        zwlr_output_manager_v1_add_listener(m_manager.get(), &managerListener, this);
    } else if (std::strcmp(interface, wl_output_interface.name) == 0 && version >= versionWithNames) {
        m_outputs.push_back(std::make_unique<Output>());
        Output &output = *m_outputs.back();
        output.number = number;
        output.proxy.reset(static_cast<wl_output *>(
            wl_registry_bind(m_registry.get(), number, &wl_output_interface, versionWithNames)));
        wl_output_add_listener(output.proxy.get(), &outputListener, &output);
    }
}

void WlrOutputs::Private::addHead(zwlr_output_head_v1 *proxy)
{
    m_heads.push_back(std::make_unique<Head>());
    m_heads.back()->proxy.reset(proxy);
    zwlr_output_head_v1_add_listener(proxy, &headListener, m_heads.back().get());
}

bool WlrOutputs::Private::roundTrip()
{
    static const wl_callback_listener listener{
        [](void *isBack, wl_callback *, uint32_t) { *static_cast<bool *>(isBack) = true; }};
    bool isBack = false;
    const CallbackPointer callback(wl_display_sync(m_display.get()));
    wl_callback_add_listener(callback.get(), &listener, &isBack);
    return await([&isBack] { return isBack; });
}

bool WlrOutputs::Private::await(const std::function<bool()> &isSo)
{
    const QDeadlineTimer deadline(patience);
    while (!isSo()) {
        if (!m_display || wl_display_dispatch_pending(m_display.get()) < 0)
            return false;
        if (!isSo() && !readEvents(deadline))
            return false;
    }
    return true;
}

bool WlrOutputs::Private::readEvents(const QDeadlineTimer &deadline)
{
    if (wl_display_prepare_read(m_display.get()) != 0)
        return true;
    if (wl_display_flush(m_display.get()) >= 0 || errno == EAGAIN) {
        pollfd socket{wl_display_get_fd(m_display.get()), POLLIN, 0};
        const int ready = ::poll(&socket, 1, static_cast<int>(deadline.remainingTime()));
        if (ready > 0)
            return wl_display_read_events(m_display.get()) == 0;
        if (ready < 0 && errno == EINTR) {
            wl_display_cancel_read(m_display.get());
            return true;
        }
    }
    wl_display_cancel_read(m_display.get());
    return false;
}

const Output *WlrOutputs::Private::outputNamedAs(const Head &head) const
{
    const auto found = std::find_if(m_outputs.begin(), m_outputs.end(), [&head](const auto &output) {
        return !head.name.isEmpty() && output->name == head.name;
    });
    return found == m_outputs.end() ? nullptr : found->get();
}

WlrHead WlrOutputs::Private::told(const Head &head) const
{
    WlrHead told{head.name, false, !head.hasMeasure, head.isUpright, head.place, {}, {}};
    for (const auto &mode : head.modes) {
        if (!mode->told.size.isEmpty())
            told.modes.append(mode->told);
    }
    const Mode *current = head.currentMode();
    if (head.isEnabled && current) {
        told.isOn = true;
        told.current = current->told;
    } else if (const Output *output = outputNamedAs(head)) {
        told.isOn = true;
        told.isUpright = output->isUpright;
        told.current = output->current;
    }
    return told;
}

// In the order in which the desktop got its outputs: not every compositor tells where virtual ones are.
WlrState WlrOutputs::Private::state() const
{
    std::vector<const Head *> present;
    for (const auto &head : m_heads) {
        if (!head->isGone)
            present.push_back(head.get());
    }
    const auto number = [this](const Head *head) {
        const Output *output = outputNamedAs(*head);
        return output ? output->number : 0;
    };
    std::stable_sort(present.begin(), present.end(),
                     [&number](const Head *left, const Head *right) { return number(left) < number(right); });
    WlrState state;
    for (const Head *head : present)
        state.heads.append(told(*head));
    return state;
}

// What is not said of a monitor stays as it is; but a size that the manager does not know would be lost.
void WlrOutputs::Private::describe(zwlr_output_configuration_v1 *configuration,
                                   const Head &head,
                                   const std::optional<WlrMode> &mode) const
{
    const WlrHead known = told(head);
    if (!known.isOn) {
        zwlr_output_configuration_v1_disable_head(configuration, head.proxy.get());
        return;
    }
    zwlr_output_configuration_head_v1 *chosen
        = zwlr_output_configuration_v1_enable_head(configuration, head.proxy.get());
    const WlrMode wanted = mode.value_or(known.current);
    const auto offered = std::find_if(head.modes.begin(), head.modes.end(),
                                      [&wanted](const auto &each) { return each->told == wanted; });
    if (offered != head.modes.end() && mode)
        zwlr_output_configuration_head_v1_set_mode(chosen, (*offered)->proxy.get());
    else if (mode || !head.currentMode())
        zwlr_output_configuration_head_v1_set_custom_mode(chosen, wanted.size.width(), wanted.size.height(),
                                                          wanted.frequency);
    zwlr_output_configuration_head_v1_destroy(chosen);
}

WlrAnswer WlrOutputs::Private::ask(const QString &head,
                                   const WlrMode &mode,
                                   void (*question)(zwlr_output_configuration_v1 *))
{
    if (!m_manager)
        return WlrAnswer::None;
    static const zwlr_output_configuration_v1_listener listener{
        [](void *answer, zwlr_output_configuration_v1 *) {
            *static_cast<std::optional<WlrAnswer> *>(answer) = WlrAnswer::Done;
        },
        [](void *answer, zwlr_output_configuration_v1 *) {
            *static_cast<std::optional<WlrAnswer> *>(answer) = WlrAnswer::Refused;
        },
        [](void *answer, zwlr_output_configuration_v1 *) {
            *static_cast<std::optional<WlrAnswer> *>(answer) = WlrAnswer::Outdated;
        },
    };
    const ConfigurationPointer configuration(
        zwlr_output_manager_v1_create_configuration(m_manager.get(), m_serial));
    std::optional<WlrAnswer> answer;
    zwlr_output_configuration_v1_add_listener(configuration.get(), &listener, &answer);
    for (const auto &each : m_heads) {
        if (!each->isGone)
            describe(configuration.get(), *each,
                     each->name == head ? std::optional<WlrMode>(mode) : std::nullopt);
    }
    question(configuration.get());
    if (!await([&answer] { return answer.has_value(); }) || !roundTrip())
        return WlrAnswer::None;
    return *answer;
}

WlrOutputs::WlrOutputs() : d(std::make_unique<Private>()) { }

WlrOutputs::~WlrOutputs() = default;

bool WlrOutputs::isThere() const
{
    return d->isThere();
}

WlrState WlrOutputs::state() const
{
    return d->state();
}

WlrAnswer WlrOutputs::test(const QString &head, const WlrMode &mode)
{
    return d->ask(head, mode, zwlr_output_configuration_v1_test);
}

WlrAnswer WlrOutputs::apply(const QString &head, const WlrMode &mode)
{
    return d->ask(head, mode, zwlr_output_configuration_v1_apply);
}

bool WlrOutputs::await(const std::function<bool()> &isSo)
{
    return d->await(isSo);
}

} // namespace vandrel
