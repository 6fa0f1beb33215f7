#include "tools/kavhost/console/options.h"

#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/console/man_page.h"
#include "utils/product.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace KAV::Host {

namespace {

constexpr int MostJobs = 256;

constexpr const char* About =
    "Runs audio files through a VST 2 effect, describes the effect, and measures its speed;\n"
    "installs the patches and routings that come with the " KAV_PRODUCT ".";

constexpr const char* Footer = "Examples:\n"
                               "  kavhost info\n"
                               "  kavhost render song.wav -o limited.flac --set \"Threshold (1)=-6 dB\"\n"
                               "  kavhost render *.mp3 -o limited --format 16 --set \"Limiter (1)=on\"\n"
                               "  kavhost edit song.wav --render limited.wav\n"
                               "  kavhost shot -o panel.png\n"
                               "  kavhost bench --vs other.so\n"
                               "  kavhost inspect loud.kvp\n"
                               "  kavhost content install\n"
                               "  kavhost render --help\n"
                               "\n"
                               "Exit codes: 0 success, 1 something failed, 2 wrong usage, 130 interrupted.";

constexpr const char* InfoFooter = "Examples:\n"
                                   "  kavhost info --json\n"
                                   "  kavhost info --patch loud.kvp --save-state loud.state\n"
                                   "  kavhost info --plugin other.so --set 2:-3.0";

constexpr const char* RenderFooter =
    "The output keeps the input's rate and channels. It keeps the sample format if the\n"
    "output's container supports it; otherwise, and for MP3 and other coded inputs, it gets\n"
    "24 bits. OGG is written at quality 8 of 10; the coder's own loss is not in the report.\n"
    "A file appears under its name only when it is complete.\n"
    "\n"
    "Settings are applied in this order: --state, --patch, --routing, --simd, --os, --hq, and\n"
    "then each --set. A state includes the routings of its groups.\n"
    "\n"
    "The report's gain is output RMS divided by input RMS in windows of 10 ms, per channel,\n"
    "where the input is above -60 dBFS. The real-time factor is the seconds of audio per\n"
    "second that the effect ran; with --jobs the files share the processor.\n"
    "\n"
    "The picture shows the waveform of input and output, their short-term loudness and\n"
    "peaks, and the gain reduction: the gain above, compared with the effect's gain for\n"
    "noise below -60 dBFS, which it has no reason to limit. A file and its picture are\n"
    "written together or not at all.\n"
    "\n"
    "Examples:\n"
    "  kavhost render song.wav -o limited.flac --set \"Threshold (1)=-6 dB\"\n"
    "  kavhost render *.mp3 -o limited --format 16 --set \"Limiter (1)=on\"\n"
    "  kavhost render *.wav -o limited --jobs 4 --plot limited\n"
    "  kavhost render song.wav -o out.wav --patch loud.kvp --os 4 --hq on\n"
    "  kavhost render film.wav -o out.wav --routing surround.kvt --save-state film.state\n"
    "  kavhost render film2.wav -o out2.wav --state film.state --simd on\n"
    "  kavhost render song.wav -o out.wav --plugin other.so --set 0=0.75 --set 2:-3.0";

constexpr const char* EditFooter =
    "The file plays through the effect while you set it by ear. Below the editor are the\n"
    "position, which can be clicked and dragged, and the time. Keys: space plays and pauses,\n"
    "Left and Right go 5 seconds back and on, Home goes to the beginning, L loops the file,\n"
    "Escape ends.\n"
    "\n"
    "The sound goes to PipeWire, JACK, PulseAudio or ALSA, whichever there is; without any\n"
    "of them the file plays silently. When the window is closed, --save-state and --render\n"
    "write what you have set; each file is written whole or not at all.\n"
    "\n"
    "Examples:\n"
    "  kavhost edit song.wav --save-state song.state\n"
    "  kavhost edit song.mp3 --patch loud.kvp --render limited.flac\n"
    "  kavhost edit film.wav --state film.state --save-state film.state --render out.wav";

constexpr const char* ShotFooter =
    "The editor opens in a window of its own on the display that DISPLAY names. Without one\n"
    "kavhost starts Xvfb, a display without a screen, and ends it afterwards.\n"
    "\n"
    "With IN, that file plays silently through the effect, in real time, and the picture\n"
    "shows the editor at the end of the stretch. Without it the picture is taken when the\n"
    "editor stands still.\n"
    "\n"
    "Examples:\n"
    "  kavhost shot -o panel.png\n"
    "  kavhost shot song.wav -o busy.png --patch loud.kvp --start 30 --seconds 5\n"
    "  kavhost shot -o large.png --state film.state --width 1508";

constexpr const char* InspectFooter =
    "A patch stores each value as the effect does. With a profile, the quantity that the\n"
    "value stands for is shown instead.\n"
    "\n"
    "Examples:\n"
    "  kavhost inspect loud.kvp\n"
    "  kavhost inspect --json film.state";

constexpr const char* BenchFooter =
    "The time is the CPU time of this thread, as the median over the runs. With --vs the\n"
    "runs of the two effects alternate; with --set2 alone the effect is measured against\n"
    "itself. Unless a file is given, the sound is music-like with a peak of -3 dBFS, and the\n"
    "same every time.\n"
    "\n"
    "Examples:\n"
    "  kavhost bench --set \"Oversampling=x4\"\n"
    "  kavhost bench --os 4 --simd on --vs other.so\n"
    "  kavhost bench --vs other.so --set2 3=0.5 --channels 1 --block 64\n"
    "  kavhost bench --set 100=1 --set2 100=0";

constexpr const char* ContentFooter =
    "Patches go to \"" KAV_VENDOR "/" KAV_PRODUCT "\", routings to \"" KAV_VENDOR "/Routings\". Files\n"
    "of your own, and files that you have changed, are neither overwritten nor removed.\n"
    "\n"
    "Examples:\n"
    "  kavhost content install\n"
    "  kavhost content uninstall";

constexpr const char* SetHelp = "NAME=QUANTITY with a name from the profile, such as\n"
                                "\"Release (1)=100 ms\"; INDEX=VALUE with a value from 0 to 1;\n"
                                "or INDEX:TEXT with the text that the effect's own display\n"
                                "should show. May be repeated.";

/// Texts as the parser keeps them; paths become such only later, for it knows no UTF-8.
struct STexts {
    std::string plugin;
    std::string profile;
    std::vector<std::string> inputs;
    std::string output;
    std::string format;
    std::string otherPlugin;
    std::string editInput;
    std::string device;
    std::string shotInput;
    std::string benchInput;
    std::string content;
    std::string state;
    std::string patch;
    std::string routing;
    std::string simd;
    std::string oversampling;
    std::string highQuality;
    std::string savedState;
    std::string inspected;
    std::string plot;
    std::string plotData;
    std::string report;
    bool noDither = false;
    bool noPreroll = false;
    bool align = false;
    bool noAlign = false;
};

void AddProfile(CLI::App& command, STexts& texts) {
    command
        .add_option("--profile", texts.profile,
            "Names and ranges of the effect's parameters; by default the\n"
            "*.json next to kavhost that has the effect's unique id")
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

void AddStateOptions(CLI::App& command, STexts& texts) {
    command.add_option("--state", texts.state, "The effect's whole state, as written by --save-state")
        ->type_name("FILE");
    command.add_option("--patch", texts.patch, "A patch: .kvp, or .fxp with one program")->type_name("FILE");
    command
        .add_option("--routing", texts.routing,
            "The channels of group 1: .kvt. Without this and --state all\n"
            "channels of a file with more than two are in group 1")
        ->type_name("FILE");
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
    AddSaveState(command, texts, "Write the effect's whole state to this file");
    command.add_flag("--json", options.isJson, "Print JSON, for programs");
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
    command.add_option("-j,--jobs", options.jobs, "Files rendered at a time")
        ->check(CLI::Range(1, MostJobs).description(""))
        ->type_name("1.." + std::to_string(MostJobs))
        ->capture_default_str();
    auto* const json = command.add_flag("--json", options.isJson, "Short for --report json");
    AddChoice(command, "--report", texts.report, {"text", "json"}, "Report for people, or for programs")
        .excludes(json);
}

void AddFormat(CLI::App& command, STexts& texts) {
    command
        .add_option("--format", texts.format, "Sample format of the output: 8, 16, 24, 32, float or double")
        ->type_name("FORMAT");
    command.add_flag("--no-dither", texts.noDither, "Round whole-number formats without dither");
}

void AddRender(CLI::App& app, SOptions& options, STexts& texts) {
    auto& command = *app.add_subcommand("render", "Run audio files through the effect.");
    command.footer(RenderFooter);
    command.add_option("IN", texts.inputs, "Audio files")->required();
    command
        .add_option("-o,--output", texts.output,
            "The output: .wav, .flac, .aif, .aiff or .ogg; a folder,\n"
            "created if missing, for several inputs")
        ->required()
        ->type_name("OUT|DIR");
    AddEffectOptions(command, options, texts);
    AddSaveState(command, texts, "Write the effect's whole state, as at the beginning of the file");
    AddBlock(command, options.render.blockSize);
    AddFormat(command, texts);
    command.add_flag("--no-preroll", texts.noPreroll,
        "Start at once; by default the effect's gains first settle\n"
        "on silence");
    auto* const align = command.add_flag("--align", texts.align,
        "Remove the effect's delay, as measured, so that the output\n"
        "lines up with the input (the default)");
    command.add_flag("--no-align", texts.noAlign, "Keep the effect's delay")->excludes(align);
    AddRenderOutputs(command, options, texts);
}

void AddWidth(CLI::App& command, SOptions& options) {
    command.add_option("--width", options.state.width, "Width of the editor in pixels; the height follows")
        ->check(CLI::Range(1, 16384).description(""))
        ->type_name("1..16384");
}

void AddEdit(CLI::App& app, SOptions& options, STexts& texts) {
    auto& command =
        *app.add_subcommand("edit", "Open the effect's editor while a file plays through it (Linux).");
    command.footer(EditFooter);
    command.add_option("IN", texts.editInput, "An audio file")->required()->type_name("");
    AddEffectOptions(command, options, texts);
    AddSaveState(command, texts, "Write the effect's whole state when the window is closed");
    command
        .add_option("--render", texts.output,
            "Render the whole file then, as kavhost render does: .wav, .flac,\n"
            ".aif, .aiff or .ogg")
        ->type_name("OUT");
    AddWidth(command, options);
    AddChoice(command, "--device", texts.device, {"default", "none"},
        "Where the sound goes: to the desktop's device, or nowhere");
    AddBlock(command, options.edit.blockSize);
    AddFormat(command, texts);
}

void AddShot(CLI::App& app, SOptions& options, STexts& texts) {
    auto& command = *app.add_subcommand("shot", "Write a picture of the effect's editor (Linux).");
    auto& shot = options.shot;
    command.footer(ShotFooter);
    auto* const input =
        command.add_option("IN", texts.shotInput, "An audio file that plays before")->type_name("");
    command.add_option("-o,--output", texts.output, "The picture, .png")->required()->type_name("OUT");
    AddEffectOptions(command, options, texts);
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
    auto& command = *app.add_subcommand("inspect", "Show the content of a patch; no effect is loaded.");
    command.footer(InspectFooter);
    command.add_option("FILE", texts.inspected, "A patch, .kvp or .fxp, or a state")
        ->required()
        ->type_name("");
    AddProfile(command, texts);
    command.add_flag("--json", options.isJson, "Print JSON, for programs");
}

void AddBench(CLI::App& app, SOptions& options, STexts& texts) {
    auto& command = *app.add_subcommand("bench", "Measure how much time the effect takes.");
    auto& bench = options.bench;
    command.footer(BenchFooter);
    AddEffectOptions(command, options, texts);
    command.add_option("--vs", texts.otherPlugin, "Another effect to measure against")->type_name("FILE");
    command.add_option("--set2", options.otherSettings, "A setting of the other effect, in a form of --set")
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
    auto& command =
        *app.add_subcommand("content", "Install, remove or list the factory patches and routings.");
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

void TakeStateTexts(SOptions& options, const STexts& texts) {
    options.state.state = PathOf(texts.state);
    options.state.patch = PathOf(texts.patch);
    options.state.routing = PathOf(texts.routing);
    if (!texts.simd.empty()) options.state.simd = texts.simd == "on";
    options.savedState = options.render.state = PathOf(texts.savedState);
    std::vector<std::string> first; // settings are applied in this order
    if (!texts.oversampling.empty()) first.push_back("Oversampling=x" + texts.oversampling);
    if (!texts.highQuality.empty()) first.push_back("Hiqh Quality=" + texts.highQuality);
    options.settings.insert(options.settings.begin(), first.begin(), first.end());
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
    for (const auto& input : texts.inputs) options.inputs.push_back(PathOf(input));
    options.render.dithers = !texts.noDither;
    options.render.settles = !texts.noPreroll;
    options.render.aligns = !texts.noAlign;
    options.render.plot = PathOf(texts.plot);
    options.render.plotData = PathOf(texts.plotData);
    if (texts.report == "json") options.isJson = true;
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
    app.footer(Footer);
    app.allow_windows_style_options(false); // a path may begin with a slash there, too
    app.set_version_flag("--version", "kavhost " KAV_VERSION);
    app.require_subcommand(1);
    AddInfo(app, options, texts);
    AddRender(app, options, texts);
    AddEdit(app, options, texts);
    AddShot(app, options, texts);
    AddBench(app, options, texts);
    AddInspect(app, options, texts);
    AddContent(app, texts);
}

} // namespace

SOptions ReadOptions(std::vector<std::string> arguments) {
    SOptions options;
    STexts texts;
    CLI::App app(About, "kavhost");
    Build(app, options, texts);
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

} // namespace KAV::Host
