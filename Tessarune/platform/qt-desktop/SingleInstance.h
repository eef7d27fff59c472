#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <functional>
#include <string>
#include <vector>

namespace tessarune {

/// A request to the running program by one that was started later. A request without actions and
/// files asks the program to show its window.
struct InstanceRequest {
    std::vector<std::string> actions; ///< in order
    std::vector<std::string> files;   ///< absolute paths, and addresses that name no local file
};

/// Limits the program to one instance per desktop session: the first one owns the program's id on
/// the session bus and serves `org.freedesktop.Application` there; later ones pass their requests
/// to it. Main thread, while the QCoreApplication exists.
///
/// Without a session bus the program assumes that it is alone. DataFolderLock still keeps two
/// programs from writing to the same data folder.
class SingleInstance : public QObject, protected QDBusContext {
    Q_OBJECT

  public:
    enum class Standing {
        first,  ///< this instance owns the id
        second, ///< another instance owns the id
        alone,  ///< there is no session bus
    };

    explicit SingleInstance(const std::string& applicationID,
                            QDBusConnection bus = QDBusConnection::sessionBus());
    ~SingleInstance() override;

    Standing standing() const { return standing_; }
    /// Calls `handler` with the requests of others from now on, and at once with earlier ones.
    void serve(std::function<void(const InstanceRequest&)> handler);
    /// From now on, answers requests with the error that this program is ending. Their senders wait
    /// for a limited time until the id is free.
    void refuse() { isEnding_ = true; }
    /// Passes the request to the running program, and removes the actions from `request` that the
    /// running program has accepted. Returns the reason for a failure. Empty on success, and also
    /// if the running program has ended: this instance is then the first, and must do what is left
    /// in `request`.
    std::string forward(InstanceRequest& request);

    /// Takes a request from the bus; only for ApplicationInterface.
    void receive(InstanceRequest request);

  private:
    /// Makes one attempt to send all calls of the request, and removes each accepted action. Stops
    /// at the first error and returns it; otherwise returns the last answer.
    QDBusMessage ask(InstanceRequest& request);

    const QString id_;
    QDBusConnection bus_;
    Standing standing_ = Standing::alone;
    bool isEnding_ = false;
    std::function<void(const InstanceRequest&)> handler_;
    std::vector<InstanceRequest> early_; // requests before `serve`
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
