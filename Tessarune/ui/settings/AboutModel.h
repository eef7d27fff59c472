#pragma once

#include <QObject>
#include <QString>
#include <QVariantList>
#include <QVariantMap>

namespace tessarune {

/// What this program is and which parts it is built from, read from the project's own files. Main
/// thread.
class AboutModel final : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString version READ version CONSTANT)
    /// The program's own licence.
    Q_PROPERTY(QString licence READ licence CONSTANT)
    /// "name", "use" and "licence" of each part, and "section" where a new one begins.
    Q_PROPERTY(QVariantList parts READ parts CONSTANT)
    Q_PROPERTY(QVariantMap texts READ texts CONSTANT)

  public:
    QString version() const;
    QString licence() const;
    QVariantList parts() const;
    QVariantMap texts() const;
};

} // namespace tessarune
