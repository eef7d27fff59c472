#include "Tessarune/ui/controls/Controls.h"

#include "Tessarune/ui/controls/DesktopLook.h"

#include <QUrl>
#include <QtQml>

/// Outside of any namespace, as Qt wants it; a static library's files are found only when asked
/// for.
static void useControlFiles() {
    Q_INIT_RESOURCE(controls);
    Q_INIT_RESOURCE(qmlcache_controls);
}

namespace tessarune {

void registerControls() {
    static const bool once = [] {
        useControlFiles();
        // In a module of its own: the singleton, which uses it, is one of the other.
        qmlRegisterType<DesktopLook>("Tessarune.Desktop", 1, 0, "DesktopLook");
        qmlRegisterSingletonType(QUrl(QStringLiteral("qrc:/controls/Theme.qml")), "Tessarune", 1, 0,
                                 "Theme");
        return true;
    }();
    Q_UNUSED(once);
}

} // namespace tessarune
