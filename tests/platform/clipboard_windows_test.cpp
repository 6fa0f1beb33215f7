#include "platform/clipboard.h"

#include <gtest/gtest.h>
#include <windows.h>

using namespace KAV::Platform;

namespace {

/// The owner of the clipboard when its viewers were last notified.
struct SHeard {
    int times = 0;
    DWORD ownersProcess = 0; // 0: no owner
} heard;

LRESULT CALLBACK Receive(HWND window, UINT message, WPARAM first, LPARAM second) {
    if (message != WM_DRAWCLIPBOARD) return DefWindowProcW(window, message, first, second);
    ++heard.times;
    heard.ownersProcess = 0;
    const HWND owner = GetClipboardOwner();
    if (owner != nullptr) GetWindowThreadProcessId(owner, &heard.ownersProcess);
    return 0;
}

} // namespace

TEST(Clipboard, IsOurOwnWhileItIsWritten) {
    WNDCLASSW kind{};
    kind.lpfnWndProc = Receive;
    kind.hInstance = GetModuleHandleW(nullptr);
    kind.lpszClassName = L"KAV test viewer";
    ASSERT_NE(RegisterClassW(&kind), 0);
    const HWND viewer = CreateWindowExW(
        0, kind.lpszClassName, L"", 0, 0, 0, 1, 1, HWND_MESSAGE, nullptr, kind.hInstance, nullptr);
    ASSERT_NE(viewer, nullptr);
    SetClipboardViewer(viewer);
    heard = {};
    ASSERT_TRUE(WriteClipboard("clipboard:KAV test", "1234", 4)); // notifies viewers of this thread at once
    EXPECT_GE(heard.times, 1);
    EXPECT_EQ(heard.ownersProcess, GetCurrentProcessId());
    EXPECT_EQ(ReadClipboard("clipboard:KAV test").size, 4u);
    DestroyWindow(viewer);
}

TEST(Clipboard, LeavesNoWindowThatOthersWouldWaitFor) {
    ASSERT_TRUE(WriteClipboard("clipboard:KAV test", "1234", 4));
    EXPECT_EQ(GetClipboardOwner(), nullptr);
    EXPECT_EQ(ReadClipboard("clipboard:KAV test").size, 4u);
}
