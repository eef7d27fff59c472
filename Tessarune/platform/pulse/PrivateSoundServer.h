#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

namespace tessarune {

/// A private sound server with one silent output, independent of any other server: for computers
/// without a sound server, and for tests.
///
/// It keeps its files in a temporary folder and needs neither a D-Bus session nor a display; it may
/// run as root. Its processes end with the object. They also end with the thread that created the
/// object, so that a killed program leaves none behind; for this reason, create the object on a
/// thread that lives as long as the server is needed.
class PrivateSoundServer {
  public:
    enum class Kind { pulseAudio, pipeWire };
    static constexpr double startTimeoutSeconds = 10.0;
    static constexpr const char* outputID = "tessarune_null";

    /// Whether the programs of this kind are in the PATH.
    static bool isInstalled(Kind kind);

    /// Starts the server and returns when its output is available. Throws std::runtime_error; if
    /// the server has ended or does not answer, `what()` contains the last line of the server's
    /// log.
    explicit PrivateSoundServer(Kind kind);
    /// Starts the first kind that is installed. Throws std::runtime_error if there is none.
    PrivateSoundServer();
    ~PrivateSoundServer();
    PrivateSoundServer(const PrivateSoundServer&) = delete;
    PrivateSoundServer& operator=(const PrivateSoundServer&) = delete;

    /// The address for `PulseSoundServer` and PULSE_SERVER.
    const std::string& address() const { return address_; }

    /// Kills the processes, as a crash would.
    void kill();
    /// Ends the processes that still run, and starts the server again at the same address.
    void restart();

  private:
    void start();
    void launch(const std::vector<std::string>& command);
    void waitUntilReady();
    void end(int signal);
    std::string lastLogLine() const;

    Kind kind_;
    std::filesystem::path folder_;
    std::string address_;
    std::vector<pid_t> processes_;
};

} // namespace tessarune
