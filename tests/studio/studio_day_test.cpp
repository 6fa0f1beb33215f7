// A day in a studio, in an hour of machine: many instances in one process, their editors opened and closed
// and used under audio, everything chosen by one number. What is heard is compared with the same calls made
// on instances that have no editor.
//
//   KAV_LONG=1       the whole length instead of a short piece of it
//   KAV_SECONDS=300  another length
//   KAV_SEED=1234    the number; otherwise a new one for the whole length, and the same one for the short
//   piece

#include "gui/settings.h"
#include "tests/studio/studio_audio.h"
#include "tests/studio/studio_user.h"
#include "tests/support/dialog_script.h"
#include "tests/support/own_settings.h"
#include "tests/support/process_memory.h"
#include "tests/support/state_fixture.h"
#include "tests/support/watched_system.h"
#include "utils/turn.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <malloc.h>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <utility>

namespace KAV::Tests {

namespace {

#if defined(KAV_SANITIZED)
constexpr bool CanMeasure = false;
constexpr double LongestTake = 0.3; // seconds; all takes ten times as long
constexpr std::size_t LeastRounds = 10;
#else
constexpr bool CanMeasure = true;
constexpr double LongestTake = 6.0;
constexpr std::size_t LeastRounds = 40; // however slow the machine is
#endif

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using EKind = SStudioCall::EKind;

constexpr std::size_t Mega = 1'000'000;
/// What may be on the heap at the end and wasn't after the first tenth: patches in the histories, which have
/// no end, of instances that happen to be older.
constexpr std::size_t HistorySlack = 48 * Mega;
/// The heap keeps a part for each of up to 8 threads a processor, as large as an editor once needed there.
constexpr std::size_t HeapSlack = 128 * Mega;
constexpr double LongEnough = 600.0; // seconds, to judge a machine and its heap

double Length() {
    if (const char* const seconds = std::getenv("KAV_SECONDS")) return std::atof(seconds);
    return std::getenv("KAV_LONG") != nullptr ? KAV_STUDIO_SECONDS : 20;
}

std::uint32_t Seed() {
    if (const char* const seed = std::getenv("KAV_SEED"))
        return static_cast<std::uint32_t>(std::strtoul(seed, nullptr, 10));
    return std::getenv("KAV_LONG") != nullptr ? std::random_device()() : 20261123;
}

/// A user who answers each question for a file at once: with one of the patches that there are, or with one
/// of a few names to save under.
class CPromptUser final : public Utils::IDialogs {
public:
    explicit CPromptUser(const CUserDocuments& documents) : _documents(documents) { Utils::UseDialogs(this); }
    ~CPromptUser() { Utils::UseDialogs(nullptr); }
    CPromptUser(const CPromptUser&) = delete;
    CPromptUser& operator=(const CPromptUser&) = delete;

    void OpenFile(const Utils::SFileQuestion&, Utils::PathAnswer answered) noexcept override {
        answered(Utils::FromSystemPath(_documents.Patch("Drums - Punch.kvp")));
    }
    void SaveFile(const Utils::SFileQuestion& question, Utils::PathAnswer answered) noexcept override {
        const auto name = "Day " + std::to_string(++_count % 4);
        const bool isRouting = question.filter.find(u"kvt") != std::u16string::npos;
        answered(Utils::FromSystemPath(
            isRouting ? _documents.Routing(name + ".kvt") : _documents.Patch(name + ".kvp")));
    }
    void ShowError(std::u16string_view, std::u16string_view) noexcept override { ++errors; }
    bool ErrorsWait() const noexcept override { return false; }

    std::atomic<int> errors = 0;

private:
    const CUserDocuments& _documents;
    std::atomic<int> _count = 0;
};

class StudioDay : public testing::Test {
protected:
    static constexpr std::size_t NoDesk = ~std::size_t{0};
    static constexpr std::int32_t DeskWidth = 770;
    static constexpr std::int32_t DeskHeight = 570;

    struct SInstance {
        CPresentLoop loop; // of its editor
        std::unique_ptr<CHostedEffect> effect;
        SSoundingState known;
        std::size_t desk = NoDesk; // where its editor is open
        bool isFollowed = false;   // its editor has drawn since the last change
        std::size_t channels = 2;
        std::size_t frames = 1024;
        float rateHz = 44100.0f;
        float level = 1.0f;
    };
    struct SMemory {
        std::size_t resident = 0;
        std::size_t committed = 0;
        std::size_t allocated = 0;
    };

    std::uint32_t seed = Seed();
    std::mt19937 random{seed};
    CXTestHost windows{CXTestHost::SOptions{.screen = "1760x1300x24", .width = 1560, .height = 1160}};
    CDialogScripts scripts; // after the display, whose server is one of the user's programs
    CUserDocuments documents;
    CPromptUser prompt{documents};
    COwnSettings settings;
    CRecordingHost host;
    std::atomic<int> edits = 0; // that the host has heard of
    std::array<SInstance, StudioInstances> instances;
    std::array<CStudioUser::SDesk, 4> desks;
    CStudioUser user{windows, random, [this] { Settle(); }};
    std::map<std::string, std::size_t> calls; // of the host
    std::size_t opened = 0;                   // editors
    std::size_t refused = 0;                  // of these, by a display that was too busy
    std::size_t changes = 0;                  // of an instance, by its user
    std::size_t rounds = 0;
    std::size_t missed = 0;
    double soundSeconds = 0.0;
    double cpuSeconds = 0.0;

    void SetUp() override {
        std::printf("seed %u, %.0f s\n", seed, Length());
        std::fflush(stdout); // the number is needed most when this process crashes
        const fs::path content = KAV_CONTENT_DIR;
        fs::create_directories(documents.Patch("").parent_path().parent_path());
        fs::copy(content / "Patches", documents.Patch("").parent_path());
        fs::copy(content / "Routings", documents.Routing("").parent_path());
        host.record = false;
        host.answer = [this](VST::AEffect*, std::int32_t opcode, std::int32_t, void*, float) {
            if (opcode == VST::audioMasterBeginEdit) ++edits;
            return std::intptr_t{0};
        };
        for (std::size_t n = 0; n < desks.size(); ++n) {
            auto& desk = desks[n];
            desk.x = static_cast<std::int32_t>(n % 2) * DeskWidth;
            desk.y = static_cast<std::int32_t>(n / 2) * DeskHeight;
            desk.window = windows.MakeWindow(windows.Parent(), desk.x, desk.y, DeskWidth, DeskHeight);
            windows.Show(desk.window, true);
        }
    }
    void TearDown() override {
        for (auto& instance : instances) instance.effect.reset();
    }

    int Below(int end) { return static_cast<int>(random() % static_cast<unsigned>(end)); }
    std::size_t AnyOf(std::size_t count) { return static_cast<std::size_t>(Below(static_cast<int>(count))); }
    template<typename T, std::size_t COUNT>
    T OneOf(const std::array<T, COUNT>& values) {
        return values[AnyOf(COUNT)];
    }

    // The editors

    /// Returns when every editor has handled all that the user has done so far, and what came of it.
    void Settle() {
        for (int again = 0; again < 2; ++again) {
            windows.Sync(); // the server has made events of it
            windows.Sync(); // and has sent them
            for (auto& instance : instances) {
                // The events come before the work of the round that handles them, which may be the next one.
                for (int round = 0; round < 3; ++round) instance.loop.Run([] {});
            }
        }
    }
    void Open(std::size_t number, std::size_t desk) {
        auto& instance = instances.at(number);
        const bool opensGl = KAV_STUDIO_OPENGL != 0 && opened % 3 == 2;
        GUI::StoreNumber(u"GFX", opensGl ? 1 : 0);
        VST::ERect* size = nullptr;
        instance.effect->Dispatch(VST::effEditGetRect, 0, 0, &size);
        ++opened;
        const auto parent = reinterpret_cast<void*>(static_cast<std::uintptr_t>(desks.at(desk).window));
        if (instance.effect->Dispatch(VST::effEditOpen, 0, 0, parent) == 1) {
            instance.desk = desk;
        } else {
            ++refused; // the display hasn't answered for two seconds
        }
    }
    void Close(SInstance& instance) {
        if (instance.desk == NoDesk) return;
        instance.effect->Dispatch(VST::effEditClose);
        instance.desk = NoDesk;
    }
    /// Opens the editor of an instance at a desk, instead of the one that is open there. While sound
    /// runs, an instance whose editor has nothing to follow.
    void Reopen(std::size_t desk, bool isSounding) {
        const auto number = AnyOf(instances.size());
        const bool opens = Below(5) > 0;
        for (auto& instance : instances) {
            if (instance.desk == desk) Close(instance);
        }
        Close(instances[number]);
        if (opens && (!isSounding || instances[number].isFollowed)) Open(number, desk);
    }
    /// The instance whose editor is open at a desk; null: none.
    SInstance* At(std::size_t desk) {
        for (auto& instance : instances) {
            if (instance.desk == desk) return &instance;
        }
        return nullptr;
    }

    // What changes between two stretches of sound

    /// Adds what the editors have changed.
    void RecordEdits(SStudioRound& round) {
        for (std::size_t n = 0; n < instances.size(); ++n) RecordEdits(round, n);
    }
    void RecordEdits(SStudioRound& round, std::size_t number) {
        auto& known = instances.at(number).known;
        auto now = SoundingStateOf(instances[number].effect->Device());
        if (now == known) return;
        ++changes;
        instances[number].isFollowed = false;
        for (auto& edit : Edits(number, known, now)) round.calls.push_back(std::move(edit));
        round.states[number] = known = std::move(now);
    }
    /// In one turn: the editor follows some calls with changes of its own, which are edits.
    void Call(SStudioRound& round, SStudioCall call) {
        auto& instance = instances.at(call.instance);
        const Utils::CTurn turn(instance.effect->Device().State().Turns());
        RecordEdits(round, call.instance);
        Make(call, *instance.effect);
        round.states[call.instance] = instance.known = SoundingStateOf(instance.effect->Device());
        instance.isFollowed = false;
        round.calls.push_back(std::move(call));
    }
    /// An editor follows a group's button, which the host or a patch may press, when it next draws, and so
    /// may one that opens. Waits until all that are open have done so.
    void AwaitStill(SStudioRound& round) {
        constexpr std::chrono::milliseconds severalFrames{50};
        for (auto before = ~std::size_t{0}; before != changes;) {
            before = changes;
            std::this_thread::sleep_for(severalFrames);
            Settle();
            RecordEdits(round);
        }
        for (auto& instance : instances) instance.isFollowed |= instance.desk != NoDesk;
    }
    void Create(SStudioRound& round, std::size_t number) {
        auto& instance = instances.at(number);
        Close(instance);
        instance.effect = std::make_unique<CHostedEffect>(
            host.Callback(), Utils::SMakerService{}, std::make_unique<CWatchedSystem>(instance.loop));
        round.calls.push_back({.kind = EKind::New, .instance = number});
        // The user may have saved another patch as the one that new instances start with.
        instance.known = {};
        RecordEdits(round, number);
        // Once the largest of all: what only grows has grown.
        Call(round, {.kind = EKind::Rate, .instance = number, .value = 192000.0f});
        Call(round, {.kind = EKind::Size, .instance = number, .index = 2048});
        instance.rateHz = 192000.0f;
        instance.frames = 2048;
        instance.channels = 2;
        instance.level = 1.0f;
    }
    void CallAny(SStudioRound& round) {
        const auto number = AnyOf(instances.size());
        auto& instance = instances[number];
        switch (Below(12)) {
        case 0:
        case 1: {
            ++calls["chunks"];
            const auto& from = instances[Below(2) == 0 ? number : AnyOf(instances.size())];
            const bool isPreset = Below(3) == 0;
            Call(round, {.kind = isPreset ? EKind::Preset : EKind::Chunk,
                            .instance = number,
                            .text = ChunkOf(*from.effect, isPreset)});
            break;
        }
        case 2:
            ++calls["program names"];
            Call(round,
                {.kind = EKind::ProgramName, .instance = number, .text = "Day " + std::to_string(Below(10))});
            break;
        case 3:
            ++calls["channels"];
            instance.channels = Below(3) > 0 ? 2 : 1 + AnyOf(DeviceChannels);
            Call(round, {.kind = EKind::Channels, .instance = number, .index = instance.channels});
            break;
        case 4:
            ++calls["rates"];
            instance.rateHz = OneOf(std::array{
                44100.0f, 44100.0f, 48000.0f, 48000.0f, 48000.0f, 88200.0f, 96000.0f, 176400.0f, 192000.0f});
            Call(round, {.kind = EKind::Rate, .instance = number, .value = instance.rateHz});
            break;
        case 5:
        case 6:
            ++calls["block sizes"];
            instance.frames =
                OneOf(std::array<std::size_t, 10>{16, 64, 100, 128, 256, 441, 512, 1000, 1024, 2048});
            Call(round, {.kind = EKind::Size, .instance = number, .index = instance.frames});
            break;
        case 7:
            ++calls["pauses of the music"];
            instance.level = OneOf(std::array{0.0f, 0.0f, 0.1f, 0.7f, 2.0f});
            break;
        default: {
            ++calls["parameters"];
            const auto index = AnyOf(HostParameters);
            const bool isOversampling = HostParamTable()[index] == 30; // up to eight times the work
            const int most = isOversampling && Below(3) > 0 ? 1 : 17;
            Call(round, {.kind = EKind::Parameter,
                            .instance = number,
                            .index = index,
                            .value = static_cast<float>(Below(most)) / 16.0f});
        }
        }
    }
    static std::string ChunkOf(CHostedEffect& effect, bool isPreset) {
        void* data = nullptr;
        const auto size = effect.Dispatch(VST::effGetChunk, isPreset ? 1 : 0, 0, &data);
        return {static_cast<const char*>(data), static_cast<std::size_t>(size)};
    }

    std::string LastGestures() const {
        std::string text;
        for (const auto& gesture : user.latest) text += gesture + "\n";
        return text;
    }

    // A round

    void ActAny(SStudioRound& round) {
        const int what = Below(20);
        if (what < 2) {
            Reopen(AnyOf(desks.size()), false);
        } else if (what < 8) {
            CallAny(round);
        } else if (const auto desk = AnyOf(desks.size()); At(desk) != nullptr) {
            user.Edit(desks[desk]);
            RecordEdits(round);
        }
    }
    void ChooseTakes(SStudioRound& round) {
        for (std::size_t n = 0; n < instances.size(); ++n) {
            const auto& instance = instances[n];
            auto& take = round.takes[n];
            take = {.channels = instance.channels,
                .frames = instance.frames,
                .start = AnyOf(1 << 16),
                .level = instance.level,
                .rateHz = instance.rateHz};
            if (Below(8) == 0) take.frames = 1 + AnyOf(2 * instance.frames); // hosts keep to no size
            // The more costly the setting, the less of it.
            const double factor = std::exp2(
                static_cast<float>(std::int32_t{instance.effect->Device().parameters.oversampling}));
            const double rate = static_cast<double>(take.rateHz);
            const double cost = static_cast<double>(take.channels) * factor * rate / 96000.0;
            const double seconds = std::clamp(2.0 * LongestTake / cost, 0.05, LongestTake);
            take.blocks = std::max<std::size_t>(1, static_cast<std::size_t>(seconds * rate) / take.frames);
            soundSeconds += take.Seconds();
        }
    }
    /// What goes on while sound runs, and changes no value.
    void LookAround() {
        for (int n = 1 + Below(4); n > 0; --n) {
            const auto desk = AnyOf(desks.size());
            auto* const instance = At(desk);
            switch (Below(6)) {
            case 0:
                Reopen(desk, true);
                break;
            case 1:
                windows.Show(desks[desk].window, false);
                windows.Show(desks[desk].window, true);
                break;
            case 2: {
                auto& any = *instances[AnyOf(instances.size())].effect;
                ChunkOf(any, Below(2) == 0);
                for (std::int32_t index = 0; index < HostParameters; ++index) any.Display(index);
                any.Text(VST::effGetProgramName, 0, 24);
                break;
            }
            default:
                if (instance != nullptr) user.Look(desks[desk]);
            }
            Idle();
        }
    }
    void Idle() {
        for (auto& instance : instances) {
            if (instance.desk == NoDesk) continue;
            instance.effect->Dispatch(VST::effEditIdle);
            VST::ERect* size = nullptr;
            instance.effect->Dispatch(VST::effEditGetRect, 0, 0, &size);
        }
    }
    void PlayRound(CStudioAudio& audio, CStudioReplay& replay) {
        const auto round = std::make_shared<SStudioRound>();
        round->number = rounds++;
        // A choice that depends on what the editors have done changes no later round.
        random.seed(seed + static_cast<std::uint32_t>(round->number) * 2654435761u);
        if (round->number == 0) {
            for (std::size_t n = 0; n < instances.size(); ++n) Create(*round, n);
        } else if (Below(6) == 0) {
            // So often that few instances get old: their history has no end.
            ++calls["new instances"];
            Create(*round, AnyOf(instances.size()));
        }
        for (std::size_t desk = 0; desk < desks.size(); ++desk) {
            if (Below(2) == 0 && At(desk) == nullptr) Reopen(desk, false);
        }
        for (int n = 2 + Below(5); n > 0; --n) ActAny(*round);
        Idle(); // sizes that chunks have brought
        AwaitStill(*round);
        ChooseTakes(*round);
        audio.Begin(*round);
        LookAround();
        audio.AwaitEnd();
        for (std::size_t n = 0; n < instances.size(); ++n) {
            const auto now = SoundingStateOf(instances[n].effect->Device());
            ASSERT_TRUE(now == instances[n].known)
                << "a fault of this test: changed while sound ran, seed " << seed << ", round "
                << round->number << ", instance " << n << ": " << Difference(now, instances[n].known)
                << "; the editor is at desk " << static_cast<int>(instances[n].desk)
                << ", the last gestures:\n"
                << LastGestures();
            const auto& sound = round->sounds[n];
            ASSERT_TRUE(sound.isFinite)
                << "seed " << seed << ", round " << round->number << ", instance " << n;
            missed += sound.missed.size();
            cpuSeconds += sound.cpuSeconds;
        }
        replay.Add(round);
        ASSERT_FALSE(replay.HasFailed());
    }
    SMemory Measure(CStudioReplay& replay) {
        replay.Catch();
        for (auto& instance : instances) Close(instance);
        malloc_trim(0); // what is free but kept isn't counted
        const SMemory now{ResidentBytes(), CommittedBytes(), mallinfo2().uordblks};
        const auto mega = [](std::size_t bytes) { return static_cast<double>(bytes) / 1e6; };
        std::printf("after %zu rounds: %.1f MB in RAM, %.1f committed, %.1f allocated\n", rounds,
            mega(now.resident), mega(now.committed), mega(now.allocated));
        std::fflush(stdout);
        return now;
    }
    void Print(const CStudioReplay& replay) const {
        std::printf("seed %u: %zu instances, %zu rounds, %.2f h of sound in all\n", seed, instances.size(),
            rounds, soundSeconds / 3600.0);
        std::printf("%zu editors opened, %zu of them in vain, %zu changes by their users, %d edits that the "
                    "host heard of, %d errors "
                    "shown\n",
            opened, refused, changes, edits.load(), prompt.errors.load());
        for (const auto& counts : {user.done, calls}) {
            for (const auto& [name, count] : counts) std::printf("  %s %zu\n", name.c_str(), count);
        }
        std::printf("load of a thread: %.2f %%, and without editors %.2f %%\n",
            100.0 * cpuSeconds / soundSeconds, 100.0 * replay.cpuSeconds / soundSeconds);
        std::printf("missed blocks: %zu, and without editors %zu; %zu and %zu by one of both alone\n", missed,
            replay.missed, replay.missedByEditorsAlone, replay.missedByReplayAlone);
    }
};

} // namespace

TEST_F(StudioDay, SoundsAsTheSameCallsWithoutEditors) {
    CStudioAudio audio([this](std::size_t n) -> CHostedEffect& { return *instances.at(n).effect; });
    CStudioReplay replay([this] { return std::make_unique<CHostedEffect>(host.Callback()); });
    const auto begin = Clock::now();
    const auto passed = [&] { return std::chrono::duration<double>(Clock::now() - begin).count(); };
    std::vector<SMemory> memory; // after each tenth
    for (std::size_t tenth = 1; tenth <= 10; ++tenth) {
        const auto isShort = [&] {
            return passed() < Length() * static_cast<double>(tenth) / 10.0 ||
                   rounds < LeastRounds * tenth / 10;
        };
        while (isShort() && !HasFatalFailure()) PlayRound(audio, replay);
        memory.push_back(Measure(replay));
    }
    replay.Finish();
    for (const auto& difference : replay.differences) ADD_FAILURE() << "seed " << seed << ", " << difference;
    Print(replay);
    EXPECT_GT(opened, 2 * refused);
    EXPECT_GT(changes, 0u) << "the users have changed nothing";
    if (Length() < LongEnough || !CanMeasure) return;
    // A block is missed when the machine takes the processor away from it, which hits either side at random:
    // the difference of two such counts has the root of their sum as its standard deviation.
    const auto alone = [](std::size_t count) { return static_cast<double>(count); };
    const double ours = alone(replay.missedByEditorsAlone);
    const double theirs = alone(replay.missedByReplayAlone);
    EXPECT_LE(ours, theirs + 5.0 * std::sqrt(ours + theirs + 1.0));
    const auto& early = memory.front();
    const auto& late = memory.back();
    EXPECT_LE(late.allocated, early.allocated + HistorySlack);
    EXPECT_LE(late.resident, early.resident + HistorySlack);
    EXPECT_LE(late.committed, early.committed + HeapSlack);
}

} // namespace KAV::Tests
