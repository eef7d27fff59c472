#include "Tessarune/platform/pulse/PrivateSoundServer.h"

#include "Tessarune/platform/pulse/PulseSupport.h"
#include "TessaruneCore/text/Localization.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <thread>

namespace tessarune {

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr std::string_view pipeWireSettings = R"(
context.properties = {
    core.daemon = true
    core.name = pipewire-0
    support.dbus = false
    default.clock.rate = 48000
}
context.spa-libs = {
    audio.convert.* = audioconvert/libspa-audioconvert
    support.* = support/libspa-support
}
context.modules = [
    { name = libpipewire-module-protocol-native }
    { name = libpipewire-module-metadata }
    { name = libpipewire-module-spa-node-factory }
    { name = libpipewire-module-client-node }
    { name = libpipewire-module-client-device }
    { name = libpipewire-module-access }
    { name = libpipewire-module-adapter }
    { name = libpipewire-module-link-factory }
    { name = libpipewire-module-session-manager }
]
context.objects = [
    { factory = spa-node-factory
      args = {
        factory.name = support.node.driver
        node.name = Dummy-Driver
        node.group = pipewire.dummy
        priority.driver = 20000
      }
    }
    { factory = adapter
      args = {
        factory.name = support.null-audio-sink
        node.name = @OUTPUT@
        node.description = "Null Output"
        media.class = Audio/Sink
        audio.position = "FL,FR"
        priority.session = 1000
        object.linger = true
      }
    }
]
)";

constexpr std::string_view pipeWirePulseSettings = R"(
context.properties = { support.dbus = false }
context.spa-libs = {
    audio.convert.* = audioconvert/libspa-audioconvert
    support.* = support/libspa-support
}
context.modules = [
    { name = libpipewire-module-protocol-native }
    { name = libpipewire-module-client-node }
    { name = libpipewire-module-adapter }
    { name = libpipewire-module-metadata }
    { name = libpipewire-module-protocol-pulse }
]
pulse.properties = { server.address = [ "@ADDRESS@" ] }
)";

/// The session manager's settings, without modules for hardware, D-Bus and stored user settings.
constexpr std::string_view wirePlumberSettings = R"(
context.properties = {
    application.name = WirePlumber
    wireplumber.script-engine = lua-scripting
    support.dbus = false
}
context.spa-libs = {
    audio.convert.* = audioconvert/libspa-audioconvert
    support.* = support/libspa-support
}
context.modules = [
    { name = libpipewire-module-protocol-native }
    { name = libpipewire-module-client-node }
    { name = libpipewire-module-client-device }
    { name = libpipewire-module-adapter }
    { name = libpipewire-module-metadata }
    { name = libpipewire-module-session-manager }
]
wireplumber.components = [
    { name = libwireplumber-module-lua-scripting, type = module }
    { name = main.lua, type = config/lua }
]
)";

constexpr std::string_view wirePlumberComponents = R"(
local policy = { ["move"] = true, ["follow"] = true }
components = {}
local function module(name, arguments)
  components[name] = { "libwireplumber-module-" .. name, type = "module", args = arguments }
end
local function script(name, arguments)
  components[name] = { name, type = "script/lua", args = arguments }
end
module("metadata")
module("default-nodes", { ["use-persistent-storage"] = false })
module("default-nodes-api")
module("mixer-api")
module("si-node")
module("si-audio-adapter")
module("si-standard-link")
module("si-audio-endpoint")
script("create-item.lua", policy)
script("policy-node.lua", policy)
)";

std::string filled(std::string_view text, std::string_view mark, std::string_view value) {
    std::string result(text);
    if (const auto position = result.find(mark); position != std::string::npos)
        result.replace(position, mark.size(), value);
    return result;
}

bool isOnPath(const std::string& program) {
    const char* path = std::getenv("PATH");
    std::istringstream folders(path ? path : "/usr/bin");
    for (std::string folder; std::getline(folders, folder, ':');) {
        if (access((std::filesystem::path(folder) / program).c_str(), X_OK) == 0)
            return true;
    }
    return false;
}

bool isListening(const std::filesystem::path& socketFile) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string name = socketFile.string();
    name.copy(address.sun_path, sizeof address.sun_path - 1);
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool listens =
        connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    close(descriptor);
    return listens;
}

/// Asks a server whether it has our output as its default.
class OutputQuery {
  public:
    static bool isOutputAvailable(const std::string& address) {
        OutputQuery query;
        return query.ask(address);
    }

  private:
    bool ask(const std::string& address) {
        const std::unique_ptr<pa_mainloop, decltype(&pa_mainloop_free)> loop(pa_mainloop_new(),
                                                                             pa_mainloop_free);
        pa_context* context = pa_context_new(pa_mainloop_get_api(loop.get()), "Tessarune");
        const auto deadline = Clock::now() + 1s;
        constexpr int pollMicroseconds = 50'000;
        bool asked = false;
        if (pa_context_connect(context, address.c_str(), PA_CONTEXT_NOAUTOSPAWN, nullptr) == 0) {
            while (!answered_ && Clock::now() < deadline &&
                   PA_CONTEXT_IS_GOOD(pa_context_get_state(context))) {
                pa_mainloop_prepare(loop.get(), pollMicroseconds);
                pa_mainloop_poll(loop.get());
                pa_mainloop_dispatch(loop.get());
                if (!asked && pa_context_get_state(context) == PA_CONTEXT_READY)
                    asked = begin(pa_context_get_server_info(context, take, this));
            }
        }
        pa_context_disconnect(context);
        pa_context_unref(context);
        return isAvailable_;
    }
    static void take(pa_context*, const pa_server_info* info, void* self) {
        auto* query = static_cast<OutputQuery*>(self);
        query->answered_ = true;
        query->isAvailable_ =
            info && info->default_sink_name &&
            std::string_view(info->default_sink_name) == PrivateSoundServer::outputID;
    }

    bool answered_ = false;
    bool isAvailable_ = false;
};

PrivateSoundServer::Kind firstInstalled() {
    using Kind = PrivateSoundServer::Kind;
    for (const Kind kind : {Kind::pulseAudio, Kind::pipeWire}) {
        if (PrivateSoundServer::isInstalled(kind))
            return kind;
    }
    throw std::runtime_error(
        localized("neither PulseAudio nor PipeWire with pipewire-pulse is installed"));
}

} // namespace

bool PrivateSoundServer::isInstalled(Kind kind) {
    if (kind == Kind::pulseAudio)
        return isOnPath("pulseaudio");
    return isOnPath("pipewire") && isOnPath("wireplumber") && isOnPath("pipewire-pulse");
}

PrivateSoundServer::PrivateSoundServer() : PrivateSoundServer(firstInstalled()) {}

PrivateSoundServer::PrivateSoundServer(Kind kind) : kind_(kind) {
    std::string name = (std::filesystem::temp_directory_path() / "tessarune-sound-XXXXXX").string();
    if (!mkdtemp(name.data()))
        throw std::runtime_error("no temporary folder for the sound server");
    folder_ = name;
    address_ = "unix:" + (folder_ / "native").string();
    try {
        start();
    } catch (...) {
        end(SIGKILL);
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
        throw;
    }
}

PrivateSoundServer::~PrivateSoundServer() {
    end(SIGTERM);
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

void PrivateSoundServer::kill() {
    end(SIGKILL);
}

void PrivateSoundServer::restart() {
    end(SIGTERM);
    start();
}

void PrivateSoundServer::start() {
    if (kind_ == Kind::pulseAudio) {
        const std::string socket = (folder_ / "native").string();
        launch({"pulseaudio", "-n", "--daemonize=no", "--use-pid-file=no", "--exit-idle-time=-1",
                "--high-priority=no", "--realtime=no", "--log-target=stderr", "-L",
                "module-native-protocol-unix auth-anonymous=1 socket=" + socket, "-L",
                std::string("module-null-sink rate=48000 channels=2 sink_name=") + outputID});
    } else {
        const auto main = folder_ / "pipewire.conf";
        const auto pulse = folder_ / "pipewire-pulse.conf";
        std::ofstream(main) << filled(pipeWireSettings, "@OUTPUT@", outputID);
        std::ofstream(pulse) << filled(pipeWirePulseSettings, "@ADDRESS@", address_);
        std::ofstream(folder_ / "wireplumber.conf") << wirePlumberSettings;
        std::filesystem::create_directories(folder_ / "main.lua.d");
        std::ofstream(folder_ / "main.lua.d" / "50-components.lua") << wirePlumberComponents;
        launch({"pipewire", "-c", main.string()});
        // The other programs exit if they cannot connect to PipeWire yet.
        const auto deadline = Clock::now() + 5s;
        while (!isListening(folder_ / "pipewire-0") && Clock::now() < deadline)
            std::this_thread::sleep_for(10ms);
        launch({"wireplumber"});
        launch({"pipewire-pulse", "-c", pulse.string()});
    }
    waitUntilReady();
}

void PrivateSoundServer::launch(const std::vector<std::string>& command) {
    const std::string folder = folder_.string();
    const char* path = std::getenv("PATH");
    // Keeps the user's session out: no bus, no display, no settings.
    const std::vector<std::string> environment = {
        std::string("PATH=") + (path ? path : "/usr/bin:/bin"),
        "HOME=" + folder,
        "XDG_RUNTIME_DIR=" + folder,
        "XDG_CONFIG_HOME=" + folder,
        "XDG_STATE_HOME=" + folder,
        "PULSE_RUNTIME_PATH=" + folder,
        "PULSE_STATE_PATH=" + folder,
        "PIPEWIRE_RUNTIME_DIR=" + folder,
        "WIREPLUMBER_CONFIG_DIR=" + folder,
    };
    const auto pointers = [](const std::vector<std::string>& texts) {
        std::vector<char*> all;
        all.reserve(texts.size() + 1);
        for (const auto& text : texts)
            all.push_back(const_cast<char*>(text.c_str()));
        all.push_back(nullptr);
        return all;
    };
    const std::vector<char*> arguments = pointers(command);
    const std::vector<char*> variables = pointers(environment);
    const std::string log = (folder_ / "log").string();
    const pid_t parent = getpid();

    const pid_t child = fork();
    if (child < 0)
        throw std::runtime_error(localized("cannot start %@", {command.front()}));
    if (child == 0) {
        // Only calls that are safe between fork and exec.
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent)
            _exit(127);
        const int output = open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
        const int input = open("/dev/null", O_RDONLY);
        dup2(input, STDIN_FILENO);
        dup2(output, STDOUT_FILENO);
        dup2(output, STDERR_FILENO);
        sigset_t none;
        sigemptyset(&none);
        sigprocmask(SIG_SETMASK, &none, nullptr);
        setpgid(0, 0); // Ctrl-C must not reach the server: this program ends it
        execvpe(arguments[0], arguments.data(), variables.data());
        _exit(127);
    }
    processes_.push_back(child);
}

void PrivateSoundServer::waitUntilReady() {
    const auto deadline = Clock::now() + std::chrono::duration<double>(startTimeoutSeconds);
    while (Clock::now() < deadline) {
        for (const pid_t process : processes_) {
            if (waitpid(process, nullptr, WNOHANG) == process) {
                std::erase(processes_, process);
                throw std::runtime_error(
                    localized("the private sound server ended: %@", {lastLogLine()}));
            }
        }
        if (OutputQuery::isOutputAvailable(address_))
            return;
        std::this_thread::sleep_for(20ms);
    }
    throw std::runtime_error(
        localized("the private sound server does not answer: %@", {lastLogLine()}));
}

void PrivateSoundServer::end(int signal) {
    // In reverse order, because later processes depend on earlier ones.
    while (!processes_.empty()) {
        const pid_t process = processes_.back();
        processes_.pop_back();
        ::kill(process, signal);
        const auto deadline = Clock::now() + 2s;
        while (waitpid(process, nullptr, WNOHANG) == 0) {
            if (Clock::now() > deadline)
                ::kill(process, SIGKILL);
            std::this_thread::sleep_for(5ms);
        }
    }
}

std::string PrivateSoundServer::lastLogLine() const {
    std::ifstream log(folder_ / "log");
    std::string last = "(nothing)";
    for (std::string line; std::getline(log, line);) {
        if (!line.empty())
            last = line;
    }
    return last;
}

} // namespace tessarune
