#include "tools/kavhost/console/options.h"

#include "platform/command_line.h"
#include "tools/kavhost/audio/speaker_layout.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/base/wildcards.h"
#include "tools/kavhost/console/command_words.h"
#include "tools/kavhost/console/help_formatter.h"
#include "tools/kavhost/console/help_texts.h"
#include "tools/kavhost/console/man_page.h"
#include "tools/kavhost/console/shell_completion.h"
#include "utils/product.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <utility>

namespace KAV::Host {

namespace {

constexpr int MostJobs = 256;

/// Texts as the parser keeps them; paths become such only later, for it knows no UTF-8.
struct STexts {
    std::string plugin;
    std::string profile;
    std::vector<std::string> inputs;
    std::string output;
    std::string format;
    std::string layout;
    std::string otherPlugin;
    std::string editInput;
    std::string device;
    std::string shotInput;
    std::string benchInput;
    std::string content;
    std::string state;
    std::string patch;
    std::vector<std::string> routings;
    std::string parallel;
    std::string channels;
    std::string simd;
    std::string oversampling;
    std::string highQuality;
    std::string savedState;
    std::string inspected;
    std::vector<std::string> helpFor;
    std::string plot;
    std::string plotData;
    std::string report;
    std::string extension;
    bool noDither = false;
    bool noPreroll = false;
    bool align = false;
    bool noAlign = false;
    bool noMeasure = false;
    std::string loudness;
    std::string truePeak;
    std::string mostReduction;
};

void AddProfile(CLI::App& command, STexts& texts) {
    command
        .add_option("--profile", texts.profile,
            "Names and ranges of the effect's parameters; by default the\n"
            "*.json next to kavhost with the effect's unique id")
        ->type_name("FILE");
}

CLI::Option& AddChoice(CLI::App& command, const char* name, std::string& text,
    const std::vector<std::string>& choices, const char* help) {
    std::string type;
    for (const auto& choice : choices) type += (type.empty() ? "" : "|") + choice;
    auto& option = *command.add_option(name, text, help);
    option.check(CLI::IsMember(choices).description(""))->type_name(type);
    return option;
}

/// What groups take, and how they are connected.
void AddGroups(CLI::App& command, STexts& texts) {
    command
        .add_option("--routing", texts.routings,
            "The routing of group 1: a .kvt file, or a name; N:FILE for\n"
            "group N, all:FILE for all groups. May be repeated. Without this\n"
            "and --state, group 1 has all channels of a file with more than two")
        ->type_name("[N:|all:]FILE|NAME")
        ->allow_extra_args(false);
    AddChoice(command, "--parallel", texts.parallel, {"on", "off"}, "Groups in parallel, or in series");
}

/// bench has an option of that name for how many there are.
void AddAllChannels(CLI::App& command, STexts& texts) {
    AddChoice(command, "--channels", texts.channels, {"all"},
        "Put all channels into group 1, even those that the patch\n"
        "leaves out");
}

void AddStateOptions(CLI::App& command, STexts& texts) {
    command.add_option("--state", texts.state, "The effect's whole state, as written by --save-state")
        ->type_name("FILE");
    command
        .add_option("--patch", texts.patch,
            "A patch: a .kvp, or an .fxp with one program; or the name of a\n"
            "patch, yours or the factory's (kavhost info lists them);\n"
            "\"default\" is the first of your own, with which the effect\n"
            "starts in a DAW")
        ->type_name("FILE|NAME");
    AddGroups(command, texts);
    AddChoice(command, "--simd", texts.simd, {"on", "off"}, "The effect's vector code");
    AddChoice(command, "--os", texts.oversampling, {"1", "2", "4", "8"},
        "Oversampling factor; short for --set \"Oversampling=x4\" and so on");
    AddChoice(command, "--hq", texts.highQuality, {"on", "off"}, "Short for --set \"Hiqh Quality=on\"");
}

void AddSaveState(CLI::App& command, STexts& texts, const char* help) {
    command.add_option("--save-state", texts.savedState, help)->type_name("FILE");
}

void AddEffectOptions(CLI::App& command, SOptions& options, STexts& texts) {
    command.add_option("-p,--plugin", texts.plugin, "The effect's library; the " KAV_PRODUCT " by default")
        ->type_name("FILE");
    AddProfile(command, texts);
    AddStateOptions(command, texts);
    command.add_option("-s,--set", options.settings, SetHelp)->type_name("SETTING")->allow_extra_args(false);
}

void AddBlock(CLI::App& command, std::int32_t& blockSize) {
    command.add_option("--block", blockSize, "Frames per call of the effect")
        ->check(CLI::Range(1, 1 << 16).description(""))
        ->type_name("1..65536")
        ->capture_default_str();
}

void AddInfo(CLI::App& app, SOptions& options, STexts& texts) {
    auto& command = *app.add_subcommand("info", "Describe the effect and list its parameters.");
    command.footer(InfoFooter);
    AddEffectOptions(command, options, texts);
    AddAllChannels(command, texts);
    AddSaveState(command, texts, "Write the effect's whole state to this file");
    command.add_flag("--json", options.isJson, "Print JSON, for programs");
}

void AddReport(CLI::App& command, SOptions& options, STexts& texts) {
    auto* const json = command.add_flag("--json", options.isJson, "Short for --report json");
    AddChoice(command, "--report", texts.report, {"text", "json", "jsonl"},
        "Report for people, or for programs: one JSON array, or an\n"
        "object per line, each as soon as its file is finished")
        .excludes(json);
}

/// Where render's audio goes in folders and on standard output.
void AddOutputNames(CLI::App& command, SOptions& options, STexts& texts) {
    command
        .add_option("--ext", texts.extension,
            "Container of the outputs in a folder or on standard output:\n"
            "wav, flac, aif, aiff or ogg; by default the input's, or wav")
        ->type_name("EXT");
    command.add_flag(
        "-n,--no-clobber", options.render.keepsExisting, "Replace no file: skip inputs whose outputs exist");
}

/// What render writes in addition to the audio.
void AddRenderOutputs(CLI::App& command, SOptions& options, STexts& texts) {
    command
        .add_option("--plot", texts.plot,
            "Write a picture of what the effect did, as .png; a folder\n"
            "for several inputs")
        ->type_name("OUT|DIR");
    command
        .add_option("--plot-data", texts.plotData,
            "Write the numbers of the picture, as .csv or .json; a folder,\n"
            "for .csv, for several inputs")
        ->type_name("OUT|DIR");
    command.add_option("-j,--jobs", options.jobs, "Number of files to render at a time")
        ->check(CLI::Range(1, MostJobs).description(""))
        ->type_name("1.." + std::to_string(MostJobs))
        ->capture_default_str();
    AddReport(command, options, texts);
}

void AddFormat(CLI::App& command, STexts& texts) {
    command
        .add_option("--format", texts.format, "Sample format of the output: 8, 16, 24, 32, float or double")
        ->type_name("FORMAT");
    command.add_flag("--no-dither", texts.noDither, "Round whole-number formats without dither");
}

void AddMeasuring(CLI::App& command, STexts& texts) {
    command
        .add_flag("--no-measure", texts.noMeasure,
            "Measure no levels, loudness or gain: the report is shorter, and\n"
            "the job takes less time")
        ->excludes(command.get_option("--plot"))
        ->excludes(command.get_option("--plot-data"));
}

/// The search for a loudness or a true peak.
void AddTarget(CLI::App& command, SOptions& options, STexts& texts) {
    auto* const loudness = command.add_option("--loudness", texts.loudness,
        "Search for the main input gain with which the output has this\n"
        "loudness, such as -14, within 0.1 LU");
    auto* const truePeak = command.add_option("--true-peak", texts.truePeak,
        "Lower the main output gain where necessary to keep the true\n"
        "peak below this, such as -1; with --loudness the input gain\n"
        "makes up for it");
    loudness->type_name("LUFS")->excludes(command.get_option("--no-measure"));
    truePeak->type_name("DBTP")->excludes(command.get_option("--no-measure"));
    command
        .add_option("--max-reduction", texts.mostReduction,
            "Fail if the limiter would reduce the gain by more than this")
        ->type_name("DB")
        ->needs(loudness);
    command.add_flag("--nearest", options.targets.takesNearest,
        "Write the nearest possible result instead of failing if the\n"
        "targets are out of reach");
    command.add_flag(
        "--album", options.render.isAlbum, "Treat all inputs as one programme, with the same gains");
    command.add_flag("--dual-mono", options.render.isDualMono,
        "Count the single channel of a mono file as two, which adds 3 LU");
}

void AddLayout(CLI::App& command, STexts& texts) {
    command
        .add_option("--layout", texts.layout,
            "The speakers of the channels: a name, such as 5.1(side), 7.1 or\n"
            "FL+FR+LFE, or a mask, such as 0x60f. By default as in the input")
        ->type_name("NAME|MASK");
}

void AddRender(CLI::App& app, SOptions& options, STexts& texts) {
    auto& command = *app.add_subcommand("render", "Run audio files through the effect.");
    command.footer(RenderFooter);
    command.add_option("IN", texts.inputs, "Audio files; - is standard input")->required();
    command
        .add_option("-o,--output", texts.output,
            "The output: .wav, .flac, .aif, .aiff or .ogg; or a folder, if\n"
            "there are several inputs, if a folder of that name exists, or\n"
            "if the name ends in / (created if missing); - is standard\n"
            "output, and the report is then written to standard error")
        ->required()
        ->type_name("OUT|DIR");
    AddOutputNames(command, options, texts);
    AddEffectOptions(command, options, texts);
    AddAllChannels(command, texts);
    AddSaveState(command, texts, "Write the effect's whole state, as at the beginning of the file");
    AddBlock(command, options.render.blockSize);
    AddFormat(command, texts);
    AddLayout(command, texts);
    command.add_flag("--no-preroll", texts.noPreroll,
        "Start at once; by default the effect first runs on silence\n"
        "until its gains have settled");
    auto* const align = command.add_flag("--align", texts.align,
        "Remove the effect's delay, as measured, so that the output\n"
        "lines up with the input (the default)");
    command.add_flag("--no-align", texts.noAlign, "Keep the effect's delay")->excludes(align);
    command.add_flag(
        "--strict", options.render.isStrict, "Fail, and write nothing, if there is a serious note");
    AddRenderOutputs(command, options, texts);
    AddMeasuring(command, texts);
    AddTarget(command, options, texts);
}

void AddWidth(CLI::App& command, SOptions& options) {
    command.add_option("--width", options.state.width, "Width of the editor in pixels; the height follows")
        ->check(CLI::Range(1, 16384).description(""))
        ->type_name("1..16384");
}

void AddEdit(CLI::App& app, SOptions& options, STexts& texts) {
    auto& command = *app.add_subcommand("edit", "Open the effect's editor while a file plays through it.");
    command.footer(EditFooter);
    command.add_option("IN", texts.editInput, "An audio file; without it a dialog asks for one")
        ->type_name("");
    AddEffectOptions(command, options, texts);
    AddAllChannels(command, texts);
    AddSaveState(command, texts, "Write the effect's whole state when the window is closed");
    command
        .add_option("--render", texts.output,
            "Then render the whole file, as kavhost render does, to .wav,\n"
            ".flac, .aif, .aiff or .ogg")
        ->type_name("OUT");
    AddWidth(command, options);
    AddChoice(command, "--device", texts.device, {"default", "none"},
        "Play the sound on the default device, or not at all");
    command.add_flag(
        "--error-box", options.showsErrorBox, "Show an error in a box as well, for a start from a menu");
    AddBlock(command, options.edit.blockSize);
    AddFormat(command, texts);
    AddLayout(command, texts);
}

void AddShot(CLI::App& app, SOptions& options, STexts& texts) {
    auto& command = *app.add_subcommand("shot", "Write a picture of the effect's editor.");
    auto& shot = options.shot;
    command.footer(ShotFooter);
    auto* const input =
        command.add_option("IN", texts.shotInput, "An audio file to play before the picture is taken")
            ->type_name("");
    command.add_option("-o,--output", texts.output, "The picture, .png")->required()->type_name("OUT");
    AddEffectOptions(command, options, texts);
    AddAllChannels(command, texts);
    AddWidth(command, options);
    command.add_option("--start", shot.start, "Where in the file to start")
        ->check(CLI::Range(0.0, 1e6).description(""))
        ->type_name("S")
        ->capture_default_str()
        ->needs(input);
    command.add_option("--seconds", shot.seconds, "How much of the file plays")
        ->check(CLI::Range(0.0, 3600.0).description(""))
        ->type_name("S")
        ->capture_default_str()
        ->needs(input);
    AddBlock(command, shot.blockSize);
}

void AddInspect(CLI::App& app, SOptions& options, STexts& texts) {
    auto& command =
        *app.add_subcommand("inspect", "Show the content of a patch or routing; no effect is loaded.");
    command.footer(InspectFooter);
    command
        .add_option("FILE", texts.inspected,
            "A patch, a state or a routing, whatever the file is called;\n"
            "or the name of a patch or routing")
        ->required()
        ->type_name("");
    AddProfile(command, texts);
    command.add_flag("--all", options.showsAll, "Also show what is as in a new instance");
    command.add_flag("--json", options.isJson, "Print JSON, for programs");
}

void AddBench(CLI::App& app, SOptions& options, STexts& texts) {
    auto& command = *app.add_subcommand("bench", "Measure how much time the effect takes.");
    auto& bench = options.bench;
    command.footer(BenchFooter);
    AddEffectOptions(command, options, texts);
    command.add_option("--vs", texts.otherPlugin, "Another effect to compare with")->type_name("FILE");
    command
        .add_option("--set2", options.otherSettings, "A setting of the other effect, in the form of --set")
        ->type_name("SETTING")
        ->allow_extra_args(false);
    auto* const input =
        command.add_option("--input", texts.benchInput, "Audio to measure with")->type_name("FILE");
    command.add_option("--rate", bench.rateHz, "Sample rate in Hz")
        ->check(CLI::Range(1000, 1'000'000).description(""))
        ->type_name("HZ")
        ->capture_default_str()
        ->excludes(input);
    command.add_option("--channels", bench.channels, "Channels")
        ->check(CLI::Range(1, MostRenderChannels).description(""))
        ->type_name("1..16")
        ->capture_default_str()
        ->excludes(input);
    AddBlock(command, bench.blockSize);
    command.add_option("--gain", bench.gainDb, "Make the sound louder, or softer")
        ->check(CLI::Range(-200.0, 60.0).description(""))
        ->type_name("DB")
        ->capture_default_str();
    command.add_option("--seconds", bench.seconds, "Audio per run, from the start of a file")
        ->check(CLI::Range(0.01, 3600.0).description(""))
        ->type_name("S")
        ->capture_default_str();
    command.add_option("--runs", bench.runs, "Number of runs")
        ->check(CLI::Range(1, 10000).description(""))
        ->type_name("N")
        ->capture_default_str();
    command.add_flag("--json", options.isJson, "Print JSON, for programs");
}

void AddContent(CLI::App& app, STexts& texts) {
    auto& command = *app.add_subcommand(
        "content", "Install, remove or list the factory patches, routings and the user guide.");
    command.footer(ContentFooter);
    command.require_subcommand(1);
    const auto add = [&](const char* name, const char* help) { return command.add_subcommand(name, help); };
    for (auto* const action : {add("install", "Copy them into your documents folder"),
             add("list", "List them, and which of them are installed")}) {
        action
            ->add_option("--from", texts.content,
                "Folder with Patches and Routings; by default content, next to kavhost")
            ->type_name("FOLDER");
    }
    add("uninstall", "Remove those that were installed and have not been changed");
}

void AddHelp(CLI::App& app, STexts& texts) {
    auto& help = *app.add_subcommand("help", "Print help for kavhost or for a command.");
    help.footer(""); // otherwise that of the program
    help.add_option("COMMAND", texts.helpFor, "The command")->type_name("");
    app.add_subcommand("version", "Print the version.")->footer("");
}

void TakeStateTexts(SOptions& options, const STexts& texts) {
    options.state.state = PathOf(texts.state);
    options.state.patch = PathOf(texts.patch);
    for (const auto& routing : texts.routings) options.state.routings.push_back(ReadRoutingOption(routing));
    if (!texts.parallel.empty()) options.state.parallel = texts.parallel == "on";
    options.state.allChannels = texts.channels == "all";
    if (!texts.simd.empty()) options.state.simd = texts.simd == "on";
    if (texts.savedState == "-") throw CUsageError("--save-state: standard output holds no state");
    options.savedState = options.render.state = PathOf(texts.savedState);
    std::vector<std::string> first; // settings are applied in this order
    if (!texts.oversampling.empty()) first.push_back("Oversampling=x" + texts.oversampling);
    if (!texts.highQuality.empty()) first.push_back("Hiqh Quality=" + texts.highQuality);
    options.settings.insert(options.settings.begin(), first.begin(), first.end());
}

/// A number within limits, with or without its unit.
std::optional<double> TargetOf(
    const char* option, const std::string& text, const char* unit, double least, double most) {
    if (text.empty()) return {};
    const auto number = ReadNumber(Trim(text));
    const bool isNumber = number && (number->unit.empty() || EqualIgnoringCase(number->unit, unit));
    if (isNumber && number->value >= least && number->value <= most) return number->value;
    throw CUsageError(std::string(option) + ": \"" + text + "\" is not accepted, only " + Shortest(least) +
                      " to " + Shortest(most) + " " + unit);
}

void TakeTargets(SOptions& options, const STexts& texts) {
    auto& targets = options.targets;
    targets.loudnessLufs = TargetOf("--loudness", texts.loudness, "LUFS", -60, 0);
    targets.truePeakDbtp = TargetOf("--true-peak", texts.truePeak, "dBTP", -40, 6);
    targets.mostReductionDb = TargetOf("--max-reduction", texts.mostReduction, "dB", 0, 100);
    if (targets.AreWanted()) return;
    for (const auto& [isGiven, option] :
        {std::pair{targets.takesNearest, "--nearest"}, std::pair{options.render.isAlbum, "--album"}}) {
        if (isGiven) throw CUsageError(std::string(option) + " needs --loudness or --true-peak");
    }
}

void TakeReport(SOptions& options, const STexts& texts) {
    if (texts.report == "jsonl") options.report = EReportForm::JsonLines;
    if (texts.report == "json" || options.isJson) options.report = EReportForm::Json;
}

void TakeLayout(SOptions& options, const std::string& text) {
    if (text.empty()) return;
    const auto mask = MaskOf(text);
    if (!mask) {
        throw CUsageError("--layout: \"" + text + "\" is neither a mask, such as 0x60f, nor one of " +
                          LayoutNames() + ", nor speakers, such as FL+FR+LFE");
    }
    options.render.layout = SLayoutChoice{*mask, IsMaskNumber(Trim(text)) ? "" : text};
}

/// Where the system's shells leave wildcards to the programs, they are expanded here.
std::vector<std::filesystem::path> InputsOf(const std::vector<std::string>& texts) {
    std::vector<std::filesystem::path> inputs;
    for (const auto& text : texts) {
        if (Platform::ShellExpandsWildcards()) {
            inputs.push_back(PathOf(text));
        } else {
            std::ranges::move(ExpandWildcards(PathOf(text)), std::back_inserter(inputs));
        }
    }
    return inputs;
}

void TakeTexts(SOptions& options, const STexts& texts) {
    options.plugin = PathOf(texts.plugin);
    options.profile = PathOf(texts.profile);
    options.output = PathOf(texts.output);
    options.patch = PathOf(texts.inspected);
    options.otherPlugin = PathOf(texts.otherPlugin);
    options.edit.input = PathOf(texts.editInput);
    options.edit.usesDevice = texts.device != "none";
    options.shot.input = PathOf(texts.shotInput);
    options.shot.output = options.output;
    options.bench.input = PathOf(texts.benchInput);
    options.content = PathOf(texts.content);
    TakeStateTexts(options, texts);
    options.inputs = InputsOf(texts.inputs);
    options.render.dithers = !texts.noDither;
    options.render.settles = !texts.noPreroll;
    options.render.aligns = !texts.noAlign;
    options.render.measures = !texts.noMeasure;
    TakeTargets(options, texts);
    options.render.plot = PathOf(texts.plot);
    options.render.plotData = PathOf(texts.plotData);
    TakeReport(options, texts);
    options.render.extension = texts.extension;
    TakeLayout(options, texts.layout);
    if (texts.format.empty()) return;
    options.render.samples = FormatOf(texts.format);
    if (!options.render.samples) {
        throw CUsageError("--format: \"" + texts.format + "\" is not one of 8, 16, 24, 32, float, double");
    }
}

ECommand CommandOf(const CLI::App& app) {
    if (app.got_subcommand("info")) return ECommand::Info;
    if (app.got_subcommand("render")) return ECommand::Render;
    if (app.got_subcommand("edit")) return ECommand::Edit;
    if (app.got_subcommand("shot")) return ECommand::Shot;
    if (app.got_subcommand("bench")) return ECommand::Bench;
    if (app.got_subcommand("inspect")) return ECommand::Inspect;
    const auto& content = *app.get_subcommand("content");
    if (content.got_subcommand("install")) return ECommand::InstallContent;
    return content.got_subcommand("list") ? ECommand::ListContent : ECommand::UninstallContent;
}

/// The parser that splits the program's arguments into `options` and `texts`.
void Build(CLI::App& app, SOptions& options, STexts& texts) {
    app.formatter(std::make_shared<CHelpFormatter>()); // which those of its commands take over
    app.footer(Footer);
    app.allow_windows_style_options(false); // a path may begin with a slash there, too
    app.set_version_flag("--version", std::string("kavhost ").append(Utils::ProductVersionUtf8));
    app.require_subcommand(1);
    AddInfo(app, options, texts);
    AddRender(app, options, texts);
    AddEdit(app, options, texts);
    AddShot(app, options, texts);
    AddBench(app, options, texts);
    AddInspect(app, options, texts);
    AddContent(app, texts);
    AddHelp(app, texts);
}

} // namespace

SOptions ReadOptions(std::vector<std::string> arguments) {
    SOptions options;
    STexts texts;
    CLI::App app(About, "kavhost");
    Build(app, options, texts);
    if (arguments.empty()) throw CUsageError("no command; see kavhost --help");
    CheckCommands(app, arguments);
    ReplaceMinusSigns(app, arguments);
    std::ranges::reverse(arguments); // the parser starts at the end
    try {
        app.parse(std::move(arguments));
    } catch (const CLI::CallForVersion&) {
        options.text = app.version() + "\n";
        return options;
    } catch (const CLI::Success&) {
        options.text = app.help();
        return options;
    } catch (const CLI::Error& error) {
        throw CUsageError(std::string(error.what()) + "; see kavhost --help");
    }
    if (app.got_subcommand("help")) {
        options.text = HelpFor(app, texts.helpFor);
        return options;
    }
    if (app.got_subcommand("version")) {
        options.text = app.version() + "\n";
        return options;
    }
    TakeTexts(options, texts);
    options.command = CommandOf(app);
    return options;
}

std::string ManPage() {
    SOptions options;
    STexts texts;
    CLI::App app(About, "kavhost");
    Build(app, options, texts);
    return ManPageOf(app);
}

std::string ShellCompletion(EShell shell) {
    SOptions options;
    STexts texts;
    CLI::App app(About, "kavhost");
    Build(app, options, texts);
    return shell == EShell::Bash ? BashCompletionOf(app) : ZshCompletionOf(app);
}

} // namespace KAV::Host
