#include "Tessarune/app/TessaruneStartupServices.h"

#include "TessaruneCore/diagnostics/TessaruneLog.h"

namespace tessarune::TessaruneStartupServices {

RecordingRepair::Report prepare(const Environment& environment) {
    environment.logger.bootstrap(environment.bootstrapFields);
    TessaruneLog::app.notice(
        [] { return std::string("Tessarune Apple SpeechAnalyzer runtime initialized"); });
    environment.logger.event("runtime.recognition", {{"engine", "Apple SpeechAnalyzer"}});
    RecordingRepair::Report report;
    if (environment.repair)
        report = environment.repair->runAtLaunch();
    if (environment.pruneDiagnostics)
        environment.pruneDiagnostics();
    if (environment.preheatSelectedOption)
        environment.preheatSelectedOption();
    return report;
}

} // namespace tessarune::TessaruneStartupServices
