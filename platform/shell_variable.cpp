#include "platform/shell_variable.h"

namespace KAV::Platform {

namespace {

/// The value that a shell reads after "NAME="; false if it doesn't end on its line.
bool Unquote(std::string_view text, std::string& value) {
    value.clear();
    char quote = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (quote != 0 && c == quote) {
            quote = 0;
        } else if (quote == 0 && (c == '"' || c == '\'')) {
            quote = c;
        } else if (c == '\\' && quote != '\'') {
            if (++i == text.size()) return false;
            // Inside double quotes a backslash before an ordinary character stands for itself.
            const bool special =
                quote == 0 || std::string_view("\"\\$`").find(text[i]) != std::string_view::npos;
            if (!special) value += '\\';
            value += text[i];
        } else if (quote == 0 && (c == ' ' || c == '\t' || c == '\r')) {
            break;
        } else {
            value += c;
        }
    }
    return quote == 0;
}

} // namespace

std::string ShellVariable(std::string_view text, std::string_view name) {
    std::string found;
    while (!text.empty()) {
        const auto end = text.find('\n');
        auto line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        while (!line.empty() && (line.front() == ' ' || line.front() == '\t')) line.remove_prefix(1);
        if (!line.starts_with(name) || line.substr(name.size(), 1) != "=") continue;
        std::string value;
        if (Unquote(line.substr(name.size() + 1), value)) found = value;
    }
    return found;
}

} // namespace KAV::Platform
