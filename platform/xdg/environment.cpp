#include "platform/xdg/environment.h"

#include <unistd.h>

extern char** environ;

namespace KAV::Platform {

CEnvironment::CEnvironment() {
    for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable)
        _variables.emplace_back(*variable);
}

const char* CEnvironment::Value(std::string_view name) const noexcept {
    for (const auto& variable : _variables) {
        if (variable.size() > name.size() && variable[name.size()] == '=' && variable.starts_with(name))
            return variable.c_str() + name.size() + 1;
    }
    return nullptr;
}

std::vector<char*> CEnvironment::ForProgram() {
    std::vector<char*> texts;
    for (auto& variable : _variables) {
        if (!variable.starts_with("LD_")) texts.push_back(variable.data());
    }
    texts.push_back(nullptr);
    return texts;
}

} // namespace KAV::Platform
