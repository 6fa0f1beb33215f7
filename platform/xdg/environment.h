#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The environment of this process as it was at one moment. Only for the Linux part of this folder.
namespace KAV::Platform {

/// The host may change its environment at any time, and the texts that another thread is just reading are
/// then moved or freed. So a thread of ours that starts programs never reads the environment: the thread that
/// asks for the program copies it.
///
/// Threads: one at a time.
class CEnvironment final {
public:
    CEnvironment(); ///< a copy of what this process has now; throws std::bad_alloc

    /// The value of a variable, null if there is none.
    const char* Value(std::string_view name) const noexcept;
    /// For a new program, with a null at the end: all but the variables that the host may have set for
    /// loading its own libraries. Valid as long as this object. Throws std::bad_alloc.
    std::vector<char*> ForProgram();

private:
    std::vector<std::string> _variables; // as NAME=VALUE
};

} // namespace KAV::Platform
