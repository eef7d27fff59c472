#include "Tessarune/app/LoginItem.h"
#include "Tessarune/platform/disk/PosixFileSystem.h"
#include "Tessarune/platform/qt-desktop/DesktopMotion.h"
#include "Tessarune/platform/qt-desktop/SingleInstance.h"
#include "Tessarune/platform/qt-desktop/SleepWatch.h"
#include "Tessarune/platform/qt-desktop/TrayWatch.h"
#include "Tessarune/platform/qt-desktop/XDGDesktop.h"
#include "Tessarune/platform/qt-host/QtHost.h"
#include "tests/support/FileContents.h"
#include "tests/support/MemoryUserDefaults.h"
#include "tests/support/ProgramRun.h"
#include "tests/ui/OffscreenApplication.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QThread>
#include <atomic>
#include <thread>

namespace tessarune {
namespace {

/// The system's login manager, the desktop's settings portal, tray and notifications, as far as the
/// program uses them.
class ScriptedServices : public QDBusVirtualObject {
  public:
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
        if (message.member() == QLatin1String("Inhibit")) {
            int ends[2];
            if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
                return false;
            held = ends[0];
            bus.send(message.createReply(QVariant::fromValue(QDBusUnixFileDescriptor(ends[1]))));
            close(ends[1]);
            return true;
        }
        if (message.member() == QLatin1String("Read") &&
            message.arguments().value(1) == QLatin1String("enable-animations")) {
            const QVariant wrapped = QVariant::fromValue(QDBusVariant(false));
            bus.send(message.createReply(QVariant::fromValue(QDBusVariant(wrapped))));
            return true;
        }
        if (message.member() == QLatin1String("Get")) {
            bus.send(message.createReply(QVariant::fromValue(QDBusVariant(hasPanel))));
            return true;
        }
        if (message.member() == QLatin1String("GetCapabilities")) {
            bus.send(message.createReply(capabilities));
            return true;
        }
        if (message.member() == QLatin1String("ActivateAction")) {
            asked << message.arguments().value(0).toString();
            const QString ending = QStringLiteral("app.tessarune.captions.Error.Ending");
            bus.send(asked.size() == 2 ? message.createErrorReply(ending, {})
                                       : message.createReply());
            return true;
        }
        if (message.member() == QLatin1String("Notify"))
            notified = message.arguments().value(4).toString();
        return false;
    }
    /// Whether the program still holds its end of the pipe, which delays the sleep.
    bool isHeld() const {
        char byte = 0;
        return held >= 0 && read(held, &byte, 1) != 0;
    }

    int held = -1;
    bool hasPanel = false; ///< whether a panel shows the tray
    QStringList capabilities;
    QStringList asked; ///< the actions; the second one is refused as by a program that is ending
    QString notified;  ///< the body of the last notification
};

/// A private bus with one connection for the services and one for the program.
class DesktopServices : public ::testing::Test {
  protected:
    DesktopServices() {
        offscreenApplication();
        EXPECT_TRUE(runUntil([&] { return daemon.output().find('\n') != std::string::npos; }));
        const QString address = QString::fromStdString(daemon.output()).trimmed();
        manager = QDBusConnection::connectToBus(address, "manager");
        program = QDBusConnection::connectToBus(address, "program");
    }
    ~DesktopServices() override {
        QDBusConnection::disconnectFromBus("manager");
        QDBusConnection::disconnectFromBus("program");
    }

    const testing::TemporaryFolder folder;
    const testing::StartedProgram daemon{
        "/usr/bin/dbus-daemon", {"--session", "--nofork", "--print-address=1"}, folder.path(), {}};
    QDBusConnection manager{QString()};
    QDBusConnection program{QString()};
    ScriptedServices services;
};

TEST_F(DesktopServices, ATrayIsFoundWhenItsPanelStartsAfterTheProgram) {
    int found = 0;
    const TrayWatch watch(program, [&] { ++found; });
    manager.registerVirtualObject("/StatusNotifierWatcher", &services);
    ASSERT_TRUE(manager.registerService("org.kde.StatusNotifierWatcher"));
    services.hasPanel = true; // the panel announces itself
    manager.send(QDBusMessage::createSignal(
        "/StatusNotifierWatcher", "org.kde.StatusNotifierWatcher", "StatusNotifierHostRegistered"));
    EXPECT_TRUE(runUntil([&] { return found > 0 && watch.isThere(); }));
    manager.unregisterService("org.kde.StatusNotifierWatcher");
    EXPECT_TRUE(runUntil([&] { return !watch.isThere(); }));
}

TEST_F(DesktopServices, MotionFollowsTheDesktopsSetting) {
    manager.registerVirtualObject("/org/freedesktop/portal/desktop", &services);
    ASSERT_TRUE(manager.registerService("org.freedesktop.portal.Desktop"));
    const DesktopMotion motion(program);
    EXPECT_TRUE(runUntil([&] { return *motion.isReduced; }));
    QDBusMessage change = QDBusMessage::createSignal(
        "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings", "SettingChanged");
    change << "org.gnome.desktop.interface"
           << "enable-animations" << QVariant::fromValue(QDBusVariant(true));
    manager.send(change);
    EXPECT_TRUE(runUntil([&] { return !*motion.isReduced; }));
}

TEST_F(DesktopServices, ANotificationIsEscapedOnlyForAServerThatReadsMarkup) {
    manager.registerVirtualObject("/org/freedesktop/Notifications", &services);
    ASSERT_TRUE(manager.registerService("org.freedesktop.Notifications"));
    PosixFileSystem files;
    XDGDesktop desktop(files, "an.id", "/opt/tessarune", program);
    for (const auto& [capability, body] :
         {std::pair("body", "a < b"), {"body-markup", "a &lt; b"}}) {
        services.capabilities = QStringList{capability};
        desktop.notify("Tessarune", "a < b");
        EXPECT_TRUE(runUntil([&] { return services.notified == body; }));
    }
    services.notified.clear();
    QThread server;
    services.moveToThread(&server);
    server.start();
    XDGDesktop(files, "an.id", "/opt/tessarune", program).notify("Tessarune", "the last words");
    server.quit();
    server.wait();
    EXPECT_EQ(services.notified, "the last words") << "sent before the program ends";
}

TEST_F(DesktopServices, AnActionIsNotPassedOnTwice) {
    manager.registerVirtualObject("/an/id", &services);
    ASSERT_TRUE(manager.registerService("an.id"));
    SingleInstance instance("an.id", program);
    std::atomic<bool> isDone = false;
    std::thread sender([&] {
        InstanceRequest request{{"toggle", "show"}, {}};
        EXPECT_EQ(instance.forward(request), "");
        isDone = true;
    });
    EXPECT_TRUE(runUntil([&] { return isDone.load(); }));
    sender.join();
    EXPECT_EQ(services.asked, (QStringList{"toggle", "show", "show"}));
}

TEST_F(DesktopServices, SleepIsDelayedUntilTheProgramIsReady) {
    manager.registerVirtualObject("/org/freedesktop/login1", &services);
    ASSERT_TRUE(manager.registerService("org.freedesktop.login1"));

    std::function<void()> ready;
    int woken = 0;
    const SleepWatch watch(
        program, {.willSleep = [&](std::function<void()> done) { ready = std::move(done); },
                  .didWake = [&] { ++woken; },
                  .willShutDown = {}});
    ASSERT_TRUE(runUntil([&] { return services.isHeld(); }));
    const auto announce = [&](bool sleeps) {
        QDBusMessage signal = QDBusMessage::createSignal(
            "/org/freedesktop/login1", "org.freedesktop.login1.Manager", "PrepareForSleep");
        manager.send(signal << sleeps);
    };
    announce(true);
    ASSERT_TRUE(runUntil([&] { return ready != nullptr; }));
    EXPECT_TRUE(services.isHeld());
    ready();
    EXPECT_TRUE(runUntil([&] { return !services.isHeld(); }));
    announce(false);
    EXPECT_TRUE(runUntil([&] { return woken == 1 && services.isHeld(); }));
    const auto late = std::exchange(ready, {});
    late();
    announce(true);
    EXPECT_TRUE(runUntil([&] { return ready != nullptr; }));
    EXPECT_TRUE(services.isHeld()) << "an answer to the former sleep does not count for this one";
}

TEST(LoginItem, FollowsTheSettingAndTheDesktopsOwnSwitch) {
    offscreenApplication();
    const testing::TemporaryFolder folder;
    qputenv("XDG_CONFIG_HOME", folder.path().c_str());
    QtHost host;
    PosixFileSystem files;
    testing::MemoryUserDefaults defaults;
    AppSettings settings(defaults);
    XDGDesktop desktop(files, "an.id", "/opt/a \"b\"/c\\/tessarune");
    const auto entry = folder / "autostart/an.id.desktop";
    {
        const LoginItem item(host, settings, desktop);
        settings.launchAtLogin = true;
        EXPECT_NE(testing::contentsOf(entry).find(R"(Exec="/opt/a \\"b\\"/c\\\\/tessarune")"),
                  std::string::npos)
            << testing::contentsOf(entry);
    }
    files.writeAtomically(entry, testing::contentsOf(entry) + "Hidden=true\n");
    const LoginItem item(host, settings, desktop);
    EXPECT_FALSE(*settings.launchAtLogin) << "the desktop has switched the entry off";
    files.remove(entry);
    files.writeAtomically(folder / "autostart/x", "");
    settings.launchAtLogin = true;
    settings.launchAtLogin = false;
    EXPECT_FALSE(files.exists(entry));

    files.writeAtomically(entry, "[Desktop Entry]\nExec=tessarune start\n");
    testing::MemoryUserDefaults untouched;
    AppSettings fresh(untouched);
    const LoginItem taken(host, fresh, desktop);
    EXPECT_TRUE(*fresh.launchAtLogin) << "an entry that the user wrote counts";
    EXPECT_NE(testing::contentsOf(entry).find("tessarune start"), std::string::npos);
}

} // namespace
} // namespace tessarune
