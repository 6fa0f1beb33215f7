#include "platform/clipboard.h"
#include "platform/x11/xcb_library.h"
#include "tests/support/display.h"
#include "tests/support/other_threads.h"

#include <chrono>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace KAV::Platform;
using namespace KAV::Tests;

namespace {

/// Another program, which requests the clipboard in one of the display's own formats.
class COtherProgram final {
public:
    COtherProgram() {
        Xcb()->create_window(Connection(), 0, _window, FirstScreen(Connection())->root, 0, 0, 1, 1, 0,
            XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    }

    /// The numbers that it receives; nothing if it is refused.
    std::vector<xcb_atom_t> Ask(const char* target) {
        const auto property = Name("KAV_TEST");
        Xcb()->convert_selection(
            Connection(), _window, Name("CLIPBOARD"), Name(target), property, XCB_CURRENT_TIME);
        Xcb()->flush(Connection());
        for (int i = 0; i < 1000; ++i) {
            const XReply<xcb_generic_event_t> event(Xcb()->poll_for_event(Connection()));
            if (event == nullptr) {
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            } else if ((event->response_type & 0x7F) == XCB_SELECTION_NOTIFY) {
                const auto given = reinterpret_cast<xcb_selection_notify_event_t*>(event.get())->property;
                return given == XCB_ATOM_NONE ? std::vector<xcb_atom_t>() : Property(given);
            }
        }
        ADD_FAILURE() << "no answer";
        return {};
    }
    xcb_atom_t Name(const char* name) const { return Atom(Connection(), name); }

private:
    xcb_connection_t* Connection() const { return _connection.get(); }
    std::vector<xcb_atom_t> Property(xcb_atom_t property) const {
        const auto cookie =
            Xcb()->get_property(Connection(), 1, _window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, 64);
        const XReply<xcb_get_property_reply_t> reply(
            Xcb()->get_property_reply(Connection(), cookie, nullptr));
        const auto* const first = static_cast<const xcb_atom_t*>(Xcb()->get_property_value(reply.get()));
        return {first, first + Xcb()->get_property_value_length(reply.get()) / 4};
    }

    XConnection _connection = ConnectToDisplay(std::getenv("DISPLAY"));
    xcb_window_t _window = Xcb()->generate_id(_connection.get());
};

} // namespace

TEST(Clipboard, OffersOtherProgramsOnlyThePrivateFormat) {
    const CDisplay display;
    ASSERT_TRUE(WriteClipboard("clipboard:x", "1234", 4));
    COtherProgram other;
    EXPECT_EQ(
        other.Ask("TARGETS"), (std::vector<xcb_atom_t>{other.Name("TARGETS"), other.Name("clipboard:x")}));
    EXPECT_EQ(other.Ask("UTF8_STRING"), std::vector<xcb_atom_t>{});
    EXPECT_EQ(other.Ask("clipboard:x").size(), 1u);
}

TEST(Clipboard, IsHandedOutByAThreadThatTakesNoSignals) {
    const CDisplay display;
    const auto before = Threads();
    ASSERT_TRUE(WriteClipboard("clipboard:x", "1234", 4));
    const auto started = AwaitNewThreads(before, 1);
    ASSERT_EQ(started.size(), 1u);
    EXPECT_TRUE(BlocksAllSignals(*started.begin()));
}

TEST(Clipboard, HasOneThreadHoweverOftenItIsWritten) {
    const CDisplay display;
    const auto before = Threads();
    for (int i = 0; i < 20; ++i) ASSERT_TRUE(WriteClipboard("clipboard:x", "1234", 4));
    EXPECT_EQ(AwaitNewThreads(before, 1).size(), 1u);
}

TEST(Clipboard, FailsWithoutADisplay) {
    unsetenv("DISPLAY");
    EXPECT_FALSE(WriteClipboard("clipboard:x", "x", 1));
    EXPECT_EQ(ReadClipboard("clipboard:x").data, nullptr);
}

TEST(Clipboard, FailsAtOnceForADisplayThatIsGoneOrElsewhere) {
    for (const char* const display : {":4711", "host.example.invalid:0", "", "nonsense"}) {
        setenv("DISPLAY", display, 1);
        EXPECT_FALSE(WriteClipboard("clipboard:x", "x", 1)) << display;
        EXPECT_EQ(ReadClipboard("clipboard:x").data, nullptr) << display;
    }
}

TEST(Clipboard, ReachesOtherProcesses) {
    const CDisplay display;
    const pid_t child = fork(); // before there are threads
    if (child == 0) {
        for (int attempt = 0; attempt < 500; ++attempt) { // its parent may write at any time
            const SBytes bytes = ReadClipboard("clipboard:shared");
            if (bytes.data != nullptr) _exit(std::string(bytes.data.get(), bytes.size) == "hello" ? 0 : 1);
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        _exit(2);
    }
    EXPECT_TRUE(WriteClipboard("clipboard:shared", "hello", 5));
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
}

TEST(Clipboard, SurvivesTheEndOfTheDisplay) {
    CDisplay display;
    EXPECT_TRUE(WriteClipboard("clipboard:x", "x", 1));
    display.Kill();
    EXPECT_EQ(ReadClipboard("clipboard:x").data, nullptr);
    EXPECT_FALSE(WriteClipboard("clipboard:x", "x", 1));
}
