#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusContext>
#include <QDBusMessage>
#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tessarune {

/// A request of a new start to the running program.
struct InstanceRequest {
    std::vector<std::string> actions; ///< in order; without any, and without files: show the window
    std::vector<std::string> files;   ///< absolute paths
};

/// The single program of a desktop session: the first one owns the program's id on the session bus
/// and serves `org.freedesktop.Application` there; later ones pass their requests on. Main thread,
/// with the application object.
///
/// Without a session bus the program assumes that it is alone. DataFolderLock still keeps two
/// programs from writing one data folder.
class SingleInstance : public QObject, protected QDBusContext {
    Q_OBJECT

  public:
    enum class Standing {
        first,  ///< others will find this one
        second, ///< another one runs
        alone,  ///< there is no session bus
    };

    explicit SingleInstance(const std::string& applicationID);
    ~SingleInstance() override;

    Standing standing() const { return standing_; }
    /// From now on `handler` gets the requests of others, earlier ones included.
    void serve(std::function<void(const InstanceRequest&)> handler);
    /// This program is ending: other programs learn that from now on, and wait for the name.
    void refuse() { isEnding_ = true; }
    /// Passes the request to the running program. Returns the reason if that failed; empty on
    /// success, and also if the other program has ended and this one is now the first.
    std::string forward(const InstanceRequest& request);

    /// What the bus asks; see ApplicationInterface.
    void receive(InstanceRequest request);

  private:
    /// Asks once, all of it.
    QDBusMessage ask(const InstanceRequest& request) const;

    const QString id_;
    Standing standing_ = Standing::alone;
    bool isEnding_ = false;
    std::function<void(const InstanceRequest&)> handler_;
    std::vector<InstanceRequest> early_; // before `serve`
};

/// `org.freedesktop.Application` as the bus sees it.
class ApplicationInterface final : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

  public:
    explicit ApplicationInterface(SingleInstance& instance);

  public Q_SLOTS:
    void Activate(const QVariantMap& platformData);
    void Open(const QStringList& uris, const QVariantMap& platformData);
    void ActivateAction(const QString& name, const QVariantList& parameter,
                        const QVariantMap& platformData);

  private:
    SingleInstance& instance_;
};

} // namespace tessarune
