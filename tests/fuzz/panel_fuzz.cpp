// The whole panel under a user who does anything, a host that does anything meanwhile, and any bytes as the
// user's patches and routings: chosen from the lists, by wheel, buttons and menus, loaded, saved, copied and
// taken back.

#include "device/parameter_table.h"
#include "device/value_flags.h"
#include "tests/device_gui/open_panel.h"
#include "tests/support/abort_on_failure.h"
#include "tests/support/random_user.h"

#include <set>
#include <thread>

using namespace KAV;
using namespace KAV::Tests;

namespace {

class CAnyPanel final : public OpenPanel {
public:
    explicit CAnyPanel(std::span<const std::uint8_t> bytes) : _chance(bytes) {
        pictures.largestSide = SmallSide;
        for (auto files = _chance.Below(4); files > 0; --files) WriteFile();
        host.answer = [this](auto*, std::int32_t opcode, auto...) { return Hear(opcode); };
        SetUp();
    }
    ~CAnyPanel() override { TearDown(); }

    void TestBody() override {
        while (!_chance.IsOver()) {
            Step();
            ExpectThatItMakesSense();
            ForgetTheRecords();
        }
        ExpectThatEditsEnd();
        ExpectThatNoTurnIsHeld();
    }

private:
    static constexpr std::int32_t SmallSide = 64; // pixels; no picture is cut into more frames in a row

    void Step() {
        CRandomUser user(_chance, robot, window, Gui());
        switch (_chance.Below(16)) {
        case 0:
            return user.UseTheKeyboard();
        case 1:
        case 2:
            return user.UseTheMenu();
        case 3:
        case 4:
            return user.Wait();
        case 5:
        case 6:
            return HaveTheHostAct();
        case 7:
            return WriteFile();
        case 8:
            return AnswerQuestions();
        default:
            return user.UseTheMouse();
        }
    }

    // Files

    static constexpr std::array<const char*, 6> Names{
        "a", "b", "USER_c", "- Full Reset -", "Default", "x||y"};

    /// Bytes of the fuzzer, or a text of the product's own with some of them inside.
    std::string AnyContent() {
        if (_chance.OneIn(2)) return _chance.AnyText(400);
        auto text = _chance.OneIn(4) ? Gui().GetRouting(static_cast<int>(_chance.Below(4)))
                                     : Device().State().PatchText(_chance.Below(256));
        const auto from = _chance.Below(static_cast<std::uint32_t>(text.size() + 1));
        return text.replace(from, _chance.Below(64), _chance.AnyText(64));
    }
    void WriteFile() {
        constexpr std::array<const char*, 3> Extensions{".kvp", ".kvt", ".fxp"};
        std::string name = _chance.OneOf(Names);
        name += _chance.OneOf(Extensions);
        WriteText(_chance.OneIn(4) ? documents.Routing(name) : documents.Patch(name), AnyContent());
    }
    std::u16string AnyPath() {
        const std::string name = _chance.OneOf(Names);
        if (_chance.OneIn(4)) return Utils::FromSystemPath(documents.Routing(name + ".kvt"));
        return Utils::FromSystemPath(documents.Patch(name + (_chance.OneIn(4) ? ".fxp" : ".kvp")));
    }
    void AnswerQuestions() {
        dialogs.answersLater = _chance.OneIn(3);
        dialogs.answer = _chance.OneIn(3) ? u"" : AnyPath();
        if (!dialogs.waiting.empty()) dialogs.AnswerNext(dialogs.answer);
    }

    // The host

    /// In the middle of a call to it the host may call back.
    std::intptr_t Hear(std::int32_t opcode) {
        if (opcode == VST::audioMasterBeginEdit) EXPECT_TRUE(_open.insert(host.calls.back().index).second);
        if (opcode == VST::audioMasterEndEdit) EXPECT_EQ(_open.erase(host.calls.back().index), 1u);
        if (_asksBack && opcode == VST::audioMasterAutomate) Chunk(false);
        return opcode == VST::audioMasterSizeWindow && _resizes ? 1 : 0;
    }
    void HaveTheHostAct() {
        switch (_chance.Below(10)) {
        case 0:
        case 1:
            return effect->Set(static_cast<std::int32_t>(_chance.Below(112)), _chance.Share());
        case 2:
            return effect->Set(static_cast<std::int32_t>(_chance.AnyNumber()), _chance.AnyFloat());
        case 3:
            SetChunk(_chance.OneIn(3) ? Chunk(_chance.OneIn(2)) : AnyContent(), _chance.OneIn(2));
            return;
        case 4:
            return _chance.OneIn(2) ? Close() : Open();
        case 5:
            _asksBack = _chance.OneIn(2);
            _resizes = _chance.OneIn(2);
            return;
        case 6:
            window.dotsPerInch = static_cast<std::int32_t>(_chance.Between(0, 300));
            return;
        case 7:
            if (window.client != nullptr) window.client->OnCancel();
            return;
        case 8:
            return Process();
        default:
            effect->Dispatch(VST::effEditIdle);
        }
    }
    void Process() {
        std::vector<std::vector<float>> audio(16, std::vector<float>(32, _chance.AnyFloat()));
        effect->Process(audio);
    }

    // What has to be true

    void ExpectThatItMakesSense() {
        for (const std::int32_t tag : HostParamTable()) {
            const float value = Device().GetParam(tag, Normalized);
            EXPECT_TRUE(value >= 0.0f && value <= 1.0f) << tag;
        }
        const auto& pointer = Gui().Pointer();
        for (const auto* const widget :
            {pointer.Hover(), pointer.Focus(), pointer.Capture(), Gui().Edit().piTarget})
            EXPECT_TRUE(widget == nullptr || Gui().Has(widget)) << "a widget that isn't there any more";
        EXPECT_EQ(Gui().Edit().piTarget != nullptr, window.textBox.has_value());
        EXPECT_TRUE(Gui().Width() >= CDeviceState::LeastWidth && Gui().Height() > 0);
    }
    void ExpectThatEditsEnd() {
        dialogs.answersLater = false;
        while (!dialogs.waiting.empty()) dialogs.AnswerNext(u"");
        Close();
        for (int call = 0; call < 3; ++call) Told();
        EXPECT_EQ(_open, std::set<std::int32_t>());
    }
    /// Another thread would wait without end.
    void ExpectThatNoTurnIsHeld() {
        std::thread([this] { EXPECT_FALSE(Device().State().PatchText(0).empty()); }).join();
    }
    void ForgetTheRecords() {
        window.lines.clear();
        window.boxes.clear();
        pictures.lines.clear();
        pictures.lettered.clear();
        pictures.measured.clear();
        dialogs.questions.clear();
        dialogs.errors.clear();
        host.calls.clear();
        if (Gui().GPU().IsReady()) renderers.Calls().clear();
    }

    CChance _chance;
    std::set<std::int32_t> _open; // the edits that the host has heard begin
    bool _asksBack = false;
    bool _resizes = false;
};

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***);
extern "C" int LLVMFuzzerInitialize(int*, char***) {
    AbortOnFailure();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CAnyPanel({data, size}).TestBody();
    return 0;
}
