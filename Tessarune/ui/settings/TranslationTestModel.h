#pragma once

#include "Tessarune/shell/AppSettings.h"
#include "Tessarune/translation/TranslationTaskBridge.h"
#include "TessaruneCore/observation/Observations.h"

#include <QObject>
#include <QString>
#include <QVariantMap>
#include <memory>

namespace tessarune {

/// The status of the chosen translation backend, and a test of the backend. The status does not
/// depend on the installed models. Main thread; the settings must outlive it.
class TranslationTestModel final : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString state READ state NOTIFY changed)
    Q_PROPERTY(QString stateDetail READ stateDetail NOTIFY changed)
    Q_PROPERTY(bool canRun READ canRun NOTIFY changed)
    Q_PROPERTY(QString status READ status NOTIFY changed)
    Q_PROPERTY(QString result READ result NOTIFY changed)
    Q_PROPERTY(QVariantMap texts READ texts CONSTANT)

  public:
    TranslationTestModel(const AppSettings& settings, std::shared_ptr<TranslationTaskBridge> test);

    QString state() const;
    QString stateDetail() const;
    bool canRun() const;
    QString status() const { return QString::fromStdString(*test_->statusText()); }
    QString result() const { return QString::fromStdString(*test_->resultText()); }
    QVariantMap texts() const;

    Q_INVOKABLE void run();

  Q_SIGNALS:
    void changed();
    /// A test has ended; it may have downloaded models.
    void ended();

  private:
    bool isRunning() const { return *test_->isTestingTranslation(); }

    const AppSettings& settings_;
    const std::shared_ptr<TranslationTaskBridge> test_;
    Observations observations_;
};

} // namespace tessarune
