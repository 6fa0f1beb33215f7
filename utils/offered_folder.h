#pragma once

#include <filesystem>
#include <string_view>
#include <vector>

namespace KAV::Utils {

/// A folder that a dialog can open in: made with its missing parents, and removed with them at the end of the
/// object, as far as they are still empty. What was there before stays. Threads: any.
class COfferedFolder final {
public:
    /// A path that ends with a slash.
    explicit COfferedFolder(std::u16string_view path);
    ~COfferedFolder();
    COfferedFolder(const COfferedFolder&) = delete;
    COfferedFolder& operator=(const COfferedFolder&) = delete;

private:
    std::vector<std::filesystem::path> _made; // the innermost first
};

} // namespace KAV::Utils
