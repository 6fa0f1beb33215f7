#include "platform/opener.h"

#include "platform/xdg/detached_program.h"

#include <utility>

namespace KAV::Platform {

bool OpenWithDesktop(const std::string& target, const std::string&, EOpen) noexcept {
    try {
        CEnvironment environment;
        const auto opener = FindProgram("xdg-open", environment);
        if (opener.empty() || target.empty()) return false;
        const bool looksLikeOption = target.front() == '-';
        return StartDetached(opener, {looksLikeOption ? "./" + target : target}, std::move(environment));
    } catch (...) { // no memory
        return false;
    }
}

} // namespace KAV::Platform
