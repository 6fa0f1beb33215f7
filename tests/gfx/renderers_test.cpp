#include "gfx/renderers.h"

#include "tests/support/added_log.h"
#include "utils/exceptions.h"
#include "utils/text.h"

#include <array>
#include <cstdlib>
#include <gtest/gtest.h>
#include <set>
#include <stdexcept>

using namespace KAV;
using namespace KAV::GFX;
using namespace KAV::Tests;

namespace {

/// What becomes of a renderer when it is created.
enum class EFate {
    NotOnThisSystem,
    NotBuilt, // the system has it, but there is no factory yet
    NotReady,
    IsNull,
    PassedOver,
    ThrowsStd,
    ThrowsOther,
    ThrowsANumber,
    ReadyThrows,
    NotReadyAndShutdownThrows,
    Ready
};

using Lines = std::vector<std::string>;

/// A table of four renderers with the fates that the test says, in place of the real one while it lives.
class Renderers : public testing::Test {
protected:
    ~Renderers() override { UseRenderers(nullptr); }

    void SetFates(const std::array<EFate, RendererCount>& all) {
        fates = all;
        const auto row = [](std::uint32_t number, std::u16string_view name, RendererFactory create) {
            return SRendererRow{name, fates[number] == EFate::NotBuilt ? nullptr : create,
                fates[number] != EFate::NotOnThisSystem};
        };
        _table = {row(0, u"Software", &Create<0>), row(1, u"OpenGL", &Create<1>),
            row(2, u"Direct3D9", &Create<2>), row(3, u"Direct2D", &Create<3>)};
        UseRenderers(&_table);
        events.clear();
        boxes.clear();
    }
    static SCreatedRenderer Make(std::uint32_t number) {
        return CreateRenderer(
            &window, 754, 553, number, [](std::u16string_view title, std::u16string_view text) {
                events.emplace_back("box");
                boxes.push_back(Utils::ToUtf8(title) + ": " + Utils::ToUtf8(text));
            });
    }

    static inline std::array<EFate, RendererCount> fates;
    static inline Lines events; // "create 2 chosen", "shutdown 2", "end 2", "box"
    static inline Lines boxes;  // title and text
    static inline int window = 0;
    static inline SRendererTarget lastTarget;

private:
    class CGpu final : public GPU {
    public:
        explicit CGpu(std::uint32_t number) : _number(number) {}
        ~CGpu() override { events.push_back("end " + std::to_string(_number)); }
        bool IsReady() const override {
            if (fates[_number] == EFate::ReadyThrows) throw Exceptions::Std(u"no device", u"TEST");
            return fates[_number] == EFate::Ready;
        }
        bool Shutdown() override {
            events.push_back("shutdown " + std::to_string(_number));
            if (fates[_number] == EFate::NotReadyAndShutdownThrows) throw std::runtime_error("stuck");
            return true;
        }

    private:
        std::uint32_t _number;
    };

    template<std::uint32_t TNumber>
    static std::unique_ptr<GPU> Create(const SRendererTarget& target, EReason reason) {
        lastTarget = target;
        events.push_back(
            "create " + std::to_string(TNumber) + (reason == EReason::Chosen ? " chosen" : " as fall-back"));
        switch (fates[TNumber]) {
        case EFate::IsNull:
            return nullptr;
        case EFate::PassedOver:
            throw SPassedOver();
        case EFate::ThrowsStd:
            throw Exceptions::Std(u"no device", u"TEST");
        case EFate::ThrowsOther:
            throw std::bad_alloc();
        case EFate::ThrowsANumber:
            throw 7;
        default:
            return std::make_unique<CGpu>(TNumber);
        }
    }

    RendererTable _table{};
};

constexpr auto Missing = EFate::NotOnThisSystem;
constexpr auto Fails = EFate::NotReady;
constexpr auto Ready = EFate::Ready;

std::string Message(const std::string& name, const std::string& next) {
    return "Can not initialize " + name +
           " hardware renderer for KAV Sorrel Limiter v1.0.1.0! Please update your graphics hardware or "
           "switch GPU in multi-GPU environment." +
           (next.empty() ? "" : "\r\n\r\nAttempt to create " + next + " now...");
}

const std::string SoftwareMessage = Message("Software", "");
const std::string OpenGLMessage = Message("OpenGL", "Direct2D renderer");
const std::string Direct3DMessage = Message("Direct3D9", "OpenGL hardware renderer");
const std::string Direct2DMessage = Message("Direct2D", "Software renderer");

} // namespace

TEST_F(Renderers, AreTheOnesOfThisBuildByNumber) {
    const auto& table = KAV::GFX::Renderers();
    EXPECT_EQ(table[0].sName, u"Software");
    EXPECT_EQ(table[1].sName, u"OpenGL");
    EXPECT_EQ(table[2].sName, u"Direct3D9");
    EXPECT_EQ(table[3].sName, u"Direct2D");
    EXPECT_EQ(Software, 0u);
    EXPECT_EQ(OpenGL, 1u);
    EXPECT_EQ(Direct3D9, 2u);
    EXPECT_EQ(Direct2D, 3u);
    EXPECT_EQ(DefaultRenderer, 2u);
    SetFates({Ready, Ready, Ready, Ready});
    EXPECT_NE(&KAV::GFX::Renderers(), &table);
    UseRenderers(nullptr);
    EXPECT_EQ(&KAV::GFX::Renderers(), &table);
}

TEST_F(Renderers, OneThatGetsReadyIsTheResult) {
    SetFates({Ready, Ready, Ready, Ready});
    for (std::uint32_t number = 0; number < RendererCount; ++number) {
        const CAddedLog log;
        events.clear();
        const auto created = Make(number);
        EXPECT_TRUE(created.IsReady());
        EXPECT_EQ(created.nRenderer, number);
        EXPECT_EQ(&created.Get(), created.piGPU.get());
        EXPECT_EQ(events, Lines{"create " + std::to_string(number) + " chosen"});
        EXPECT_EQ(log.Text(), "");
    }
}

TEST_F(Renderers, GetTheWindowAndItsSize) {
    SetFates({Ready, Fails, Missing, Missing});
    for (const std::uint32_t number : {Software, OpenGL}) {
        lastTarget = {};
        Make(number);
        EXPECT_EQ(lastTarget.pWindow, &window);
        EXPECT_EQ(lastTarget.nW, 754);
        EXPECT_EQ(lastTarget.nH, 553);
    }
}

TEST_F(Renderers, ThatFailAreEndedReportedAndFollowedByTheNext) {
    SetFates({Fails, Fails, Fails, Fails});
    const CAddedLog log;
    const auto created = Make(Direct3D9);
    EXPECT_FALSE(created.IsReady());
    EXPECT_EQ(&created.Get(), &NoRenderer());
    EXPECT_EQ(created.nRenderer, Software);
    EXPECT_EQ(events, (Lines{"create 2 chosen", "shutdown 2", "end 2", "box", "create 1 as fall-back",
                          "shutdown 1", "end 1", "box", "create 3 as fall-back", "shutdown 3", "end 3", "box",
                          "create 0 as fall-back", "shutdown 0", "end 0", "box"}));
    EXPECT_EQ(boxes, (Lines{"KAV Sorrel Limiter v1.0.1.0: " + Direct3DMessage,
                         "KAV Sorrel Limiter v1.0.1.0: " + OpenGLMessage,
                         "KAV Sorrel Limiter v1.0.1.0: " + Direct2DMessage,
                         "KAV Sorrel Limiter v1.0.1.0: " + SoftwareMessage}));
    EXPECT_EQ(log.Text(), "Error=" + Direct3DMessage + "\r\nError=" + OpenGLMessage +
                              "\r\nError=" + Direct2DMessage + "\r\nError=" + SoftwareMessage + "\r\n");
}

TEST_F(Renderers, SayWhatFailedAndWhichComesNext) {
    SetFates({Fails, Fails, Fails, Fails});
    Make(Direct3D9);
    ASSERT_EQ(boxes.size(), 4u);
    EXPECT_EQ(boxes.front(),
        "KAV Sorrel Limiter v1.0.1.0: Can not initialize Direct3D9 hardware renderer for KAV Sorrel Limiter "
        "v1.0.1.0! Please update your graphics hardware or switch GPU in multi-GPU "
        "environment.\r\n\r\nAttempt "
        "to create OpenGL hardware renderer now...");
    EXPECT_EQ(boxes.back(),
        "KAV Sorrel Limiter v1.0.1.0: Can not initialize Software hardware renderer for KAV Sorrel Limiter "
        "v1.0.1.0! Please update your graphics hardware or switch GPU in multi-GPU environment.");
}

TEST_F(Renderers, ThatTheSystemDoesNotHaveArePassedOverWithoutABox) {
    SetFates({Ready, Missing, Missing, EFate::NotBuilt});
    const CAddedLog log;
    const auto created = Make(Direct3D9);
    EXPECT_TRUE(created.IsReady());
    EXPECT_EQ(created.nRenderer, Software);
    EXPECT_EQ(events, Lines{"create 0 as fall-back"});
    EXPECT_EQ(log.Text(),
        "Error=" + Direct3DMessage + "\r\nError=" + OpenGLMessage + "\r\nError=" + Direct2DMessage + "\r\n");
}

TEST_F(Renderers, ThatPassThemselvesOverGetALineAndNoBox) {
    SetFates({Ready, EFate::PassedOver, Missing, Missing});
    const CAddedLog log;
    const auto created = Make(Direct3D9);
    EXPECT_EQ(created.nRenderer, Software);
    EXPECT_TRUE(created.IsReady());
    EXPECT_EQ(events, (Lines{"create 1 as fall-back", "create 0 as fall-back"}));
    EXPECT_EQ(log.Text(),
        "Error=" + Direct3DMessage + "\r\nError=" + OpenGLMessage + "\r\nError=" + Direct2DMessage + "\r\n");
}

TEST_F(Renderers, CanShowBoxesWhileTheyAreMade) {
    SetFates({Ready, Ready, Ready, Ready});
    lastTarget = {};
    Make(OpenGL);
    EXPECT_NE(lastTarget.pShowError, nullptr);
}

TEST_F(Renderers, FallBackInTheirOrderWhicheverIsMissingFailsOrWorks) {
    const std::array<std::uint32_t, RendererCount> order{Direct3D9, OpenGL, Direct2D, Software};
    const std::array<std::string, RendererCount> messages{
        SoftwareMessage, OpenGLMessage, Direct3DMessage, Direct2DMessage};
    const std::array states{Missing, Fails, Ready};
    for (int combination = 0; combination < 81; ++combination) {
        const auto state = [&](int power) {
            return states[static_cast<std::size_t>(combination / power % 3)];
        };
        const std::array all{state(1), state(3), state(9), state(27)};
        for (std::size_t first = 0; first < order.size(); ++first) {
            Lines expected;
            Lines expectedBoxes;
            std::string expectedLog;
            std::uint32_t last = order[first];
            bool ready = false;
            for (std::size_t i = first; i < order.size() && !ready; ++i) {
                last = order[i];
                const auto number = std::to_string(last);
                ready = all[last] == Ready;
                if (all[last] != Missing)
                    expected.push_back("create " + number + (i == first ? " chosen" : " as fall-back"));
                if (ready) break;
                expectedLog += "Error=" + messages[last] + "\r\n";
                if (all[last] == Missing) continue;
                for (const auto& event : {"shutdown " + number, "end " + number, std::string("box")})
                    expected.push_back(event);
                expectedBoxes.push_back("KAV Sorrel Limiter v1.0.1.0: " + messages[last]);
            }
            SetFates(all);
            const CAddedLog log;
            const auto created = Make(order[first]);
            ASSERT_EQ(created.IsReady(), ready) << combination << " from " << order[first];
            ASSERT_EQ(created.nRenderer, last) << combination << " from " << order[first];
            ASSERT_EQ(events, expected) << combination << " from " << order[first];
            ASSERT_EQ(boxes, expectedBoxes) << combination << " from " << order[first];
            ASSERT_EQ(log.Text(), expectedLog) << combination << " from " << order[first];
        }
    }
}

TEST_F(Renderers, OfUnknownNumbersAreNotCreated) {
    SetFates({Ready, Ready, Ready, Ready});
    for (const std::uint32_t number : {4u, 5u, 200u, 0xFFFFFFFFu}) {
        const CAddedLog log;
        const auto created = Make(number);
        EXPECT_FALSE(created.IsReady());
        EXPECT_EQ(&created.Get(), &NoRenderer());
        EXPECT_EQ(created.nRenderer, number);
        EXPECT_EQ(events, Lines{});
        EXPECT_EQ(log.Text(), "");
    }
}

TEST_F(Renderers, ThatThrowAreNotReadyAndNothingPassesOut) {
    for (const auto fate : {EFate::IsNull, EFate::ThrowsStd, EFate::ThrowsOther, EFate::ThrowsANumber}) {
        SetFates({Ready, Fails, Fails, fate});
        const auto created = Make(Direct2D);
        EXPECT_EQ(created.nRenderer, Software);
        EXPECT_TRUE(created.IsReady());
        EXPECT_EQ(events, (Lines{"create 3 chosen", "box", "create 0 as fall-back"}));
        EXPECT_EQ(boxes, Lines{"KAV Sorrel Limiter v1.0.1.0: " + Direct2DMessage});
    }
    for (const auto fate : {EFate::ReadyThrows, EFate::NotReadyAndShutdownThrows}) {
        SetFates({Ready, Fails, Fails, fate});
        const auto created = Make(Direct2D);
        EXPECT_EQ(created.nRenderer, Software);
        EXPECT_TRUE(created.IsReady());
        EXPECT_EQ(events, (Lines{"create 3 chosen", "shutdown 3", "end 3", "box", "create 0 as fall-back"}));
    }
}

TEST_F(Renderers, FollowEachOtherThoughABoxThrows) {
    SetFates({Ready, Fails, Fails, Fails});
    const auto created = CreateRenderer(nullptr, 1, 1, OpenGL,
        [](std::u16string_view, std::u16string_view) { throw std::runtime_error("no memory"); });
    EXPECT_EQ(created.nRenderer, Software);
    EXPECT_TRUE(created.IsReady());
    EXPECT_TRUE(CreateRenderer(nullptr, 1, 1, OpenGL, {}).IsReady());
}

TEST_F(Renderers, LiveAsLongAsTheirResult) {
    SetFates({Ready, Ready, Ready, Ready});
    { const auto created = Make(OpenGL); }
    EXPECT_EQ(events, (Lines{"create 1 chosen", "end 1"}));
}

TEST_F(Renderers, EndWithTheSoftwareRenderer) {
    EXPECT_TRUE(KAV::GFX::Renderers()[Software].bOnThisSystem);
    for (std::uint32_t number = 0; number < RendererCount; ++number) {
        const CAddedLog log;
        std::set<std::u16string> failed; // with a box each: those that this system has, without a window
        const auto created =
            CreateRenderer(nullptr, 1, 1, number, [&](std::u16string_view, std::u16string_view text) {
                const auto begin = std::u16string_view(u"Can not initialize ").size();
                failed.emplace(text.substr(begin, text.find(u' ', begin) - begin));
            });
        for (const auto& row : KAV::GFX::Renderers()) {
            if (row.sName == u"Software" || row.pCreate == nullptr || !row.bOnThisSystem) {
                EXPECT_FALSE(failed.contains(std::u16string(row.sName)));
            }
        }
        const auto& chosen = KAV::GFX::Renderers()[number];
        EXPECT_EQ(failed.contains(std::u16string(chosen.sName)), number != Software && chosen.bOnThisSystem);
        EXPECT_EQ(std::u16string(created.Get().GetName()), u"Software");
        EXPECT_TRUE(created.IsReady());
        EXPECT_EQ(created.nRenderer, Software);
        EXPECT_EQ(log.Text().find(Direct3DMessage) != std::string::npos, number == Direct3D9);
    }
}

#if !defined(_WIN32) // there a box could really be shown, and would wait for somebody
TEST_F(Renderers, ShowTheSystemsBoxesUnlessToldOtherwise) {
    unsetenv("DISPLAY");
    unsetenv("WAYLAND_DISPLAY");
    SetFates({Fails, Missing, Missing, Missing});
    const CAddedLog log;
    EXPECT_FALSE(CreateRenderer(nullptr, 1, 1, Software).IsReady());
    // A box that can't be shown is logged.
    EXPECT_EQ(log.Text(), "Error=" + SoftwareMessage + "\r\nError=" + SoftwareMessage + "\r\n");
}
#endif
