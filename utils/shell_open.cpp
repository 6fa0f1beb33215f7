#include "utils/shell_open.h"

#include "platform/opener.h"
#include "utils/path.h"
#include "utils/text.h"

namespace KAV::Utils {

bool ShellOpen(std::u16string_view path, std::u16string_view arguments) noexcept {
    try {
        if (path.find(u'\0') != std::u16string_view::npos) return false; // the system would see half of it
        const auto target = ToUtf8(path);
        if (target.empty()) return false;
        const bool program = GetExtension(path) == u"exe";
        return Platform::OpenWithDesktop(
            target, ToUtf8(arguments), program ? Platform::EOpen::Elevated : Platform::EOpen::Ordinary);
    } catch (...) { // no memory
        return false;
    }
}

} // namespace KAV::Utils
