#include "platform/opener.h"

#include "platform/xdg/detached_program.h"

namespace KAV::Platform {

bool OpenWithDesktop(const std::string& target, const std::string&, EOpen) noexcept {
    try {
        const auto opener = FindProgram("xdg-open");
        if (opener.empty() || target.empty()) return false;
        const bool looksLikeOption = target.front() == '-';
        return StartDetached(opener, {looksLikeOption ? "./" + target : target});
    } catch (...) { // no memory
        return false;
    }
}

} // namespace KAV::Platform
