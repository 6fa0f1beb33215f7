#pragma once

#include "platform/file_dialog.h"
#include "platform/xdg/dialog_control.h"

#include <optional>
#include <string>
#include <string_view>

/// The file dialog of the desktop portal, which the desktop shows in a process of its own. Only for the Linux
/// part of this folder.
namespace KAV::Platform {

/// The message bus of the user's session, as DBUS_SESSION_BUS_ADDRESS names it or where it usually is. Empty
/// if there is none; none is ever started.
std::string SessionBusAddress();

/// Asks on a connection of its own until the user has answered or `control` ends it. Nothing if there is no
/// portal with such dialogs, or if it doesn't answer within two seconds. Threads: one of the dialog's own.
/// Throws std::bad_alloc.
std::optional<SFileAnswer> AskPortal(
    const SFileRequest& request, const std::string& busAddress, CDialogControl& control);

/// The answer that the address of a file stands for; unusable unless it is one of this machine.
SFileAnswer AnswerOfAddress(std::string_view address);

} // namespace KAV::Platform
