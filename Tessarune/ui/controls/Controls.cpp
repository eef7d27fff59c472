#include "Tessarune/ui/controls/Controls.h"

#include "Tessarune/ui/controls/DesktopLook.h"
#include "Tessarune/ui/controls/WindowKeys.h"

#include <QQmlPropertyMap>
#include <QUrl>
#include <QVariantList>
#include <QtQml>

/// Registers the files of this static library. Qt requires these macros outside any namespace.
static void useControlFiles() {
    Q_INIT_RESOURCE(controls);
    Q_INIT_RESOURCE(qmlcache_controls);
}

namespace tessarune {

namespace {

/// Maps the name of each command to its keys. The QML engine owns the result.
QObject* windowKeysForQML(QQmlEngine*, QJSEngine*) {
    auto* const properties = new QQmlPropertyMap;
    for (const WindowKeys& command : WindowKeys::all()) {
        QVariantList keys;
        for (const QKeySequence& sequence : command.keys)
            keys << sequence.toString(QKeySequence::PortableText);
        properties->insert(QString::fromUtf8(command.name), keys);
    }
    return properties;
}

} // namespace

void registerControls() {
    static const bool once = [] {
        useControlFiles();
        // In a module of its own, because the singleton Theme imports it.
        qmlRegisterType<DesktopLook>("Tessarune.Desktop", 1, 0, "DesktopLook");
        qmlRegisterSingletonType(QUrl(QStringLiteral("qrc:/controls/Theme.qml")), "Tessarune", 1, 0,
                                 "Theme");
        qmlRegisterSingletonType<QQmlPropertyMap>("Tessarune", 1, 0, "WindowKeys",
                                                  windowKeysForQML);
        return true;
    }();
    Q_UNUSED(once);
}

} // namespace tessarune
