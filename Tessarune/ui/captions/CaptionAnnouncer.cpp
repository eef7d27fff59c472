#include "Tessarune/ui/captions/CaptionAnnouncer.h"

#include <QAccessible>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>

namespace tessarune {

namespace {

/// The name under which Qt keeps its connection to the bus of assistive programs. Before Qt 6.8 it
/// has no event for announcements.
const QString accessibilityBus = QStringLiteral("a11y");
constexpr int polite = 1; // ATSPI_LIVE_POLITE

} // namespace

CaptionAnnouncer::CaptionAnnouncer(const CaptionWindowEnvironment& environment,
                                   QQuickWindow& window)
    : environment_(environment), window_(window) {
    observations_.follow(environment_.session.captionDisplay.frame, [this] { announceNewest(); });
}

void CaptionAnnouncer::announceNewest() {
    const LiveCaptionDisplayRows& rows = environment_.session.captionDisplay.frame->sourceTextTail;
    if (rows.empty() || announced_ == rows.back().id)
        return;
    announced_ = rows.back().id;
    if (QAccessible::isActive() && *environment_.settings.announceCaptions)
        announce(rows.back().sourceText);
}

void CaptionAnnouncer::announce(const std::string& text) {
    QAccessibleInterface* const window = QAccessible::queryAccessibleInterface(&window_);
    QDBusConnection bus(accessibilityBus);
    if (!window || !bus.isConnected())
        return;
    QDBusMessage signal = QDBusMessage::createSignal(
        QStringLiteral("/org/a11y/atspi/accessible/%1").arg(QAccessible::uniqueId(window)),
        QStringLiteral("org.a11y.atspi.Event.Object"), QStringLiteral("Announcement"));
    signal << QString() << polite << 0
           << QVariant::fromValue(QDBusVariant(QString::fromStdString(text))) << QVariantMap();
    bus.send(signal);
}

} // namespace tessarune
