#include "Tessarune/app/LoginItem.h"

#include "TessaruneCore/diagnostics/TessaruneLog.h"

#include <string>
#include <system_error>

namespace tessarune {

LoginItem::LoginItem(Host& host, AppSettings& settings, Desktop& desktop)
    : host_(host), settings_(settings), desktop_(desktop) {
    const Desktop::LoginState state = desktop_.loginState();
    const auto& setting = settings_.launchAtLogin;
    if (state == Desktop::LoginState::switchedOff && *setting)
        settings_.launchAtLogin = false;
    else if (state == Desktop::LoginState::on && !setting.isStored() && !setting.isUnreadable())
        settings_.launchAtLogin = true;
    else if (!setting.isUnreadable())
        apply(*setting);
    observations_.followChanges(settings_.launchAtLogin.published(),
                                [this](bool starts) { apply(starts); });
}

void LoginItem::apply(bool startsWithDesktop) {
    const bool isOn = desktop_.loginState() == Desktop::LoginState::on;
    if (isOn == startsWithDesktop)
        return;
    try {
        desktop_.setLoginItem(startsWithDesktop);
    } catch (const std::system_error& error) {
        TessaruneLog::app.fault([&error] {
            return std::string("Tessarune launchAtLogin toggle failed: ") + error.what();
        });
        // Deferred: observers are still being notified of the change.
        revert_ = host_.after(0, [this, isOn] { settings_.launchAtLogin = isOn; });
    }
}

} // namespace tessarune
