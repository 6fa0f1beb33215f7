#pragma once

#include <filesystem>
#include <string>

#include <windows.h>

namespace KAV::Tests {

/// While it lives, this process trusts an authority, and no other does: in this process alone another key
/// stands for the user's own, and the list of authorities below it. A process that crashes leaves that key,
/// which nobody reads. Only under Wine. On Windows itself the user is asked about each change of such a list:
/// there nothing is touched.
class CPrivateAuthority final {
public:
    static bool IsPossible() noexcept;

    /// From a PEM file, before the process first asks for a list of authorities: that answer is kept.
    explicit CPrivateAuthority(const std::filesystem::path& file);
    ~CPrivateAuthority();
    CPrivateAuthority(const CPrivateAuthority&) = delete;
    CPrivateAuthority& operator=(const CPrivateAuthority&) = delete;

    bool IsTrusted() const noexcept { return _isTrusted; }

private:
    std::wstring _name;   // of the key that stands for the user's
    HKEY _user = nullptr; // that key; null: there is none
    bool _isTrusted = false;
};

} // namespace KAV::Tests
