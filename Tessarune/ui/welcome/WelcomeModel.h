#pragma once

#include "Tessarune/shell/AppSettings.h"
#include "Tessarune/speech/SpeechModelManager.h"
#include "Tessarune/translation/TranslationLanguages.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/host/Task.h"
#include "TessaruneCore/observation/Observations.h"
#include "TessaruneCore/observation/Published.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace tessarune {

/// The data and actions of the welcome page. All references must outlive the page.
struct WelcomeEnvironment {
    Host& host;
    AppSettings& settings;
    SpeechModelManager& speech;
    TranslationLanguages& languages;
    /// Says why a download makes no progress; set again after each failed attempt.
    const Published<std::string>& downloadTrouble;
    /// Starts captioning the sample. Returns why that failed; empty on success.
    std::function<Task<std::string>()> playSample;
    /// Closes the page.
    std::function<void()> close;
};

/// The welcome page of the first start: the target language, the missing models and their download,
/// and then captions of sample speech. Main thread.
class WelcomeModel final : public QObject {
    Q_OBJECT
    /// The first entry stands for "no translation".
    Q_PROPERTY(QStringList languages READ languages CONSTANT)
    Q_PROPERTY(int language READ language WRITE setLanguage NOTIFY changed)
    Q_PROPERTY(QString downloads READ downloads NOTIFY changed)
    /// "ask", then "download", then "sample", or "ready" if the sample cannot be played; "ask"
    /// again if the speech model could not be downloaded.
    Q_PROPERTY(QString stage READ stage NOTIFY changed)
    Q_PROPERTY(QString beginText READ beginText NOTIFY changed)
    /// 0 to 1; negative while the size is unknown.
    Q_PROPERTY(double progress READ progress NOTIFY changed)
    Q_PROPERTY(bool isDownloading READ isDownloading NOTIFY changed)
    /// Says that a download is in progress, or why it makes none.
    Q_PROPERTY(QString downloadText READ downloadText NOTIFY changed)
    Q_PROPERTY(QString problem READ problem NOTIFY changed)
    Q_PROPERTY(QVariantMap texts READ texts CONSTANT)

  public:
    explicit WelcomeModel(const WelcomeEnvironment& environment);

    QStringList languages() const;
    int language() const { return language_; }
    void setLanguage(int index);
    QString downloads() const;
    QString stage() const;
    QString beginText() const;
    double progress() const;
    bool isDownloading() const { return isDownloading_; }
    QString downloadText() const;
    QString problem() const { return QString::fromStdString(problem_); }
    static QVariantMap texts();
    /// Whether a download or the start of the sample is in progress; the model must not be
    /// destroyed meanwhile.
    bool isRunning() const { return run_ && !run_->isFinished(); }

    /// Stores the choice, downloads the speech model if none is intact, starts the sample, and then
    /// downloads the translation model if it is missing.
    Q_INVOKABLE void begin();
    /// Call when the page is shown for the first time: begins if nothing has to be downloaded.
    void beginIfComplete();
    /// Handles the user's wish to close the page.
    Q_INVOKABLE void close() { environment_.close(); }
    /// Call when the page is closed, for whatever reason. Stops a download of the speech model,
    /// whose partial file the next attempt continues; a download of the translation model
    /// continues.
    void end();

  Q_SIGNALS:
    void changed();

  private:
    enum class Stage { ask, download, sample, ready };
    struct Missing {
        std::string id;
        std::uint64_t bytes = 0;
    };

    std::optional<Missing> missingSpeech() const;
    std::optional<Missing> missingTranslation() const;
    void applyLanguage();
    void start();
    Task<void> run();
    Task<void> downloadSpeech();
    Task<void> downloadTranslation();
    void show(std::uint64_t received, std::uint64_t expected);
    void enter(Stage stage);

    const WelcomeEnvironment& environment_;
    const std::vector<TranslationLanguageState> targets_; // the supported languages
    int language_ = 0;
    Stage stage_ = Stage::ask;
    bool isDownloading_ = false;
    std::uint64_t received_ = 0;
    std::uint64_t expected_ = 0;
    std::string trouble_; ///< since the last bytes were received
    std::string problem_;
    Observations observations_;
    std::stop_source stop_;
    std::optional<TaskHandle> run_;
};

} // namespace tessarune
