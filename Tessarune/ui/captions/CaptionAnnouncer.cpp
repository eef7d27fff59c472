#include "Tessarune/ui/captions/CaptionAnnouncer.h"

#include <QAccessible>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>

namespace tessarune {

namespace {

/// The name under which Qt registers its connection to the bus of assistive programs. Announcements
/// are sent over this connection, because Qt before 6.8 has no event for them.
const QString accessibilityBus = QStringLiteral("a11y");
constexpr int polite = 1; // ATSPI_LIVE_POLITE
/// The number of newest rows that are searched for the last announced one. A frame usually adds
/// fewer.
constexpr std::size_t searchedRows = 8;

} // namespace

CaptionAnnouncer::CaptionAnnouncer(const CaptionWindowEnvironment& environment,
                                   QQuickWindow& window)
    : environment_(environment), window_(window) {
    observations_.follow(environment_.session.captionDisplay.frame, [this] { announceNewest(); });
    const auto announceMessage = [this](const std::string& text) {
        if (QAccessible::isActive() && !text.empty())
            announce(text);
    };
    observations_.followChanges(
        environment_.notice,
        [announceMessage](const CaptionNotice& notice) { announceMessage(notice.text); });
    observations_.followChanges(
        environment_.session.presentedError, [this, announceMessage](const std::string& text) {
            // Failures in other phases also become notices, which are announced above.
            if (*environment_.session.sessionPhase == LiveSessionPhase::failed)
                announceMessage(text);
        });
    observations_.followChanges(
        environment_.session.status, [announceMessage](const SessionStatus& status) {
            using Kind = SessionStatus::Kind;
            if (status.kind == Kind::interrupted || status.kind == Kind::compressionFailed ||
                status.kind == Kind::transcriptNotSaved)
                announceMessage(status.text());
        });
}

void CaptionAnnouncer::announceNewest() {
    const LiveCaptionDisplayRows& rows = environment_.session.captionDisplay.frame->sourceTextTail;
    if (rows.empty() || announced_ == rows.back().id)
        return;
    // If the last announced row is not found, for example in a new session, only the newest row is
    // announced.
    std::size_t first = rows.size() - 1;
    const std::size_t farthest = rows.size() > searchedRows ? rows.size() - searchedRows : 0;
    for (std::size_t row = first; row > farthest; --row) {
        if (rows[row - 1].id == announced_)
            first = row;
    }
    announced_ = rows.back().id;
    if (!QAccessible::isActive() || !*environment_.settings.announceCaptions)
        return;
    std::string text = rows[first].sourceText;
    for (std::size_t row = first + 1; row < rows.size(); ++row)
        text += " " + rows[row].sourceText;
    announce(text);
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
