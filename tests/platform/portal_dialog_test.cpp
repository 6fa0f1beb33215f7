// The desktop portal is one of the test's own, on a message bus of its own.

#include "platform/xdg/portal_dialog.h"

#include "tests/support/dialog_script.h"
#include "tests/support/fake_portal.h"

#include <csignal>
#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace KAV::Platform;
using namespace KAV::Tests;
namespace fs = std::filesystem;

namespace {

class PortalDialog : public testing::Test {
protected:
    CDialogScripts scripts;
    std::optional<CPrivateSession> session;
    SPortalManners manners;
    std::unique_ptr<CFakePortal> portal;
    SFileRequest request;
    std::promise<SFileAnswer> promise;
    std::future<SFileAnswer> answer;
    std::optional<CFileDialog> dialog;

    void SetUp() override {
        if (!CPrivateSession::IsInstalled()) GTEST_SKIP() << "there is no dbus-daemon";
        session.emplace();
        scripts.Put("zenity", "echo /by-zenity");
    }
    ~PortalDialog() override {
        dialog.reset();
        if (answer.valid()) answer.wait();
    }

    void Start() {
        portal = std::make_unique<CFakePortal>(*session, manners);
        StartDialog();
    }
    void StartDialog() {
        promise = {};
        answer = promise.get_future();
        dialog.emplace(request, [this](const SFileAnswer& given) { promise.set_value(given); });
    }
    SFileAnswer Ask() {
        Start();
        const auto given = answer.get();
        portal.reset();
        return given;
    }
    SFileAnswer AskFor(const std::vector<std::string>& addresses) {
        manners.respond = ChosenAddresses(0, addresses);
        return Ask();
    }
};

/// Without the token, which is another one each time.
std::string WithoutToken(std::string call) {
    const auto at = call.find("='kav_");
    if (at != std::string::npos) call.erase(at + 2, call.find('\'', at + 2) - at - 2);
    return call;
}

} // namespace

TEST_F(PortalDialog, GivesThePathThatTheUserHasChosen) {
    const auto given = AskFor({"file:///a%20folder/%C3%A4.kvp"});
    EXPECT_EQ(given.kind, EFileAnswer::Chosen);
    EXPECT_EQ(given.path, "/a folder/\xC3\xA4.kvp");
    EXPECT_FALSE(scripts.WasRun("zenity"));
}

TEST_F(PortalDialog, SaysWhatMayBeOpened) {
    request.title = "Open";
    request.name = "ignored";
    request.folder = scripts.Folder().string();
    request.hostWindow = 0x1A2B;
    request.filters = {{"Preset File", {"*.fxp", "*.kvp"}}, {"All", {"*"}}};
    Start();
    EXPECT_EQ(WithoutToken(portal->NextCall()),
        "OpenFile 'x11:1a2b' 'Open' ('handle_token' ='' 'modal' =true 'filters' =(('Preset File' ((0 "
        "'*.fxp') (0 "
        "'*.FXP') (0 '*.kvp') (0 '*.KVP'))) ('All' ((0 '*')))) 'current_folder' =(" +
            scripts.Folder().string() + "/0))");
}

TEST_F(PortalDialog, SaysWhatMayBeSaved) {
    request.saves = true;
    request.title = "Save";
    request.name = "a/b.kvp";
    request.folder = scripts.Folder().string() + "/missing";
    Start();
    EXPECT_EQ(WithoutToken(portal->NextCall()),
        "SaveFile '' 'Save' ('handle_token' ='' 'modal' =true 'current_name' ='a_b.kvp')");
}

TEST_F(PortalDialog, IsCancelledByTheUserOrByThePortal) {
    for (const unsigned code : {1u, 2u, 77u}) {
        manners.respond = ChosenAddresses(code, {"file:///a"});
        const auto given = Ask();
        EXPECT_EQ(given.kind, EFileAnswer::Cancelled) << code;
        EXPECT_EQ(given.path, "") << code;
    }
    manners.respond = [](DBusMessage&) {};
    EXPECT_EQ(Ask().kind, EFileAnswer::Cancelled) << "a response without a code";
    EXPECT_FALSE(scripts.WasRun("zenity"));
}

TEST_F(PortalDialog, RefusesWhatIsNotOneFileOfThisMachine) {
    EXPECT_EQ(AskFor({}).kind, EFileAnswer::Unusable);
    EXPECT_EQ(AskFor({"file:///a", "file:///b"}).kind, EFileAnswer::Unusable);
    EXPECT_EQ(AskFor({"https://server/a"}).kind, EFileAnswer::Unusable);
    manners.respond = [](DBusMessage& response) {
        const dbus_uint32_t chosen = 0;
        dbus_message_append_args(&response, DBUS_TYPE_UINT32, &chosen, DBUS_TYPE_INVALID);
    };
    EXPECT_EQ(Ask().kind, EFileAnswer::Unusable) << "no results";
}

TEST_F(PortalDialog, HearsAResponseThatComesBeforeTheReply) {
    manners.answersEarly = true;
    EXPECT_EQ(AskFor({"file:///early"}).path, "/early");
}

TEST_F(PortalDialog, TakesTheNameThatThePortalGivesTheQuestion) {
    manners.otherHandle = "/org/freedesktop/portal/desktop/request/older";
    EXPECT_EQ(AskFor({"file:///older"}).path, "/older");
}

TEST_F(PortalDialog, BelievesNobodyButThePortal) {
    Start();
    portal->NextCall();
    ForgeResponse(*session, portal->Handle(), portal->Asker(), "file:///forged");
    EXPECT_EQ(answer.wait_for(std::chrono::milliseconds(200)), std::future_status::timeout);
    dialog->End();
    EXPECT_EQ(answer.get().kind, EFileAnswer::Cancelled);
}

TEST_F(PortalDialog, LeavesItToAProgramWithoutAPortal) {
    StartDialog();
    EXPECT_EQ(answer.get().path, "/by-zenity");
}

TEST_F(PortalDialog, LeavesItToAProgramWhereThePortalHasNoDialogsForFiles) {
    manners.hasFiles = false;
    EXPECT_EQ(Ask().path, "/by-zenity");
}

TEST_F(PortalDialog, LeavesItToAProgramWhenThePortalDoesNotAnswer) {
    manners.answersVersion = false;
    EXPECT_EQ(Ask().path, "/by-zenity");
}

TEST_F(PortalDialog, LeavesItToAProgramWhenThePortalDoesNotTakeTheQuestion) {
    manners.answersQuestion = false;
    EXPECT_EQ(Ask().path, "/by-zenity");
}

TEST_F(PortalDialog, LeavesItToAProgramWhenTheBusDoesNotAnswer) {
    session->Stop();
    StartDialog();
    EXPECT_EQ(answer.get().path, "/by-zenity");
}

TEST_F(PortalDialog, LeavesItToAProgramWhenTheBusHasGone) {
    session->End();
    StartDialog();
    EXPECT_EQ(answer.get().path, "/by-zenity");
}

TEST_F(PortalDialog, IsTheOnlyOneIfTheUserSaysSo) {
    setenv("KAV_FILE_DIALOG", "portal", 1);
    StartDialog();
    EXPECT_EQ(answer.get().kind, EFileAnswer::NotAsked);
    EXPECT_EQ(AskFor({"file:///a"}).path, "/a");
    setenv("KAV_FILE_DIALOG", "zenity", 1);
    EXPECT_EQ(AskFor({"file:///a"}).path, "/by-zenity");
}

TEST_F(PortalDialog, IsClosedWhenItIsEnded) {
    Start();
    portal->NextCall();
    dialog->Raise(); // does nothing here
    dialog->End();
    EXPECT_EQ(answer.get().kind, EFileAnswer::Cancelled);
    EXPECT_EQ(portal->NextCall(), "Close " + portal->Handle());
    EXPECT_FALSE(scripts.WasRun("zenity"));
}

TEST_F(PortalDialog, IsCancelledWhenThePortalDies) {
    Start();
    portal->NextCall();
    portal.reset();
    EXPECT_EQ(answer.get().kind, EFileAnswer::Cancelled);
    EXPECT_FALSE(scripts.WasRun("zenity"));
}

TEST_F(PortalDialog, IsCancelledWhenTheBusDies) {
    Start();
    portal->NextCall();
    session->End();
    EXPECT_EQ(answer.get().kind, EFileAnswer::Cancelled);
    EXPECT_FALSE(scripts.WasRun("zenity"));
}

TEST_F(PortalDialog, LeavesNothingOpen) {
    const auto count = [] { return CountEntries("/proc/self/fd"); };
    AskFor({"file:///a"});
    dialog.reset();
    const auto before = count();
    for (int n = 0; n < 10; ++n) AskFor({"file:///a"});
    dialog.reset();
    EXPECT_TRUE(Eventually([&] { return count() == before; }));
}

TEST_F(PortalDialog, LeavesTheHostsSignalsAlone) {
    dbus_connection_set_change_sigpipe(1); // as the library begins
    const auto before = std::signal(SIGPIPE, SIG_DFL);
    StartDialog();
    answer.get();
    EXPECT_EQ(std::signal(SIGPIPE, before), SIG_DFL);
}

TEST(AnswerOfAddress, IsThePathOfAFileHere) {
    EXPECT_EQ(AnswerOfAddress("file:///a/b.kvp").path, "/a/b.kvp");
    EXPECT_EQ(AnswerOfAddress("file://localhost/a").path, "/a");
    EXPECT_EQ(AnswerOfAddress("file:///100%25%20%3F%23%22.kvp").path, "/100% ?#\".kvp");
    EXPECT_EQ(AnswerOfAddress("file:///%e3%81%82").path, "/\xE3\x81\x82");
    EXPECT_EQ(AnswerOfAddress("file:///-x").path, "/-x");
}

TEST(AnswerOfAddress, IsUnusableOtherwise) {
    for (const auto* const address : {"", "file:", "file:a", "file://", "file:/a", "/a", "FILE:///a",
             "file://server/a", "http:///a", "file:///a%", "file:///a%2", "file:///a%zz", "file:///a%2Fb",
             "file:///a%00b", "file:///a%0Ab", "file:///a%FF", "file:///a%5Cb", "file:///a?b", "file:///a#b",
             "file:///a/", "file://localhost", "file://localhosta/b"})
        EXPECT_EQ(AnswerOfAddress(address).kind, EFileAnswer::Unusable) << address;
}

TEST(SessionBusAddress, IsTheEnvironmentsOrTheUsualOne) {
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:abstract=/x,guid=1;unix:path=/y", 1);
    EXPECT_EQ(SessionBusAddress(), "unix:abstract=/x,guid=1");
    for (const auto* const other :
        {"autolaunch:", "unixexec:path=/bin/true", "tcp:host=server,port=1", "launchd:"}) {
        setenv("DBUS_SESSION_BUS_ADDRESS", other, 1);
        EXPECT_EQ(SessionBusAddress(), "") << other;
    }
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
    const auto folder = ScratchFolder() / "run";
    fs::create_directories(folder);
    setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
    EXPECT_EQ(SessionBusAddress(), "") << "nothing is there";
    WriteText(folder / "bus", "");
    EXPECT_EQ(SessionBusAddress(), "") << "it is no socket";
    fs::remove(folder / "bus");
    const int bus = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un name{};
    name.sun_family = AF_UNIX;
    (folder / "bus").string().copy(name.sun_path, sizeof(name.sun_path) - 1);
    ASSERT_EQ(bind(bus, reinterpret_cast<const sockaddr*>(&name), sizeof(name)), 0);
    EXPECT_EQ(SessionBusAddress(), "unix:path=" + (folder / "bus").string());
    close(bus);
    unsetenv("XDG_RUNTIME_DIR");
    EXPECT_EQ(SessionBusAddress(), "");
}
