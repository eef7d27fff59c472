#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

namespace tessarune {

/// A private sound server with one silent output, beside any other server: for a computer without
/// one, and for tests.
///
/// It lives in a folder of its own under the temporary directory and needs neither a D-Bus session
/// nor a display; it may run as root. The processes end with the object, and also with the thread
/// that made it, so a killed program leaves none behind: make it on a thread that lives as long as
/// the server is needed.
class PrivateSoundServer {
  public:
    enum class Kind { pulseAudio, pipeWire };
    static constexpr double startTimeoutSeconds = 10.0;
    static constexpr const char* outputID = "tessarune_null";

    /// Whether the programs for it are in the PATH.
    static bool isInstalled(Kind kind);

    /// Starts the server and returns when its output is available. Throws std::runtime_error with
    /// the missing program or the server's message.
    explicit PrivateSoundServer(Kind kind);
    /// The first kind that is installed.
    PrivateSoundServer();
    ~PrivateSoundServer();
    PrivateSoundServer(const PrivateSoundServer&) = delete;
    PrivateSoundServer& operator=(const PrivateSoundServer&) = delete;

    /// For `PulseSoundServer` and PULSE_SERVER.
    const std::string& address() const { return address_; }

    /// Kills the processes, as a crash would.
    void kill();
    /// Starts them again, at the same address.
    void restart();

  private:
    void start();
    void launch(const std::vector<std::string>& command);
    void waitUntilReady();
    void end(int signal);
    std::string whatItSaid() const;

    Kind kind_;
    std::filesystem::path folder_;
    std::string address_;
    std::vector<pid_t> processes_;
};

} // namespace tessarune
