#pragma once

#include <QObject>
#include <QString>
#include <QVariantList>
#include <QVariantMap>

namespace tessarune {

/// The program's version and licence, and the third-party parts that it is built from, read from
/// the project's own files. Main thread.
class AboutModel final : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString version READ version CONSTANT)
    /// The program's own licence.
    Q_PROPERTY(QString licence READ licence CONSTANT)
    /// "name", "use", "licence" and "section" of each part; "section" is empty unless the part is
    /// the first of its section.
    Q_PROPERTY(QVariantList parts READ parts CONSTANT)
    Q_PROPERTY(QVariantMap texts READ texts CONSTANT)

  public:
    QString version() const;
    QString licence() const;
    QVariantList parts() const;
    QVariantMap texts() const;
};

} // namespace tessarune
