#include "Tessarune/ui/desktop/DesktopTray.h"

#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/text/Localization.h"

#include <QIcon>
#include <QPainter>
#include <string>
#include <utility>

namespace tessarune {

namespace {

constexpr const char* customPicture = "MenuBarIcon.png";

QString textOf(std::string_view key) {
    return QString::fromStdString(localized(key));
}

/// A drawing of two caption lines, for a desktop without the program's icon.
QIcon drawnIcon() {
    QIcon icon;
    for (const int size : {16, 22, 32, 64}) {
        QPixmap picture(size, size);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.scale(size / 16.0, size / 16.0);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(0x1b, 0x1b, 0x1e));
        painter.drawRoundedRect(QRectF(0.5, 2, 15, 12), 3, 3);
        painter.setBrush(QColor(0xf2, 0xf2, 0xf4));
        painter.drawRoundedRect(QRectF(3, 5.5, 10, 1.8), 0.9, 0.9);
        painter.setBrush(QColor(0x4f, 0xd0, 0x7f));
        painter.drawRoundedRect(QRectF(3, 9, 6.5, 1.8), 0.9, 0.9);
        icon.addPixmap(picture);
    }
    return icon;
}

void logIcon(std::string_view which) {
    TessaruneLog::ui.notice(
        [which] { return "Tessarune: status item using " + std::string(which); });
}

QIcon trayIcon(const std::filesystem::path& pictures) {
    if (QIcon custom(QString::fromStdString((pictures / customPicture).string()));
        !custom.availableSizes().isEmpty()) {
        logIcon("custom image MenuBarIcon.png");
        return custom;
    }
    if (QIcon installed = QIcon::fromTheme(QString::fromUtf8(TessaruneLog::subsystem));
        !installed.isNull()) {
        logIcon("the installed program icon");
        return installed;
    }
    logIcon("a drawn icon");
    return drawnIcon();
}

} // namespace

DesktopTray::DesktopTray(const SessionView& session,
                         const Published<std::optional<std::string>>& waiting,
                         const std::filesystem::path& pictures, Commands commands)
    : session_(session),
      waiting_(waiting),
      commands_(std::move(commands)),
      item_(trayIcon(pictures)) {
    addEntries();
    TessaruneLog::ui.notice([this] {
        return "Tessarune: status item menu configured with " +
               std::to_string(menu_.actions().size());
    });
    item_.setContextMenu(&menu_);
    QObject::connect(&item_, &QSystemTrayIcon::activated,
                     [this](QSystemTrayIcon::ActivationReason reason) {
                         if (reason == QSystemTrayIcon::Trigger)
                             commands_.toggleWindow();
                     });
    observations_.follow(session_.isListening, [this] { update(); });
    observations_.follow(waiting_, [this] { update(); });
    observations_.follow(session_.hasVisibleSourceTextFlag, [this] { update(); });
    update();
    item_.show();
}

void DesktopTray::addEntries() {
    const auto add = [this](const QString& text, const std::function<void()>& run) {
        return menu_.addAction(text, [run] { run(); });
    };
    toggleListening_ = add({}, commands_.toggleListening);
    toggleWindow_ = add({}, commands_.toggleWindow);
    copy_ = add(textOf("复制双语字幕"), commands_.copyCaptions);
    menu_.addSeparator();
    add(textOf("历史记录…"), commands_.showHistory);
    add(textOf("设置…"), commands_.showSettings);
    add(textOf("关于 Tessarune"), commands_.showAbout);
    menu_.addSeparator();
    add(textOf("退出 Tessarune"), commands_.quit);
}

void DesktopTray::update() {
    const bool isOn = *session_.isListening || *waiting_;
    toggleListening_->setText(isOn ? textOf("停止字幕") : textOf("开始字幕"));
    toggleWindow_->setText(commands_.isWindowVisible() ? textOf("隐藏字幕窗口")
                                                       : textOf("显示字幕窗口"));
    copy_->setEnabled(*session_.hasVisibleSourceTextFlag);
    item_.setToolTip(toolTip());
}

QString DesktopTray::toolTip() const {
    if (*session_.isListening)
        return textOf("Tessarune：正在显示字幕");
    const std::string waiting = waiting_->value_or("");
    return waiting.empty() ? QStringLiteral("Tessarune") : QString::fromStdString(waiting);
}

} // namespace tessarune
