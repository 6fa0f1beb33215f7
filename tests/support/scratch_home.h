#pragma once

#include <filesystem>

namespace KAV::Tests {

/// An empty home folder, with the user's configuration, data, cache, document and temporary folders inside,
/// for the process and its children, so that tests can neither read nor leave files of the real user. Created
/// before the first test, removed at the end.
class CScratchHome final {
public:
    CScratchHome();
    ~CScratchHome();
    CScratchHome(const CScratchHome&) = delete;
    CScratchHome& operator=(const CScratchHome&) = delete;

private:
    std::filesystem::path _folder;
};

/// A folder of this process for the files of a test; empty at the first call.
std::filesystem::path ScratchFolder();

} // namespace KAV::Tests
