#include "tests/platform/display/ScriptedOutputs.h"

#include <thread>
#include <utility>
#include <vector>

#include <wayland-server.h>
#include <wlr-output-management-server-protocol.h>

#include "tests/platform/command/EnvironmentVariable.h"

namespace vandrel::test {

namespace {

constexpr int thousand = 1000;

using Monitor = ScriptedOutputs::Monitor;
using Mood = ScriptedOutputs::Mood;

QString textOf(const WlrMode &mode)
{
    return QStringLiteral("%1x%2@%3")
        .arg(mode.size.width())
        .arg(mode.size.height())
        .arg(mode.frequency / thousand);
}

/// The one client and what it has been told of.
struct Server {
    QList<Monitor> monitors;
    QList<Mood> moods;
    QStringList asked;
    uint32_t serial = 1;
    wl_resource *manager = nullptr;
    std::vector<wl_resource *> heads;
    std::vector<std::vector<wl_resource *>> modes;

    wl_resource *make(const wl_interface *interface, uint32_t id = 0) const
    {
        return wl_resource_create(wl_resource_get_client(manager), interface, 1, id);
    }

    void tellAll()
    {
        for (const Monitor &monitor : std::as_const(monitors))
            tell(monitor);
        zwlr_output_manager_v1_send_done(manager, serial);
    }

    void tell(const Monitor &monitor)
    {
        wl_resource *head = make(&zwlr_output_head_v1_interface);
        heads.push_back(head);
        zwlr_output_manager_v1_send_head(manager, head);
        zwlr_output_head_v1_send_name(head, monitor.name.toUtf8().constData());
        if (!monitor.isVirtual)
            zwlr_output_head_v1_send_physical_size(head, 600, 340);
        modes.emplace_back();
        for (const WlrMode &each : monitor.modes) {
            wl_resource *mode = make(&zwlr_output_mode_v1_interface);
            wl_resource_set_user_data(mode, reinterpret_cast<void *>(modes.back().size()));
            modes.back().push_back(mode);
            zwlr_output_head_v1_send_mode(head, mode);
            zwlr_output_mode_v1_send_size(mode, each.size.width(), each.size.height());
            zwlr_output_mode_v1_send_refresh(mode, each.frequency);
        }
        tellSetting(heads.size() - 1);
    }

    void tellSetting(std::size_t index)
    {
        const Monitor &monitor = monitors[static_cast<qsizetype>(index)];
        zwlr_output_head_v1_send_enabled(heads[index], monitor.current >= 0);
        if (monitor.current < 0)
            return;
        zwlr_output_head_v1_send_current_mode(heads[index],
                                              modes[index][static_cast<std::size_t>(monitor.current)]);
        zwlr_output_head_v1_send_position(heads[index], monitor.place.x(), monitor.place.y());
        zwlr_output_head_v1_send_transform(heads[index], monitor.transform);
    }

    qsizetype indexOf(const wl_resource *head) const
    {
        return std::find(heads.begin(), heads.end(), head) - heads.begin();
    }
};

/// What a client wants of one monitor.
struct Choice {
    enum class Kind { Unsaid, Off, Kept, Mode, Custom };

    Kind kind = Kind::Unsaid;
    int mode = 0;
    QSize size;

    QString text(const Monitor &monitor) const
    {
        switch (kind) {
        case Kind::Unsaid:
            return QStringLiteral("unsaid");
        case Kind::Off:
            return QStringLiteral("off");
        case Kind::Kept:
            return QStringLiteral("kept");
        case Kind::Mode:
            return textOf(monitor.modes[mode]);
        case Kind::Custom:
            return QStringLiteral("custom %1x%2").arg(size.width()).arg(size.height());
        }
        return {};
    }
};

/// A configuration that a client makes.
struct Configuration {
    Server *server = nullptr;
    std::vector<Choice> choices;

    static Configuration &of(wl_resource *resource)
    {
        return *static_cast<Configuration *>(wl_resource_get_user_data(resource));
    }

    void enact()
    {
        for (std::size_t i = 0; i < choices.size(); ++i) {
            Monitor &monitor = server->monitors[static_cast<qsizetype>(i)];
            if (choices[i].kind == Choice::Kind::Mode)
                monitor.current = choices[i].mode;
            if (choices[i].kind == Choice::Kind::Custom) {
                monitor.modes = {{choices[i].size, 0}};
                monitor.current = 0;
                zwlr_output_mode_v1_send_size(server->modes[i].front(), choices[i].size.width(),
                                              choices[i].size.height());
                zwlr_output_mode_v1_send_refresh(server->modes[i].front(), 0);
            }
            server->tellSetting(i);
        }
        zwlr_output_manager_v1_send_done(server->manager, ++server->serial);
    }

    void ask(wl_resource *resource, bool applies)
    {
        QString line = applies ? QStringLiteral("apply") : QStringLiteral("test");
        for (std::size_t i = 0; i < choices.size(); ++i) {
            const Monitor &monitor = server->monitors[static_cast<qsizetype>(i)];
            line += QStringLiteral(" %1=%2").arg(monitor.name, choices[i].text(monitor));
        }
        server->asked.append(line);
        answer(resource, applies, server->moods.isEmpty() ? Mood::Agree : server->moods.takeFirst());
    }

    void answer(wl_resource *resource, bool applies, Mood mood)
    {
        if (applies && (mood == Mood::Agree || mood == Mood::DoAndRefuse))
            enact();
        switch (mood) {
        case Mood::Agree:
        case Mood::Forget:
            return zwlr_output_configuration_v1_send_succeeded(resource);
        case Mood::Refuse:
        case Mood::DoAndRefuse:
            return zwlr_output_configuration_v1_send_failed(resource);
        case Mood::Cancel:
            zwlr_output_manager_v1_send_done(server->manager, ++server->serial);
            return zwlr_output_configuration_v1_send_cancelled(resource);
        case Mood::HangUp:
            return wl_client_destroy(wl_resource_get_client(resource));
        }
    }
};

Choice &choiceOf(wl_resource *resource)
{
    return *static_cast<Choice *>(wl_resource_get_user_data(resource));
}

const struct zwlr_output_configuration_head_v1_interface chosenHead = {
    [](wl_client *, wl_resource *resource, wl_resource *mode) {
        choiceOf(resource).kind = Choice::Kind::Mode;
        choiceOf(resource).mode
            = static_cast<int>(reinterpret_cast<std::size_t>(wl_resource_get_user_data(mode)));
    },
    [](wl_client *, wl_resource *resource, int32_t width, int32_t height, int32_t) {
        choiceOf(resource).kind = Choice::Kind::Custom;
        choiceOf(resource).size = {width, height};
    },
    [](wl_client *, wl_resource *, int32_t, int32_t) {},
    [](wl_client *, wl_resource *, int32_t) {},
    [](wl_client *, wl_resource *, wl_fixed_t) {},
};

const struct zwlr_output_configuration_v1_interface configurationRequests = {
    [](wl_client *, wl_resource *resource, uint32_t id, wl_resource *head) {
        Configuration &configuration = Configuration::of(resource);
        const auto index = static_cast<std::size_t>(configuration.server->indexOf(head));
        configuration.choices[index].kind = Choice::Kind::Kept;
        wl_resource_set_implementation(
            configuration.server->make(&zwlr_output_configuration_head_v1_interface, id), &chosenHead,
            &configuration.choices[index], nullptr);
    },
    [](wl_client *, wl_resource *resource, wl_resource *head) {
        Configuration &configuration = Configuration::of(resource);
        configuration.choices[static_cast<std::size_t>(configuration.server->indexOf(head))].kind
            = Choice::Kind::Off;
    },
    [](wl_client *, wl_resource *resource) { Configuration::of(resource).ask(resource, true); },
    [](wl_client *, wl_resource *resource) { Configuration::of(resource).ask(resource, false); },
    [](wl_client *, wl_resource *resource) { wl_resource_destroy(resource); },
};

const struct zwlr_output_manager_v1_interface managerRequests = {
    [](wl_client *, wl_resource *resource, uint32_t id, uint32_t serial) {
        auto &server = *static_cast<Server *>(wl_resource_get_user_data(resource));
        wl_resource *made = server.make(&zwlr_output_configuration_v1_interface, id);
        auto *configuration = new Configuration{&server, std::vector<Choice>(server.heads.size())};
        wl_resource_set_implementation(made, &configurationRequests, configuration,
                                       [](wl_resource *gone) { delete &Configuration::of(gone); });
        if (serial != server.serial)
            server.asked.append(QStringLiteral("outdated"));
    },
    [](wl_client *, wl_resource *) {},
};

void bind(wl_client *client, void *data, uint32_t version, uint32_t id)
{
    auto &server = *static_cast<Server *>(data);
    server.heads.clear();
    server.modes.clear();
    server.manager
        = wl_resource_create(client, &zwlr_output_manager_v1_interface, static_cast<int>(version), id);
    wl_resource_set_implementation(server.manager, &managerRequests, &server, nullptr);
    server.tellAll();
}

} // namespace

class ScriptedOutputs::Private
{
public:
    explicit Private(Server script) : server(std::move(script))
    {
        m_runtimeFolder.set(m_folder.path().toLocal8Bit());
        m_display = wl_display_create();
        wl_global_create(m_display, &zwlr_output_manager_v1_interface, 1, &server, bind);
        const char *socket = wl_display_add_socket_auto(m_display);
        isThere = socket != nullptr;
        m_displayName.set(socket);
        m_thread = std::thread([this] { wl_display_run(m_display); });
    }

    ~Private() { end(); }

    void end()
    {
        if (!m_thread.joinable())
            return;
        wl_display_terminate(m_display);
        m_thread.join();
        wl_display_destroy_clients(m_display);
        wl_display_destroy(m_display);
    }

    Server server;
    bool isThere = false;

private:
    const QTemporaryDir m_folder;
    const EnvironmentVariable m_displayName{"WAYLAND_DISPLAY"};
    const EnvironmentVariable m_runtimeFolder{"XDG_RUNTIME_DIR"};
    wl_display *m_display = nullptr;
    std::thread m_thread;
};

ScriptedOutputs::ScriptedOutputs(QList<Monitor> monitors, QList<Mood> moods)
    : d(std::make_unique<Private>(Server{std::move(monitors), std::move(moods), {}, 1, nullptr, {}, {}}))
{ }

ScriptedOutputs::~ScriptedOutputs() = default;

bool ScriptedOutputs::isThere() const
{
    return d->isThere;
}

QStringList ScriptedOutputs::asked()
{
    d->end();
    return d->server.asked;
}

} // namespace vandrel::test
