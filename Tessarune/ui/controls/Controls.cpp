#include "Tessarune/ui/controls/Controls.h"

#include "Tessarune/ui/controls/DesktopLook.h"

#include <QUrl>
#include <QtQml>

/// Qt requires this outside any namespace. The files of a static library are found only after this
/// call.
static void useControlFiles() {
    Q_INIT_RESOURCE(controls);
    Q_INIT_RESOURCE(qmlcache_controls);
}

namespace tessarune {

void registerControls() {
    static const bool once = [] {
        useControlFiles();
        // A separate module, because the singleton below imports it.
        qmlRegisterType<DesktopLook>("Tessarune.Desktop", 1, 0, "DesktopLook");
        qmlRegisterSingletonType(QUrl(QStringLiteral("qrc:/controls/Theme.qml")), "Tessarune", 1, 0,
                                 "Theme");
        return true;
    }();
    Q_UNUSED(once);
}

} // namespace tessarune
