#include "utils/shell_open.h"

#include "platform/opener.h"
#include "utils/path.h"
#include "utils/text.h"

namespace KAV::Utils {

bool ShellOpen(std::u16string_view path, std::u16string_view arguments) noexcept {
    try {
        return OpenUrlOrFile(path, arguments, GetExtension(path) == u"exe");
    } catch (...) { // no memory
        return false;
    }
}

bool OpenUrlOrFile(std::u16string_view target, std::u16string_view arguments, bool asAdministrator) noexcept {
    try {
        if (target.find(u'\0') != std::u16string_view::npos) return false; // the system would stop there
        const auto text = ToUtf8(target);
        if (text.empty()) return false;
        return Platform::OpenWithDesktop(
            text, ToUtf8(arguments), asAdministrator ? Platform::EOpen::Elevated : Platform::EOpen::Ordinary);
    } catch (...) { // no memory
        return false;
    }
}

} // namespace KAV::Utils
