// The test is the window manager of its own display.

#include "platform/x11/raise_windows.h"

#include "platform/file_dialog.h"
#include "tests/support/dialog_script.h"
#include "tests/support/x_test_host.h"

#include <csignal>
#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

using namespace KAV::Platform;
using namespace KAV::Tests;

namespace {

class RaiseWindows : public testing::Test {
protected:
    CXTestHost host;
    xcb_connection_t* manager = xcb_connect(host.Display().c_str(), nullptr);
    pid_t dialog = StartSession();

    RaiseWindows() {
        const std::uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT;
        xcb_change_window_attributes(manager, host.Root(), XCB_CW_EVENT_MASK, &events);
        xcb_flush(manager);
        host.Sync();
    }
    ~RaiseWindows() override {
        kill(dialog, SIGKILL);
        waitpid(dialog, nullptr, 0);
        xcb_disconnect(manager);
    }

    /// A program of its own session.
    static pid_t StartSession() {
        const pid_t program = fork();
        if (program == 0) {
            setsid();
            for (;;) pause();
        }
        EXPECT_TRUE(Eventually([program] { return getsid(program) == program; }));
        return program;
    }
    xcb_window_t WindowOf(pid_t process) {
        const auto window = host.MakeWindow(host.Root(), 0, 0, 10, 10);
        const auto owner = static_cast<std::uint32_t>(process);
        Set(window, "_NET_WM_PID", XCB_ATOM_CARDINAL, {owner});
        return window;
    }
    void Set(xcb_window_t window, const std::string& name, xcb_atom_t type,
        const std::vector<std::uint32_t>& values) {
        xcb_change_property(host.Connection(), XCB_PROP_MODE_REPLACE, window, host.Atom(name), type, 32,
            static_cast<std::uint32_t>(values.size()), values.data());
        host.Sync();
    }
    /// The windows that the manager was asked to bring to the front.
    std::vector<xcb_window_t> Asked() {
        std::free(xcb_get_input_focus_reply(manager, xcb_get_input_focus(manager), nullptr));
        std::vector<xcb_window_t> windows;
        while (xcb_generic_event_t* const event = xcb_poll_for_event(manager)) {
            const auto& message = *reinterpret_cast<const xcb_client_message_event_t*>(event);
            if ((event->response_type & 0x7F) == XCB_CLIENT_MESSAGE &&
                message.type == host.Atom("_NET_ACTIVE_WINDOW"))
                windows.push_back(message.window);
            std::free(event);
        }
        return windows;
    }
};

} // namespace

TEST_F(RaiseWindows, AsksTheWindowManagerForThoseOfTheSession) {
    const auto other = WindowOf(getpid());
    const auto own = WindowOf(dialog);
    const auto nobodys = host.MakeWindow(host.Root(), 0, 0, 10, 10);
    Set(host.Root(), "_NET_CLIENT_LIST", XCB_ATOM_WINDOW, {other, own, nobodys, 0x7FFFFFF});
    RaiseWindowsOf(dialog, host.Display().c_str());
    EXPECT_EQ(Asked(), std::vector<xcb_window_t>{own});
}

TEST_F(RaiseWindows, AreThoseOfADialogForFiles) {
    const CDialogScripts scripts;
    scripts.Put("zenity", "while :; do /bin/sleep 1000; done");
    std::promise<void> ended;
    CFileDialog files({}, [&ended](const SFileAnswer&) { ended.set_value(); });
    const auto own = WindowOf(scripts.Process("zenity"));
    Set(host.Root(), "_NET_CLIENT_LIST", XCB_ATOM_WINDOW, {own});
    setenv("DISPLAY", ":nowhere", 1); // the dialog's thread doesn't read it
    for (int n = 0; n < 2; ++n) {
        files.Raise();
        std::vector<xcb_window_t> asked;
        EXPECT_TRUE(Eventually([&] { return !(asked = Asked()).empty(); }));
        EXPECT_EQ(asked, std::vector<xcb_window_t>{own});
    }
    setenv("DISPLAY", host.Display().c_str(), 1);
    files.End();
    ended.get_future().wait();
}

TEST_F(RaiseWindows, DoesNothingWithoutAWindowManager) {
    WindowOf(dialog);
    RaiseWindowsOf(dialog, host.Display().c_str());
    EXPECT_TRUE(Asked().empty());
}
