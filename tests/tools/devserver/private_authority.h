#pragma once

#include <filesystem>
#include <string>

#include <windows.h>

namespace KAV::Tests {

/// While it lives, this process trusts an authority that no other process trusts: only in this process
/// another key replaces the user's own, including the list of authorities below it. A process that crashes
/// leaves that key behind, where it is never read. Only under Wine: Windows itself asks the user about each
/// change of such a list, so nothing is changed there.
class CPrivateAuthority final {
public:
    static bool IsPossible() noexcept;

    /// From a PEM file. Must precede the process's first query of a list of authorities, whose result is
    /// kept.
    explicit CPrivateAuthority(const std::filesystem::path& file);
    ~CPrivateAuthority();
    CPrivateAuthority(const CPrivateAuthority&) = delete;
    CPrivateAuthority& operator=(const CPrivateAuthority&) = delete;

    bool IsTrusted() const noexcept { return _isTrusted; }

private:
    std::wstring _name;   // of the key that replaces the user's
    HKEY _user = nullptr; // that key; null: there is none
    bool _isTrusted = false;
};

} // namespace KAV::Tests
