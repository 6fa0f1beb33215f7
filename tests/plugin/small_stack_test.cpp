// A host's threads may have small stacks. Nothing that a host hands over, however long or deeply nested, may
// take more stack than a plain call does: there is no recursion that input decides the depth of.

#include "tests/support/state_fixture.h"

#include <array>
#include <cstddef>
#include <pthread.h>

namespace KAV::Tests {

namespace {

/// A host with a small stack; everything happens on it.
class SmallStack : public testing::Test {
protected:
    static constexpr std::size_t Bytes = 128u << 10;
    static constexpr int Many = 200'000;

    CUserDocuments documents;
    CAnsweringDialogs dialogs;
    CRecordingHost host;
    std::unique_ptr<CHostedEffect> effect;

    void SetUp() override { host.record = false; }

    /// Runs a host's thread to its end. A stack that is used up ends the process.
    static void Run(std::function<void()> work) {
        pthread_attr_t attributes;
        ASSERT_EQ(pthread_attr_init(&attributes), 0);
        ASSERT_EQ(pthread_attr_setstacksize(&attributes, Bytes), 0);
        pthread_t thread{};
        const auto run = [](void* given) -> void* {
            (*static_cast<std::function<void()>*>(given))();
            return nullptr;
        };
        ASSERT_EQ(pthread_create(&thread, &attributes, run, &work), 0);
        EXPECT_EQ(pthread_join(thread, nullptr), 0);
        pthread_attr_destroy(&attributes);
    }
    void Create() { effect = std::make_unique<CHostedEffect>(host.Callback()); }
    bool SetChunk(const std::string& lines) {
        auto chunk = "<patch_format>textual</patch_format>\r\n" + lines;
        return effect->Dispatch(
                   VST::effSetChunk, 0, static_cast<std::intptr_t>(chunk.size() + 1), chunk.data()) == 1;
    }
    static std::string Repeated(std::string_view piece, int count) {
        std::string text;
        text.reserve(piece.size() * static_cast<std::size_t>(count));
        for (int n = 0; n < count; ++n) text += piece;
        return text;
    }
};

} // namespace

TEST_F(SmallStack, IsEnoughForTheWholeLifeOfAnInstance) {
    Run([this] {
        Create();
        effect->Dispatch(VST::effOpen);
        EXPECT_TRUE(effect->SetChannels(16, 16));
        effect->Dispatch(VST::effSetSampleRate, 0, 0, nullptr, 192000.0f);
        effect->Dispatch(VST::effSetBlockSize, 0, 8192);
        effect->Dispatch(VST::effMainsChanged, 0, 1);
        effect->Set(100, 1.0f); // the highest oversampling
        std::vector<std::vector<float>> sound(16, std::vector<float>(8192, 2.0f));
        effect->Process(sound);
        EXPECT_NE(sound[0].back(), 2.0f);
        void* chunk = nullptr;
        const auto size = effect->Dispatch(VST::effGetChunk, 0, 0, &chunk);
        EXPECT_GT(size, 0);
        EXPECT_EQ(effect->Dispatch(VST::effSetChunk, 0, size, chunk), 1);
        effect.reset();
    });
}

TEST_F(SmallStack, IsEnoughForStatesOfAnyDepth) {
    Run([this] {
        Create();
        for (const std::string_view piece :
            {"<", "<fx>", "<macro group=\"0\">", "<fx group=\"0\"><kav_input_routing>", "<patch_name>",
                "<![CDATA[", "&amp;", "|*|", "33;1||", "\r\n", "<param tag=\"24\" >0.5</param>\r\n"}) {
            EXPECT_TRUE(SetChunk(Repeated(piece, Many)));
        }
        EXPECT_TRUE(SetChunk("<patch_name>" + Repeated("a_", Many) + "</patch_name>"));
        EXPECT_EQ(effect->Text(VST::effGetProgramName, 0, 24).size(), 23u);
        effect.reset();
    });
}

/// Each macro moves itself and all others, from each of its places.
TEST_F(SmallStack, IsEnoughForMacrosThatAllMoveEachOther) {
    Run([this] {
        Create();
        auto& device = effect->Device();
        for (std::size_t macro = 0; macro < CMacro::Macros; ++macro) {
            for (std::size_t slot = 0; slot < CMacro::Slots; ++slot) {
                device.tags[macro][slot] = 24 + static_cast<std::int32_t>((macro + slot) % CMacro::Macros);
                device.sensitivities[macro][slot] = 1.0f;
            }
        }
        for (std::int32_t tag = 24; tag < 29; ++tag) {
            for (const float value : {0.0f, 1.0f, 0.75f}) {
                device.SetParam(tag, value, 0);
                EXPECT_EQ(device.GetParam(tag, 0), value);
            }
        }
        effect.reset();
    });
}

TEST_F(SmallStack, IsEnoughForNamesOfPatchesOfAnyDepth) {
    for (int n = 0; n < 100; ++n) {
        const auto file = documents.Patch(Repeated("a - b_", 30) + std::to_string(n) + ".kvp");
        std::filesystem::create_directories(file.parent_path());
        WriteText(file, "<patch_format>textual</patch_format>\r\n" + Repeated("<fx>", 1000));
    }
    auto folder = documents.Patch("");
    for (int depth = 0; depth < 1000; ++depth) { // names so short that the path stays usable
        folder /= "d";
        std::error_code error;
        if (!std::filesystem::create_directory(folder, error)) break;
    }
    Run([this] {
        Create();
        EXPECT_EQ(PatchNames().size(), 100u);
        for (std::size_t n = 0; n < 200; ++n)
            effect->Device().State().SelectPatch(static_cast<std::int32_t>(n % 100), true);
        effect.reset();
    });
}

} // namespace KAV::Tests
