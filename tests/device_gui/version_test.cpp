// What the maker's server says, as an instance takes it.

#include "device_gui/version_check.h"

#include "device_gui/new_version_led.h"
#include "device_gui/xxx_gui.h"
#include "tests/support/file_text.h"
#include "tests/support/local_server.h"
#include "tests/support/recording_host.h"
#include "tests/support/scratch_home.h"
#include "utils/text.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <stdexcept>

using namespace KAV;
using namespace KAV::Tests;

namespace {

CLocalServer::Behaviour Saying(std::string answer) {
    return [=](CConnection& connection, const std::string&) { connection.Answer(200, answer); };
}

Utils::SMakerService Service(const CLocalServer& server) {
    return {server.Origin(), server.Origin(), u"0123abcd", u"vst24_test", {}};
}

CNewVersionLED& LampOf(const CXXXGUI& gui) {
    auto* const lamp = gui.Find<CNewVersionLED>();
    if (lamp == nullptr) throw std::logic_error("no lamp");
    return *lamp;
}

/// An instance of a host's, and its editor's half.
class CInstance final {
public:
    explicit CInstance(const Utils::SMakerService& service) : _effect(nullptr, service) {}
    explicit CInstance(const CLocalServer& server) : CInstance(Service(server)) {}

    CXXXGUI& Gui() { return _effect.Device().GUI(); }
    VST::AEffect& Record() { return _effect.Record(); }
    CNewVersionLED& Lamp() { return LampOf(Gui()); }
    /// Waits until the answer is known, for a minute at most.
    bool AwaitVersion() {
        for (int i = 0; i < 6000 && Gui().Version().LatestVersion().empty(); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        return !Gui().Version().LatestVersion().empty();
    }
    /// The same for a newer one, of which a window would have heard by then.
    bool AwaitNewer() {
        for (int i = 0; i < 6000 && !Gui().Version().IsNewerKnown(); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        return Gui().Version().IsNewerKnown();
    }

private:
    CHostedEffect _effect;
};

/// Of this process; always 0 where the system has no such list.
std::ptrdiff_t Threads() {
    std::error_code none;
    return std::distance(std::filesystem::directory_iterator("/proc/self/task", none), {});
}

/// The state after a check that told nothing.
void ExpectNothingIsKnown(const CLocalServer::Behaviour& behaviour) {
    const CLocalServer server(behaviour);
    CInstance instance(server);
    server.AwaitRequests(1);
    std::this_thread::sleep_for(std::chrono::milliseconds(200)); // for an answer that nobody shall take
    EXPECT_FALSE(instance.Gui().Version().IsNewerKnown());
    EXPECT_EQ(instance.Gui().Maker().NewVersionText(), u"");
    EXPECT_EQ(instance.Gui().Maker().WhatsNewText(), u"");
    EXPECT_FALSE(instance.Gui().Maker().OpenDownload());
    instance.Gui().CreateGUIWindow();
    EXPECT_FALSE(instance.Lamp().IsVisible());
}

} // namespace

TEST(ReadVersionAnswer, TakesExactlyThreeFields) {
    const auto answer = ReadVersionAnswer("1.2.3.4||http://host/file||unused");
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->sVersion, u"1.2.3.4");
    EXPECT_EQ(answer->sDownload, u"http://host/file");
    EXPECT_TRUE(ReadVersionAnswer("||||"));
    EXPECT_TRUE(ReadVersionAnswer("1|2||3|||"));
    for (const auto* const text : {"", "1.2", "1.2||http://host", "1||2||3||4", "1||2||3||", "1|2|3"})
        EXPECT_FALSE(ReadVersionAnswer(text)) << text;
}

TEST(ReadVersionAnswer, IsUtf8UpToAZero) {
    EXPECT_EQ(ReadVersionAnswer("\xC3\xA4||b||c")->sVersion, u"\xE4");
    EXPECT_FALSE(ReadVersionAnswer("\xC3||b||c"));
    EXPECT_FALSE(ReadVersionAnswer(std::string_view("1||b\0||c", 8)));
    EXPECT_TRUE(ReadVersionAnswer(std::string_view("1||b||c\0||d", 11)));
}

TEST(ReadVersionAnswer, CutsTextsThatAreTooLong) {
    const std::string version = "1.2." + std::string(28, '3');
    const std::string download = "http://host/" + std::string(2036, 'x');
    const auto longest = ReadVersionAnswer(version + "||" + download + "||x");
    EXPECT_EQ(longest->sVersion, Utils::ToUtf16(version));
    EXPECT_EQ(longest->sDownload, Utils::ToUtf16(download));
    const auto longer = ReadVersionAnswer(version + "4||" + download + "y||x");
    EXPECT_EQ(longer->sVersion, longest->sVersion);
    EXPECT_EQ(longer->sDownload, longest->sDownload);
    const auto huge =
        ReadVersionAnswer(std::string(1u << 20, '1') + "||" + std::string(1u << 20, 'x') + "||");
    EXPECT_EQ(huge->sVersion, std::u16string(32, u'1'));
    EXPECT_EQ(huge->sDownload, std::u16string(2048, u'x'));
}

TEST(ReadVersionAnswer, CutsNoCharacterInTwo) {
    const std::string clef = "\xF0\x9D\x84\x9E"; // two code units
    EXPECT_EQ(ReadVersionAnswer(std::string(31, '1') + clef + "||b||c")->sVersion, std::u16string(31, u'1'));
    EXPECT_EQ(ReadVersionAnswer(std::string(30, '1') + clef + "2||b||c")->sVersion,
        std::u16string(30, u'1') + u"\U0001D11E");
}

TEST(IsNewer, LetsTheFirstDifferenceDecide) {
    for (const auto* const newer :
        {u"1.0.1.1", u"1.0.2.0", u"1.1", u"2", u"2.0.0.0", u"1.0.1.10", u"1.0.10.0"})
        EXPECT_TRUE(IsNewer(newer));
    for (const auto* const older : {u"1.0.1.0", u"1.0.0.9", u"0.9.9.9", u"1.0.0", u"0", u"", u"text", u".9"})
        EXPECT_FALSE(IsNewer(older));
}

TEST(IsNewer, ComparesAsManyPartsAsTheServerTells) {
    for (const auto* const equal : {u"1", u"1.0", u"1.0.1", u"1.0.1.0.0"}) EXPECT_FALSE(IsNewer(equal));
    EXPECT_TRUE(IsNewer(u"1.0.1.0.1"));
    EXPECT_FALSE(IsNewer(u"1.0.1.0.-1"));
}

TEST(VersionCheck, AsksForItsProductAndForm) {
    const CLocalServer server(Saying("1.0.1.0||http://host||"));
    CInstance instance(server);
    ASSERT_TRUE(instance.AwaitVersion());
    const auto request = server.Requests().at(0);
    EXPECT_TRUE(request.starts_with("GET /version.php?app_id=0123abcd&format=vst24_test HTTP/1.1\r\n"))
        << request;
}

TEST(VersionCheck, ANewerVersionMakesBothEntries) {
    const CLocalServer server(Saying("1.0.2.0||http://host/file||x"));
    CInstance instance(server);
    ASSERT_TRUE(instance.AwaitNewer());
    EXPECT_EQ(instance.Gui().Maker().NewVersionText(), u"New version 1.0.2.0 is available...");
    EXPECT_EQ(instance.Gui().Maker().WhatsNewText(), u"What's new in version 1.0.2.0...");
    EXPECT_EQ(instance.Gui().Version().DownloadAddress(), u"http://host/file");
}

TEST(VersionCheck, TheOwnVersionMakesTheEntryOfWhatsNewAlone) {
    const CLocalServer server(Saying("1.0.1.0||http://host/file||x"));
    CInstance instance(server);
    ASSERT_TRUE(instance.AwaitVersion());
    EXPECT_EQ(instance.Gui().Maker().NewVersionText(), u"");
    EXPECT_EQ(instance.Gui().Maker().WhatsNewText(), u"What's new in version 1.0.1.0...");
    instance.Gui().CreateGUIWindow();
    EXPECT_FALSE(instance.Lamp().IsVisible());
}

TEST(VersionCheck, AnswersOfTwoOrFourFieldsAreIgnoredWhole) {
    ExpectNothingIsKnown(Saying("9.0.0.0||http://host"));
    ExpectNothingIsKnown(Saying("9.0.0.0||http://host||x||y"));
}

TEST(VersionCheck, AnErrorPageIsNoAnswer) {
    ExpectNothingIsKnown([](CConnection& connection, const std::string&) {
        connection.Answer(404, "9.0.0.0||http://host||x");
    });
    ExpectNothingIsKnown([](CConnection& connection, const std::string&) { connection.Reset(); });
}

TEST(VersionCheck, WithoutAServerNobodyIsAsked) {
    const auto before = Threads();
    CInstance instance(Utils::SMakerService{{}, {}, u"0123abcd", u"vst24_test", {}});
    EXPECT_EQ(Threads(), before);
    EXPECT_EQ(instance.Gui().Maker().NewVersionText(), u"");
    EXPECT_FALSE(instance.Gui().Maker().OpenWhatsNew());
    EXPECT_FALSE(instance.Gui().Maker().OpenUserManual());
    EXPECT_FALSE(instance.Gui().Maker().OpenMakersSite());
#if !defined(_WIN32)
    EXPECT_EQ(ReadText("/proc/self/maps").find("libcurl"), std::string::npos);
#endif
}

TEST(VersionCheck, TheEndOfTheInstanceEndsTheRequestAndWaitsForTheThread) {
    std::atomic<bool> wentAway{false};
    const CLocalServer server(
        [&](CConnection& connection, const std::string&) { wentAway = connection.AwaitItsEnd(); });
    [[maybe_unused]] const auto before = Threads();
    auto asked = std::chrono::steady_clock::now();
    {
        CInstance instance(server);
        server.AwaitRequests(1);
        asked = std::chrono::steady_clock::now();
#if !defined(_WIN32)
        EXPECT_GT(Threads(), before);
#endif
    }
#if !defined(_WIN32) // where one more waits for the server, of which the instance needs nothing
    EXPECT_EQ(Threads(), before);
#endif
    // Half of the time after which it would have ended by itself.
    EXPECT_LT(std::chrono::steady_clock::now() - asked, std::chrono::seconds(5));
#if !defined(_WIN32) // whose client ends its connection in its own time
    for (int i = 0; i < 100 && !wentAway; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_TRUE(wentAway);
#endif
}

#if !defined(_WIN32)
TEST(VersionCheck, OpensADownloadFromTheWebAlone) {
    const auto folder = ScratchFolder() / "opener";
    const auto said = folder / "said";
    WriteText(folder / "xdg-open", "#!/bin/sh\necho \"$1\" >'" + said.string() + ".new'\nmv '" +
                                       said.string() + ".new' '" + said.string() + "'\n");
    std::filesystem::permissions(folder / "xdg-open", std::filesystem::perms::owner_all);
    const auto path = folder.string() + ":" + std::getenv("PATH");
    setenv("PATH", path.c_str(), 1);
    for (const auto* const bad :
        {"", "file:///bin/sh", "/bin/sh", "javascript:x", "httpx://host", " http://host"}) {
        const CLocalServer server(Saying("1.0.2.0||" + std::string(bad) + "||x"));
        CInstance instance(server);
        ASSERT_TRUE(instance.AwaitNewer());
        EXPECT_FALSE(instance.Gui().Maker().OpenDownload()) << bad;
    }
    const CLocalServer server(Saying("1.0.2.0||https://host/file?a=b&c||x"));
    CInstance instance(server);
    ASSERT_TRUE(instance.AwaitNewer());
    EXPECT_FALSE(std::filesystem::exists(said));
    const auto opened = [&said] {
        for (int i = 0; i < 500 && !std::filesystem::exists(said); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        const auto text = ReadText(said);
        std::filesystem::remove(said);
        return text;
    };
    const auto origin = "http://127.0.0.1:" + std::to_string(server.Port());
    EXPECT_TRUE(instance.Gui().Maker().OpenDownload());
    EXPECT_EQ(opened(), "https://host/file?a=b&c\n");
    EXPECT_TRUE(instance.Gui().Maker().OpenWhatsNew());
    EXPECT_EQ(opened(), origin + "/service/whatsnew.php?platform=win&product_id=0123abcd\n");
    EXPECT_TRUE(instance.Gui().Maker().OpenUserManual());
    EXPECT_EQ(opened(), origin + "/service/help.php?product_id=0123abcd\n");
    EXPECT_TRUE(instance.Gui().Maker().OpenMakersSite());
    EXPECT_EQ(opened(), origin + "/?from=plugin\n");
}
#endif

TEST(VersionCheck, ManyInstancesMayComeAndGoMeanwhile) {
    const CLocalServer server(Saying("1.0.2.0||http://host||x"));
    for (int i = 0; i < 10; ++i) {
        CInstance instance(server);
        instance.Gui().CreateGUIWindow();
        if (i % 3 == 0) instance.Gui().DestroyGUIWindow();
        instance.Gui().OnFrame(16);
        EXPECT_TRUE(
            instance.Gui().Maker().NewVersionText().empty() || instance.Gui().Version().IsNewerKnown());
    }
}

TEST(NewVersionLamp, IsShownByTheMessageToTheWindow) {
    const CLocalServer server([](CConnection& connection, const std::string& request) {
        connection.Pause(200); // until there is a window
        connection.Answer(200, request.empty() ? "" : "1.0.2.0||http://host||x");
    });
    CInstance instance(server);
    instance.Gui().CreateGUIWindow();
    EXPECT_FALSE(instance.Lamp().IsVisible());
    ASSERT_TRUE(instance.AwaitNewer());
    for (int i = 0; i < 500 && !instance.Lamp().IsVisible(); ++i) {
        instance.Gui().OnFrame(0);
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_TRUE(instance.Lamp().IsVisible());
}

TEST(NewVersionLamp, IsShownByTheNextWindowWhenThereWasNone) {
    const CLocalServer server(Saying("1.0.2.0||http://host||x"));
    CInstance instance(server);
    ASSERT_TRUE(instance.AwaitNewer());
    std::this_thread::sleep_for(std::chrono::milliseconds(200)); // for the message
    instance.Gui().OnFrame(16);
    EXPECT_FALSE(instance.Lamp().IsVisible()) << "a message to no window";
    instance.Gui().CreateGUIWindow();
    EXPECT_TRUE(instance.Lamp().IsVisible());
    instance.Lamp().SetVisible(false, 0);
    instance.Gui().OnUserMessage(CXXXGUI::NewVersionMessage);
    instance.Gui().CreateGUIWindow();
    EXPECT_FALSE(instance.Lamp().IsVisible()) << "once for each newer version";
}

TEST(NewVersionLamp, BreathesWithTwoSecondsWhileItIsShown) {
    CInstance instance(Utils::SMakerService{});
    auto& lamp = instance.Lamp();
    for (int i = 0; i < 100; ++i) instance.Gui().OnFrame(20);
    EXPECT_EQ(lamp.Brightness(), 0.0f) << "hidden";
    lamp.SetVisible(true, 0);
    instance.Gui().OnFrame(125); // sets out
    for (int period = 0; period < 3; ++period) {
        for (int ms = 125; ms <= 2000; ms += 125) { // a power of two of a second, so nothing is rounded
            instance.Gui().OnFrame(125);
            const float part = static_cast<float>(ms) / 1000.0f;
            EXPECT_EQ(lamp.Brightness(), part <= 1.0f ? part : 2.0f - part) << ms;
        }
    }
}

TEST(NewVersionLamp, IsLeftAloneByTheDevice) {
    CRecordingHost host;
    CHostedEffect effect(host.Callback(), Utils::SMakerService{});
    auto& gui = effect.Device().GUI();
    auto& lamp = LampOf(gui);
    EXPECT_EQ(lamp.Id(), -56);
    EXPECT_EQ(effect.Device().GetParam(-56, 0), 0.0f);
    lamp.SetVisible(true, 0);
    host.calls.clear();
    for (int i = 0; i < 26; ++i) gui.OnFrame(20);
    EXPECT_NEAR(static_cast<double>(lamp.Brightness()), 0.5, 1e-4);
    EXPECT_EQ(lamp.Value(), 1.0f);
    EXPECT_EQ(host.Count(VST::audioMasterAutomate), 0u);
}

TEST(NewVersionLamp, MakesNoEditor) {
    const CLocalServer server(Saying("1.0.2.0||http://host||x"));
    CInstance instance(server);
    ASSERT_TRUE(instance.AwaitNewer());
    EXPECT_EQ(instance.Record().flags & VST::effFlagsHasEditor, 0);
}

TEST(WindowMessages, ComeInOrderAndGoWithTheWindow) {
    Utils::CTurns turns;
    struct SListener final : GUI::CGUI {
        explicit SListener(Utils::CTurns& itsTurns) : GUI::CGUI(itsTurns, Utils::SMakerService{}) {}
        bool OnUserMessage(std::uint32_t message) override {
            heard.push_back(message);
            return CGUI::OnUserMessage(message);
        }
        using CGUI::DeliverMessages;
        std::vector<std::uint32_t> heard;
    } gui(turns);
    gui.PostUserMessage(1025);
    gui.CreateGUIWindow();
    gui.PostUserMessage(1026);
    gui.PostUserMessage(1027);
    gui.DeliverMessages();
    gui.DeliverMessages();
    EXPECT_EQ(gui.heard, (std::vector<std::uint32_t>{1026, 1027}));
    gui.PostUserMessage(1028);
    gui.DestroyGUIWindow();
    gui.PostUserMessage(1029);
    gui.CreateGUIWindow();
    gui.DeliverMessages();
    EXPECT_EQ(gui.heard.size(), 2u);
    EXPECT_FALSE(gui.OnUserMessage(1030));
}
