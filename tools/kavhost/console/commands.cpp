#include "tools/kavhost/console/commands.h"

#include "platform/executable.h"
#include "platform/interrupt.h"
#include "platform/library.h"
#include "platform/message_box.h"
#include "platform/settings_store.h"
#include "platform/terminal.h"
#include "tools/kavhost/base/error_line.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/pending_file.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/bench/bench.h"
#include "tools/kavhost/console/options.h"
#include "tools/kavhost/content/factory_content.h"
#include "tools/kavhost/content/named_content.h"
#include "tools/kavhost/editor/audio_file_choice.h"
#include "tools/kavhost/editor/editor_commands.h"
#include "tools/kavhost/editor/scratch_settings.h"
#include "tools/kavhost/effect/blocks.h"
#include "tools/kavhost/effect/effect.h"
#include "tools/kavhost/effect/effect_library.h"
#include "tools/kavhost/effect/state_file.h"
#include "tools/kavhost/inspect/info.h"
#include "tools/kavhost/inspect/inspect.h"
#include "tools/kavhost/inspect/patch_content.h"
#include "tools/kavhost/render/batch_report.h"
#include "tools/kavhost/render/render.h"
#include "tools/kavhost/render/render_batch.h"
#include "tools/kavhost/report/report.h"
#include "tools/kavhost/setup/profile.h"
#include "tools/kavhost/setup/reference.h"
#include "tools/kavhost/setup/settings.h"
#include "tools/kavhost/setup/setup.h"
#include "tools/kavhost/target/main_gains.h"
#include "tools/kavhost/target/target_renderer.h"
#include "utils/path.h"
#include "utils/product.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <span>
#include <system_error>
#include <utility>

namespace KAV::Host {

namespace {

constexpr SStream UsualStream{44100, 512};

/// The name of the plug-in that comes with kavhost, and of its profile.
constexpr const char* OwnPlugin = "KAVSorrelLimiter";

std::filesystem::path OwnFolder() {
    return Platform::ExecutableFile().parent_path();
}

std::filesystem::path DocumentsFolder() {
    return Utils::ToSystemPath(Utils::GetDocumentsFolder());
}

std::filesystem::path PluginFile(const SOptions& options) {
    if (!options.plugin.empty()) return options.plugin;
    return OwnFolder() / PathOf(OwnPlugin + std::string(Platform::LibrarySuffix()));
}

std::optional<SProfile> ProfileFor(const CEffect& effect, const std::filesystem::path& wanted) {
    if (wanted.empty()) return FindProfile(OwnFolder(), effect.UniqueId());
    auto profile = ReadProfile(wanted);
    if (profile.uniqueId != effect.UniqueId()) {
        throw CFailure(Utf8(wanted) + ": the profile of another effect: its unique id is " +
                       std::to_string(profile.uniqueId) + ", not " + std::to_string(effect.UniqueId()));
    }
    return profile;
}

std::filesystem::path ContentFolder(const SOptions& options) {
    return options.content.empty() ? OwnFolder() / "content" : options.content;
}

/// The guide lies next to kavhost as well.
SContentSource ContentSource(const SOptions& options) {
    return {ContentFolder(options), OwnFolder() / PathOf(KAV_GUIDE)};
}

SContentFolders ContentFolders(const SOptions& options) {
    return {DocumentsFolder(), ContentFolder(options)};
}

/// A name may be that of a patch or of a routing.
std::filesystem::path FindInspected(const std::filesystem::path& wanted, const SContentFolders& folders) {
    const auto has = [&](ENamedContent kind) {
        const auto names = ContentNames(kind, folders);
        return std::ranges::find(names, Utf8(wanted), &SContentName::name) != names.end();
    };
    const bool isRouting = !has(ENamedContent::Patch) && has(ENamedContent::Routing);
    return FindContent(isRouting ? ENamedContent::Routing : ENamedContent::Patch, wanted, folders);
}

/// Replaces names of patches and routings by the files that they stand for.
void FindNamedFiles(SOptions& options) {
    const auto folders = ContentFolders(options);
    auto& state = options.state;
    if (!state.patch.empty()) state.patch = FindContent(ENamedContent::Patch, state.patch, folders);
    if (!options.patch.empty()) options.patch = FindInspected(options.patch, folders);
    for (auto& routing : state.routings)
        routing.file = FindContent(ENamedContent::Routing, routing.file, folders);
}

/// The effect whose patches and routings have names.
bool IsOwnEffect(const CEffect& effect) {
    return effect.Vendor() == KAV_VENDOR && effect.Name() == KAV_PRODUCT;
}

/// The state of built-in values, where the effect begins with something else; empty where it doesn't.
std::string BuiltInState(const CEffect& effect, const std::optional<SProfile>& profile) {
    if (profile && !profile->state.empty()) return profile->state;
    const auto own = FindProfile(OwnFolder(), effect.UniqueId()); // the user's may lack it
    return own ? own->state : std::string();
}

/// The file of the patch that an effect has begun with, if that is one of the user's; of two files of that
/// name the one that the effect itself reads.
std::filesystem::path UsersFirstPatch(const CEffect& fresh) {
    const auto documents = DocumentsFolder();
    const auto name = PatchNameOf(fresh);
    if (documents.empty() || name.empty()) return {};
    const auto folder = documents / KAV_VENDOR / KAV_PRODUCT;
    for (const char* const ending : {".fxp", ".kvp"}) {
        auto file = folder / PathOf(name + ending);
        std::error_code error;
        if (std::filesystem::is_regular_file(file, error)) return file;
    }
    return {};
}

/// `fresh` has begun as in a DAW, and stays as it is.
CSetup ReadSetup(SStateOptions state, const CEffect& fresh, const std::string& builtInState) {
    if (state.patch == DefaultPatch && !builtInState.empty()) {
        if (auto file = UsersFirstPatch(fresh); !file.empty()) state.patch = std::move(file);
    }
    CSetup setup(state);
    setup.TakeDefaultPatch(fresh);
    return setup;
}

void RunInfo(const SOptions& options, std::ostream& out) {
    const CEffectLibrary library(PluginFile(options));
    CEffect effect(library, UsualStream);
    const auto profile = ProfileFor(effect, options.profile);
    const auto* known = profile ? &*profile : nullptr;
    const auto setup = ReadSetup(options.state, effect, BuiltInState(effect, profile));
    setup.Apply(effect);
    ResolveSettings(options.settings, effect, known);
    std::optional<CStateFile> state;
    RemoveAbandonedBeside(options.savedState);
    if (!options.savedState.empty()) state.emplace(options.savedState, effect);
    effect.PrepareAgain(); // as a host does, which gets the latency with these settings
    effect.Start();        // it need not be known before
    const auto folders = ContentFolders(options);
    (options.isJson ? PrintInfoAsJson : PrintInfo)(
        out, {library.File(), effect, known, setup.Needs(effect), IsOwnEffect(effect) ? &folders : nullptr});
    if (state) state->Commit();
}

enum class EBeginning { BuiltInValues, AsInADaw };

/// `reference`, which may be null, gets the effect with its built-in values.
CSetup SetupFor(const CEffectLibrary& library, const SStateOptions& state,
    std::span<const std::string> settings, const std::filesystem::path& wantedProfile, EBeginning beginning,
    std::shared_ptr<const CReference>* reference = nullptr) {
    CEffect effect(library, UsualStream); // of its own: finding a value may move the parameter about
    const auto profile = ProfileFor(effect, wantedProfile);
    const auto builtIn = BuiltInState(effect, profile);
    auto setup = ReadSetup(state, effect, builtIn);
    if (beginning == EBeginning::BuiltInValues) setup.BeginWith(builtIn);
    if (reference != nullptr) {
        CEffect fresh(library, UsualStream);
        CSetup plain;
        plain.BeginWith(builtIn);
        plain.Apply(fresh);
        *reference = std::make_shared<const CReference>(fresh, profile);
    }
    setup.Apply(effect); // what a parameter displays may depend on the state
    setup.Set(ResolveSettings(settings, effect, profile ? &*profile : nullptr));
    return setup;
}

/// The gains that a search may change, of an effect with this setup.
SMainGains MainGainsFor(const CEffectLibrary& library, const CSetup& setup, const SOptions& options) {
    CEffect effect(library, UsualStream);
    const auto profile = ProfileFor(effect, options.profile);
    const auto* const known = profile ? &*profile : nullptr;
    setup.Apply(effect);
    const auto settings = ResolveSettings(options.settings, effect, known);
    return FindMainGains(effect, known, options.targets, settings);
}

/// A file that fails does not keep the others from being done.
EExitCode RunRender(const SOptions& options, std::ostream& out, std::ostream& errors) {
    const CEffectLibrary library(PluginFile(options));
    auto render = options.render;
    auto setup = SetupFor(library, options.state, options.settings, options.profile,
        EBeginning::BuiltInValues, &render.reference);
    std::optional<SMainGains> gains;
    if (options.targets.AreWanted()) gains = MainGainsFor(library, setup, options);
    CRenderer renderer(library, std::move(setup), render);
    const auto jobs = PlanJobs(options.inputs, options.output, render);
    if (options.output == "-" && Platform::OutputStreamIsTerminal())
        throw CUsageError("-o -: standard output is a terminal; send it to a file or a program");
    CBatchReport report(options.report, jobs.size(), options.output == "-" ? errors : out, errors);
    const auto add = [&](const SOutcome& outcome) { report.Add(outcome); };
    if (!gains) {
        RenderAll(renderer, jobs, options.jobs, CBatchReport::OrderOf(options.report), add);
    } else if (render.isAlbum) {
        try {
            RenderAlbum(renderer, {options.targets, *gains}, jobs, options.jobs, add);
        } catch (const std::exception& error) {
            report.AddUnfinished(jobs, error.what());
            throw;
        }
    } else {
        RenderToTargets(renderer, {options.targets, *gains}, jobs, options.jobs,
            CBatchReport::OrderOf(options.report), add);
    }
    return report.HasFailures() ? EExitCode::Failure : EExitCode::Done;
}

/// Fails before the user has set anything if the files that are written at the end can't be.
void CheckEditOutputs(const SOptions& options) {
    const auto& state = options.savedState;
    if (!options.output.empty()) {
        if (options.output == "-")
            throw CUsageError("--render: standard output is supported by kavhost render alone");
        if (std::filesystem::is_directory(options.output) || !options.output.has_filename())
            throw CUsageError(Utf8(options.output) + ": a folder, not a name for the audio");
        PlanJobs({options.edit.input}, options.output, options.render);
        const CPendingFile trial(options.output);
    } else if (std::error_code error; std::filesystem::equivalent(state, options.edit.input, error)) {
        throw CUsageError(Utf8(state) + ": would replace an input");
    }
    if (state.empty()) return;
    RemoveAbandonedBeside(state);
    const CPendingFile trial(state);
}

EExitCode RunEdit(SOptions options, std::ostream& out, std::ostream& errors) {
    const auto& state = options.savedState;
    if (options.edit.input.empty()) options.edit.input = ChooseAudioFile();
    if (options.edit.input.empty()) return EExitCode::Done; // cancelled
    CheckEditOutputs(options);
    const CEffectLibrary library(PluginFile(options));
    auto render = options.render;
    const auto setup = SetupFor(
        library, options.state, options.settings, options.profile, EBeginning::AsInADaw, &render.reference);
    const auto edited =
        EditFile(library, setup, options.edit, [&](const std::string& note) { PrintError(errors, note); });
    if (!state.empty()) {
        if (edited.state.empty()) throw CFailure(Utf8(state) + ": the effect provides no state");
        CPendingFile file(state);
        file.Stream() << edited.state;
        file.Commit();
    }
    if (!edited.failure.empty()) {
        throw CFailure(
            edited.failure + (state.empty() ? "" : "; " + Utf8(state) + " contains the settings up to then"));
    }
    if (options.output.empty()) return EExitCode::Done;
    render.state.clear();
    render.blockSize = options.edit.blockSize;
    const auto settings = edited.state.empty() ? setup : CSetup::OfState(edited.state, "the effect's state");
    CRenderer renderer(library, settings, render);
    const auto jobs = PlanJobs({options.edit.input}, options.output, render);
    CBatchReport report(EReportForm::Text, jobs.size(), out, errors);
    RenderAll(renderer, jobs, 1, EOrder::OfJobs, [&](const SOutcome& outcome) { report.Add(outcome); });
    return report.HasFailures() ? EExitCode::Failure : EExitCode::Done;
}

/// A menu starts kavhost without a terminal, so a box shows why it failed.
EExitCode RunEditWithBox(SOptions options, std::ostream& out, std::ostream& errors) {
    try {
        return RunEdit(std::move(options), out, errors);
    } catch (const CInterruption&) {
        throw;
    } catch (const std::exception& error) {
        Platform::ShowErrorBox(KAV_PRODUCT, error.what());
        throw;
    }
}

/// The product's editors draw with the processor from now on: a picture that hardware has drawn differs a
/// little from machine to machine, and not every system lets it be read from the window.
void ChooseSoftwareRenderer() noexcept {
    constexpr std::uint32_t software = 0;
    Platform::WriteSetting(Platform::ESettingsRoot::CurrentUser, "Software/" KAV_VENDOR "/" KAV_PRODUCT,
        "GFX", &software, sizeof(software));
}

void RunShot(const SOptions& options, std::ostream& errors) {
    const auto& shot = options.shot;
    if (!EqualIgnoringCase(Utf8(shot.output.extension()), ".png"))
        throw CUsageError(Utf8(shot.output) + ": only .png is supported");
    const CScratchSettings scratch;
    ChooseSoftwareRenderer();
    const CEffectLibrary library(PluginFile(options));
    const auto setup =
        SetupFor(library, options.state, options.settings, options.profile, EBeginning::AsInADaw);
    ShootEditor(library, setup, shot, [&](const std::string& note) { PrintError(errors, note); });
}

void RunInspect(const SOptions& options, std::ostream& out) {
    const auto content = ReadPatch(options.patch);
    std::optional<SProfile> profile;
    if (!options.profile.empty())
        profile = ReadProfile(options.profile);
    else if (content.uniqueId)
        profile = FindProfile(OwnFolder(), *content.uniqueId);
    else if (const auto own = OwnFolder() / PathOf(OwnPlugin + std::string(".json"));
             content.form == "binary" && std::filesystem::exists(own))
        profile = ReadProfile(own); // no other effect has that form
    const auto* const known = profile ? &*profile : nullptr;
    if (options.isJson)
        PrintPatchAsJson(out, content, known);
    else
        PrintPatch(out, content, known, options.showsAll);
}

void RunBench(const SOptions& options, std::ostream& out) {
    const auto& bench = options.bench;
    const CEffectLibrary library(PluginFile(options));
    std::shared_ptr<const CReference> reference;
    const auto setup = SetupFor(
        library, options.state, options.settings, options.profile, EBeginning::BuiltInValues, &reference);
    const auto material = bench.input.empty() ? MakeMaterial(bench) : ReadMaterial(bench);
    CBenchSubject first(library, setup, material, bench.blockSize);

    SBenchReport report{.first = first.Effect().Name(),
        .second = {},
        .rateHz = material.rateHz,
        .channels = material.audio.Channels(),
        .blockSize = bench.blockSize,
        .seconds = static_cast<double>(material.audio.Frames()) / material.rateHz,
        .patch = reference->PatchOf(first.Effect()),
        .settings = reference->Differences(first.Effect()),
        .result = {}};
    if (options.otherPlugin.empty() && options.otherSettings.empty()) {
        report.result = Measure(first, nullptr, bench.runs);
    } else {
        const bool isSame = options.otherPlugin.empty();
        const CEffectLibrary otherLibrary(isSame ? PluginFile(options) : options.otherPlugin);
        const auto otherSetup = SetupFor(otherLibrary, {}, options.otherSettings,
            isSame ? options.profile : std::filesystem::path{}, EBeginning::BuiltInValues);
        CBenchSubject second(otherLibrary, otherSetup, material, bench.blockSize);
        report.second = second.Effect().Name();
        report.result = Measure(first, &second, bench.runs);
    }
    if (options.isJson)
        out << BenchAsJson(report) << "\n";
    else
        PrintBench(out, report);
}

EExitCode PrintChangesAndGetCode(std::ostream& out, const ContentReport& report) {
    PrintChanges(out, report);
    return HasFailed(report) ? EExitCode::Failure : EExitCode::Done;
}

EExitCode Run(const SOptions& options, std::ostream& out, std::ostream& errors) {
    auto code = EExitCode::Done;
    switch (options.command) {
    case ECommand::Print:
        out << options.text;
        break;
    case ECommand::Info:
        RunInfo(options, out);
        break;
    case ECommand::Render:
        code = RunRender(options, out, errors);
        break;
    case ECommand::Edit:
        code = (options.showsErrorBox ? RunEditWithBox : RunEdit)(options, out, errors);
        break;
    case ECommand::Shot:
        RunShot(options, errors);
        break;
    case ECommand::Bench:
        RunBench(options, out);
        break;
    case ECommand::Inspect:
        RunInspect(options, out);
        break;
    case ECommand::InstallContent:
        code = PrintChangesAndGetCode(out, InstallContent(ContentSource(options), DocumentsFolder()));
        break;
    case ECommand::UninstallContent:
        code = PrintChangesAndGetCode(out, UninstallContent(DocumentsFolder()));
        break;
    case ECommand::ListContent:
        PrintContent(out, ListContent(ContentSource(options), DocumentsFolder()), ContentFolders(options));
        break;
    }
    out.flush();
    if (!out) {
        CheckInterrupt(); // which ends a wait for the reader
        throw CFailure("standard output cannot be written");
    }
    return code;
}

EExitCode CodeOfInterruption() noexcept {
    switch (Platform::InterruptKind()) {
    case Platform::EInterrupt::HangUp:
        return EExitCode::HungUp;
    case Platform::EInterrupt::Termination:
        return EExitCode::Terminated;
    case Platform::EInterrupt::ClosedPipe:
        return EExitCode::ClosedPipe;
    default:
        return EExitCode::Interrupted;
    }
}

} // namespace

EExitCode RunKavhost(
    const std::vector<std::string>& arguments, std::ostream& out, std::ostream& errors) noexcept {
    try {
        auto options = ReadOptions(arguments);
        FindNamedFiles(options);
        return Run(options, out, errors);
    } catch (const CUsageError& error) {
        PrintError(errors, error.what());
        return EExitCode::Usage;
    } catch (const CInterruption& interruption) {
        const auto code = CodeOfInterruption();
        if (code != EExitCode::ClosedPipe) PrintError(errors, interruption.what());
        return code;
    } catch (const std::exception& error) { // of ours, of a library, or of an effect that lets one out
        PrintError(errors, error.what());
    } catch (...) {
        PrintError(errors, "an unknown error");
    }
    return EExitCode::Failure;
}

} // namespace KAV::Host
