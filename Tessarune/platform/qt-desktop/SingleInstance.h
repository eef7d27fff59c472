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

/// What one start of the program asks of the one that runs.
struct InstanceRequest {
    std::vector<std::string> actions; ///< in their order; neither these nor files: to be shown
    std::vector<std::string> files;   ///< absolute paths
};

/// The one program of a desktop session: whoever starts first owns the program's id on the session
/// bus and serves `org.freedesktop.Application` there; others pass on what they were asked. Main
/// thread, with the application object.
///
/// Without a session bus the program is alone. Two that cannot see each other still never write one
/// data folder: see DataFolderLock.
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
    /// From now on `handler` gets what others ask, and what they asked before.
    void serve(std::function<void(const InstanceRequest&)> handler);
    /// This program ends: others that ask are told so, and wait for the name.
    void refuse() { isEnding_ = true; }
    /// To the one that runs. Returns why it could not be passed on; empty if it was, and also if
    /// the other one has ended meanwhile and this is the first now.
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
