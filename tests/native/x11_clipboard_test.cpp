#include "native/linux/x11_clipboard.h"

#include "tests/native/overlay_fixture.h"
#include "tests/support/hand_clock.h"

#include <cstring>
#include <gtest/gtest.h>
#include <optional>
#include <string>

namespace KAV::Tests {

namespace {

/// Our clipboard, and another program on a connection of its own.
class X11Clipboard : public COverlayFixture {
protected:
    X11Clipboard() : _window(_host.MakeWindow(_host.Root(), 0, 0, 1, 1)) {
        const std::uint32_t changes = XCB_EVENT_MASK_PROPERTY_CHANGE;
        _other = xcb_connect(_host.Display().c_str(), nullptr);
        _window = xcb_generate_id(_other);
        xcb_create_window(_other, 0, _window, _host.Root(), 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
            XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &changes);
        _selection = _host.Atom("CLIPBOARD");
        _utf8 = _host.Atom("UTF8_STRING");
    }
    ~X11Clipboard() override { xcb_disconnect(_other); }

    Native::IX11Overlay* Overlay() override { return nullptr; }
    Native::CX11Clipboard& Clipboard() { return _display->Clipboard(); }

    void Paste() {
        Clipboard().Paste([this](const std::u16string& text) { _pasted.push_back(text); });
    }
    void SyncOther() { free(xcb_get_input_focus_reply(_other, xcb_get_input_focus(_other), nullptr)); }
    void Own() {
        xcb_set_selection_owner(_other, _window, _selection, XCB_CURRENT_TIME);
        SyncOther();
    }
    /// The next request for the other program's text.
    xcb_selection_request_event_t Request() {
        Sync();
        SyncOther();
        while (
            const std::unique_ptr<xcb_generic_event_t, Platform::SFree> event{xcb_poll_for_event(_other)}) {
            if ((event->response_type & 0x7F) == XCB_SELECTION_REQUEST)
                return reinterpret_cast<const xcb_selection_request_event_t&>(*event);
        }
        return {};
    }
    void Write(const xcb_selection_request_event_t& request, xcb_atom_t type, std::string_view bytes) {
        xcb_change_property(_other, XCB_PROP_MODE_REPLACE, request.requestor, request.property, type, 8,
            static_cast<std::uint32_t>(bytes.size()), bytes.data());
    }
    void Notify(const xcb_selection_request_event_t& request, bool isGiven) {
        std::array<char, 32> message{};
        xcb_selection_notify_event_t answer{};
        answer.response_type = XCB_SELECTION_NOTIFY;
        answer.requestor = request.requestor;
        answer.selection = request.selection;
        answer.target = request.target;
        answer.property = isGiven ? request.property : xcb_atom_t{XCB_ATOM_NONE};
        std::memcpy(message.data(), &answer, sizeof(answer));
        xcb_send_event(_other, 0, request.requestor, 0, message.data());
        SyncOther();
        Pump();
    }
    /// What the other program gets of our text in that form; empty: it is refused.
    std::optional<std::string> Asked(xcb_atom_t target) {
        const auto property = _host.Atom("ANSWER");
        xcb_delete_property(_other, _window, property);
        xcb_convert_selection(_other, _window, _selection, target, property, XCB_CURRENT_TIME);
        SyncOther();
        std::optional<std::string> answer;
        const bool came = Until([&] {
            SyncOther();
            while (const std::unique_ptr<xcb_generic_event_t, Platform::SFree> event{
                xcb_poll_for_event(_other)}) {
                if ((event->response_type & 0x7F) != XCB_SELECTION_NOTIFY) continue;
                const auto& notify = reinterpret_cast<const xcb_selection_notify_event_t&>(*event);
                if (notify.property == XCB_ATOM_NONE) return true;
                const std::unique_ptr<xcb_get_property_reply_t, Platform::SFree> reply(xcb_get_property_reply(
                    _other, xcb_get_property(_other, 1, _window, property, 0, 0, 100000), nullptr));
                answer = std::string(static_cast<const char*>(xcb_get_property_value(reply.get())),
                    static_cast<std::size_t>(xcb_get_property_value_length(reply.get())));
                return true;
            }
            return false;
        });
        EXPECT_TRUE(came);
        return answer;
    }

    xcb_connection_t* _other = nullptr;
    xcb_window_t _window = 0;
    xcb_atom_t _selection = 0;
    xcb_atom_t _utf8 = 0;
    std::vector<std::u16string> _pasted;
};

using Texts = std::vector<std::u16string>;

} // namespace

TEST_F(X11Clipboard, OtherProgramsGetWhatWasCopied) {
    Clipboard().Copy(u"Φωνή é");
    EXPECT_EQ(Asked(_utf8), "Φωνή é");
    EXPECT_EQ(Asked(XCB_ATOM_STRING), "???? \xE9");
    EXPECT_EQ(Asked(_host.Atom("image/png")), std::nullopt);
    const auto targets = Asked(_host.Atom("TARGETS"));
    ASSERT_TRUE(targets.has_value());
    std::vector<xcb_atom_t> atoms(targets->size() / 4);
    std::memcpy(atoms.data(), targets->data(), atoms.size() * 4);
    EXPECT_TRUE(std::find(atoms.begin(), atoms.end(), _utf8) != atoms.end());
}

TEST_F(X11Clipboard, OwnTextIsPastedAtOnce) {
    Clipboard().Copy(u"abc");
    Paste();
    EXPECT_EQ(_pasted, Texts{u"abc"}) << "before any event";
}

TEST_F(X11Clipboard, AfterAnotherProgramHasCopiedItsTextIsPasted) {
    Clipboard().Copy(u"abc");
    Own();
    Pump();
    Paste();
    EXPECT_TRUE(_pasted.empty());
    const auto request = Request();
    EXPECT_EQ(request.target, _utf8);
    Write(request, _utf8, "δέλτα");
    Notify(request, true);
    EXPECT_EQ(_pasted, Texts{u"δέλτα"});
}

TEST_F(X11Clipboard, ProgramsWithoutUnicodeAreAskedForLatin) {
    Own();
    Paste();
    Notify(Request(), false);
    const auto request = Request();
    EXPECT_EQ(request.target, xcb_atom_t{XCB_ATOM_STRING});
    Write(request, XCB_ATOM_STRING, "\xE9t\xE9");
    Notify(request, true);
    EXPECT_EQ(_pasted, Texts{u"été"});
}

TEST_F(X11Clipboard, ProgramWithoutATextIsNotAskedForEver) {
    Own();
    Paste();
    Notify(Request(), false);
    Notify(Request(), false);
    EXPECT_EQ(Request().requestor, 0u);
    EXPECT_TRUE(_pasted.empty());
}

TEST_F(X11Clipboard, LongTextComesInParts) {
    Own();
    Paste();
    const auto request = Request();
    const std::uint32_t size = 6;
    xcb_change_property(
        _other, XCB_PROP_MODE_REPLACE, request.requestor, request.property, _host.Atom("INCR"), 32, 1, &size);
    Notify(request, true);
    for (const auto* const part : {"abc", "\xCE", "\xB1", ""}) {
        EXPECT_TRUE(_pasted.empty());
        Write(request, _utf8, part);
        SyncOther();
        Pump();
    }
    EXPECT_EQ(_pasted, Texts{u"abcα"});
}

TEST_F(X11Clipboard, AnswerThatComesTooLateIsDropped) {
    CHandClock clock;
    Own();
    Paste();
    const auto late = Request();
    clock.Advance(Native::CX11Clipboard::LongestMs + 1);
    Write(late, _utf8, "late");
    Notify(late, true);
    EXPECT_TRUE(_pasted.empty());
    Paste();
    Notify(late, true);
    EXPECT_TRUE(_pasted.empty()) << "it isn't the answer to this request";
    const auto request = Request();
    clock.Advance(Native::CX11Clipboard::LongestMs);
    Write(request, _utf8, "in time");
    Notify(request, true);
    EXPECT_EQ(_pasted, Texts{u"in time"});
}

TEST_F(X11Clipboard, ForgottenRequestIsNotAnswered) {
    Own();
    Paste();
    const auto request = Request();
    Clipboard().Forget();
    Write(request, _utf8, "abc");
    Notify(request, true);
    EXPECT_TRUE(_pasted.empty());
}

TEST_F(X11Clipboard, OneAnswerIsPastedOnce) {
    Own();
    Paste();
    const auto request = Request();
    for (int n = 0; n < 2; ++n) {
        Write(request, _utf8, "abc");
        Notify(request, true);
    }
    EXPECT_EQ(_pasted, Texts{u"abc"});
}

TEST_F(X11Clipboard, WhatWasCopiedEndsWithTheConnection) {
    Clipboard().Copy(u"abc");
    EXPECT_EQ(Asked(_utf8), "abc");
    Connect();
    EXPECT_EQ(Asked(_utf8), std::nullopt);
}

TEST_F(X11Clipboard, NoOwnerMeansNoText) {
    Paste();
    Pump();
    Pump();
    EXPECT_TRUE(_pasted.empty());
}

} // namespace KAV::Tests
