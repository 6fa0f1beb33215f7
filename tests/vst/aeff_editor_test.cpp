// Which of the host's calls reach an editor, tested with an effect that has only an editor.

#include "tests/support/recording_host.h"
#include "vst/audio_effect_x.h"

#include <climits>
#include <gtest/gtest.h>
#include <limits>

using namespace KAV;
using namespace KAV::Tests;
using namespace KAV::VST;

namespace {

/// Records its calls, and answers as the test says.
class CRecordingEditor final : public AEffEditor {
public:
    explicit CRecordingEditor(std::vector<std::string>& calls, const bool& answer)
        : _calls(calls), _answer(answer) {}

    bool hasWindow() const noexcept override { return true; }
    bool getRect(ERect**) override { return Note("rect"); }
    bool open(void*) override { return Note("open"); }
    void close() override { Note("close"); }
    void idle() override { Note("idle"); }
    bool onKeyDown(const VstKeyCode& key) override { return Note("down" + Text(key)); }
    bool onKeyUp(const VstKeyCode& key) override { return Note("up" + Text(key)); }
    bool onWheel(float) override { return Note("wheel"); }
    bool setKnobMode(std::int32_t mode) override { return Note("knobs " + std::to_string(mode)); }

private:
    static std::string Text(const VstKeyCode& key) {
        return " " + std::to_string(key.character) + " " + std::to_string(key.virt) + " " +
               std::to_string(key.modifier);
    }
    bool Note(const std::string& call) {
        _calls.push_back(call);
        return _answer;
    }

    std::vector<std::string>& _calls;
    const bool& _answer;
};

class CBareEffect final : public AudioEffectX {
public:
    explicit CBareEffect(HostCallback callback) : AudioEffectX(callback, 0, 0, 0, 0, 0, 0) {}
    void Take(std::unique_ptr<AEffEditor> editor) { setEditor(std::move(editor)); }

private:
    void processReplacing(float**, float**, std::int32_t) noexcept override {}
    void setParameter(std::int32_t, float) override {}
    float getParameter(std::int32_t) override { return 0.0f; }
    void getParameterLabel(std::int32_t, char*) override {}
    void getParameterDisplay(std::int32_t, char*) override {}
    void getParameterName(std::int32_t, char*) override {}
    std::int32_t getProgram() override { return 0; }
    void setProgramName(const char*) override {}
    void getProgramName(char*) override {}
    void getProgramNameIndexed(std::int32_t, char*) override {}
    std::int32_t getChunk(void**, bool) override { return 0; }
    std::int32_t setChunk(const void*, std::size_t, bool) override { return 0; }
    bool setSpeakerArrangement(const VstSpeakerArrangement*, const VstSpeakerArrangement*) override {
        return false;
    }
    bool getSpeakerArrangement(VstSpeakerArrangement**, VstSpeakerArrangement**) override { return false; }
    void getEffectName(char*) override {}
    void getVendorString(char*) override {}
    std::int32_t getPlugCategory() override { return 0; }
};

class Editor : public testing::Test {
protected:
    CRecordingHost host;
    std::vector<std::string> calls;
    bool answer = false;
    CBareEffect* effect = new CBareEffect(host.Callback()); // owned by its record

    ~Editor() override { Dispatch(effClose); }
    void TakeEditor() { effect->Take(std::make_unique<CRecordingEditor>(calls, answer)); }
    std::intptr_t Dispatch(
        std::int32_t opcode, std::int32_t index = 0, std::intptr_t value = 0, float option = 0.0f) {
        AEffect* const record = effect->Record();
        return record->dispatcher(record, opcode, index, value, nullptr, option);
    }
    /// What one call asked of the editor.
    std::string Asked(
        std::int32_t opcode, std::int32_t index = 0, std::intptr_t value = 0, float option = 0.0f) {
        calls.clear();
        Dispatch(opcode, index, value, option);
        std::string all;
        for (const auto& call : calls) all += all.empty() ? call : "; " + call;
        return all;
    }
};

/// An editor with only the required operations.
class CPlainEditor final : public AEffEditor {
public:
    bool hasWindow() const noexcept override { return true; }
    bool getRect(ERect**) override { return true; }
    bool open(void*) override { return true; }
    void close() override {}
};

} // namespace

TEST_F(Editor, GetsEveryIdleCallAndAnswersZero) {
    TakeEditor();
    answer = true;
    EXPECT_EQ(Asked(effEditIdle), "idle");
    EXPECT_EQ(Asked(effEditIdle, 3, 4, 5.0f), "idle");
    EXPECT_EQ(Dispatch(effEditIdle), 0);
}

TEST_F(Editor, GetsKeysAsCharacterKeyAndModifiers) {
    TakeEditor();
    EXPECT_EQ(Asked(effEditKeyDown, 'a', 0, 1.0f), "down 97 0 1");
    EXPECT_EQ(Asked(effEditKeyUp, 0, 4, 8.0f), "up 0 4 8");
    EXPECT_EQ(Asked(effEditKeyDown, 0x1F600, 255, 15.0f), "down 128512 255 15");
}

TEST_F(Editor, GetsNoModifiersForAnOptionThatIsNone) {
    TakeEditor();
    for (const float option : {-1.0f, 256.0f, 1e30f, std::numeric_limits<float>::quiet_NaN(),
             -std::numeric_limits<float>::infinity()}) {
        EXPECT_EQ(Asked(effEditKeyDown, 'a', 0, option), "down 97 0 0") << option;
    }
}

TEST_F(Editor, GetsTheKnobMode) {
    TakeEditor();
    EXPECT_EQ(Asked(effSetEditKnobMode, 0, 2), "knobs 2");
    EXPECT_EQ(Asked(effSetEditKnobMode, 1, 0), "knobs 0");
}

TEST_F(Editor, SaysWhetherItHasMadeUseOfAKeyOrAKnobMode) {
    TakeEditor();
    for (const bool used : {true, false}) {
        answer = used;
        for (const std::int32_t opcode : {effEditKeyDown, effEditKeyUp, effSetEditKnobMode})
            EXPECT_EQ(Dispatch(opcode, 'a'), used ? 1 : 0) << opcode;
    }
}

TEST_F(Editor, ThatIsMissingAnswersZero) {
    for (const std::int32_t opcode : {effEditIdle, effEditKeyDown, effEditKeyUp, effSetEditKnobMode})
        EXPECT_EQ(Dispatch(opcode, 'a', 1, 1.0f), 0) << opcode;
}

TEST_F(Editor, MakesNoUseOfKeysTheWheelOrKnobModesUnlessItSaysSo) {
    CPlainEditor plain;
    EXPECT_FALSE(plain.isOpen());
    EXPECT_FALSE(plain.onKeyDown({'a', 0, 0}));
    EXPECT_FALSE(plain.onKeyUp({'a', 0, 0}));
    EXPECT_FALSE(plain.onWheel(1.0f));
    EXPECT_FALSE(plain.setKnobMode(1));
    effect->Take(std::make_unique<CPlainEditor>());
    for (const std::int32_t opcode : {effEditIdle, effEditKeyDown, effEditKeyUp, effSetEditKnobMode})
        EXPECT_EQ(Dispatch(opcode, 'a', 1, 1.0f), 0) << opcode;
}

TEST_F(Editor, AsksTheHostForAnotherSizeAndHearsWhetherItGotIt) {
    host.calls.clear();
    EXPECT_FALSE(effect->sizeWindow(800, 586));
    host.answer = [](AEffect*, std::int32_t opcode, std::int32_t, void*, float) -> std::intptr_t {
        return opcode == audioMasterSizeWindow ? 1 : 0;
    };
    EXPECT_TRUE(effect->sizeWindow(500, 366));
    host.answer = nullptr;
    ASSERT_EQ(host.calls.size(), 2u);
    EXPECT_EQ(host.calls[0].opcode, 15);
    EXPECT_EQ(host.calls[0].effect, effect->Record());
    EXPECT_EQ(host.calls[0].index, 800);
    EXPECT_EQ(host.calls[0].value, 586);
    EXPECT_EQ(host.calls[1].index, 500);
    EXPECT_EQ(host.calls[1].value, 366);
}

TEST_F(Editor, GetsNoSizeWithoutAHost) {
    auto* const alone = new CBareEffect(nullptr);
    EXPECT_FALSE(alone->sizeWindow(800, 586));
    AEffect* const record = alone->Record();
    record->dispatcher(record, effClose, 0, 0, nullptr, 0.0f);
}
