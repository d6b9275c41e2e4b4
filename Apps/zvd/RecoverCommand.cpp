#include "Apps/zvd/Command.h"
#include "Zelvan/ZvRecovery.h"
#include "ZvCore/Platform/Platform.h"
#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>

namespace fs = std::filesystem;

namespace {

struct RecoverArguments {
    std::string place;
    std::string backupDirectory;
    bool dryRun = false;
};

constexpr const char* kAbout = R"(Put back what a power cut or a program that ended badly left of drawings.
A drawing that is missing or damaged, or beside which a newer finished save or periodic backup lies, is
replaced by the newest whole form of it; what it replaces is kept (".bak", or ".damaged").
Exit codes: 0 nothing to do or all restored, 1 --dry-run: something to restore, 3 no such file or folder,
4 a drawing is damaged or missing and nothing whole is left of it, 5 it cannot be written or is being edited.)";

nlohmann::ordered_json ToJson(const ZvRecovery::Candidate& candidate) {
    static constexpr const char* kKinds[] = {"unfinished", "backup", "periodic"};
    return {{"kind", kKinds[int(candidate.kind)]},
            {"file", ZvPlatform::PathToUtf8(candidate.file)},
            {"modified", candidate.modified.ToString().ToUtf8()},
            {"whole", candidate.IsWhole()},
            {"newer", candidate.isNewer},
            {"revision", candidate.stamp.revision},
            {"why", candidate.why}};
}

class Recovery {
public:
    Recovery(const Console& console, const RecoverArguments& arguments)
        : m_console(console), m_dryRun(arguments.dryRun),
          m_backups(ZvCore::IFileSystem::System(), Settings(arguments), IZvClock::System(), nullptr),
          m_recovery(ZvCore::IFileSystem::System(), m_backups) {}

    ExitCode Run(const fs::path& place) {
        const ZvCore::IFileSystem::Info info = ZvCore::IFileSystem::System().Look(place);
        std::vector<fs::path> drawings{place};
        if (info.isFolder) {
            if (const std::string why = m_recovery.DrawingsIn(place, drawings); !why.empty())
                return m_console.Fail(ExitCode::NoInput,
                                      "cannot list '" + ZvPlatform::PathToUtf8(place) + "': " + why);
        }
        ExitCode worst = ExitCode::Ok;
        for (const fs::path& drawing : drawings)
            worst = std::max(worst, One(drawing));
        m_console.Json(m_reports);
        return worst;
    }

private:
    const ZvBackupSettings& Settings(const RecoverArguments& arguments) {
        m_settings = ZvBackupSettings::Application();
        if (!arguments.backupDirectory.empty())
            m_settings.directory = ZvPlatform::PathFromUtf8(arguments.backupDirectory);
        return m_settings;
    }

    ExitCode One(const fs::path& drawing) {
        const ZvRecovery::Finding finding = m_recovery.Look(drawing);
        const std::string name = ZvPlatform::PathToUtf8(drawing);
        nlohmann::ordered_json report{{"drawing", name},
                                      {"exists", finding.exists},
                                      {"whole", finding.IsWhole()},
                                      {"why", finding.why},
                                      {"busy", finding.isBusy},
                                      {"candidates", nlohmann::ordered_json::array()}};
        for (const ZvRecovery::Candidate& candidate : finding.candidates)
            report["candidates"].push_back(ToJson(candidate));
        std::string outcome;
        const ExitCode code = Treat(finding, name, outcome);
        report["outcome"] = outcome;
        m_console.Line(name + ": " + outcome);
        m_reports.push_back(std::move(report));
        return code;
    }

    /// What looks newer by its time or its number and was not made from the drawing's file.
    static std::string Doubts(const ZvRecovery::Finding& finding) {
        std::string doubts;
        for (const ZvRecovery::Candidate& candidate : finding.candidates) {
            const bool mayBeNewer = finding.stamp.revision && candidate.stamp.revision
                                        ? candidate.stamp.revision > finding.stamp.revision
                                        : candidate.modified > finding.modified;
            if (candidate.kind != ZvRecovery::Kind::Backup && candidate.IsWhole() && mayBeNewer)
                doubts += "\n  left alone, as nothing proves that it is newer: " + candidate.Describe();
        }
        return doubts;
    }

    ExitCode Treat(const ZvRecovery::Finding& finding, const std::string& name, std::string& outcome) {
        const ZvRecovery::Candidate* best = finding.Best();
        if (finding.isBusy) {
            outcome = "is being edited by another program";
            return ExitCode::NoOutput;
        }
        if (!best && !finding.IsWhole()) {
            outcome = finding.exists ? "damaged (" + finding.why + "), and nothing whole is left of it"
                                     : "missing, and nothing whole is left of it";
            return finding.exists || !finding.candidates.empty() || !finding.rubbish.empty()
                       ? ExitCode::BadInput
                       : ExitCode::NoInput;
        }
        if (!best) {
            if (!m_dryRun)
                m_recovery.DeleteRubbish(finding);
            outcome = "whole" + Doubts(finding);
            return ExitCode::Ok;
        }
        if (m_dryRun) {
            outcome = "would be restored from " + best->Describe();
            return ExitCode::Findings;
        }
        if (const std::string why = m_recovery.Restore(finding, *best); !why.empty()) {
            outcome = "not restored: " + why;
            m_console.Warn(name + ": " + outcome);
            return ExitCode::NoOutput;
        }
        m_recovery.DeleteRubbish(finding);
        outcome = "restored from " + best->Describe();
        return ExitCode::Ok;
    }

    const Console& m_console;
    bool m_dryRun;
    ZvBackupSettings m_settings;
    ZvBackups m_backups;
    ZvRecovery m_recovery;
    nlohmann::ordered_json m_reports = nlohmann::ordered_json::array();
};

} // namespace

void AddRecoverCommand(CLI::App& app, CommandRun& run) {
    CLI::App* command = app.add_subcommand("recover", kAbout);
    auto arguments = std::make_shared<RecoverArguments>();
    command->add_option("PLACE", arguments->place, "A drawing, or a folder of drawings")->required();
    command->add_option("--backups", arguments->backupDirectory, "Where the program puts its backups");
    command->add_flag("--dry-run", arguments->dryRun, "Tell what would be done, change nothing");
    command->callback([&run, arguments] {
        run = [arguments](const Console& console) {
            return Recovery(console, *arguments).Run(ZvPlatform::PathFromUtf8(arguments->place));
        };
    });
}
