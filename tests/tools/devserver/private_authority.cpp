#include "tests/tools/devserver/private_authority.h"

#include "tests/support/file_text.h"

#include <string>
#include <vector>

#include <wincrypt.h>

namespace KAV::Tests {

namespace {

std::vector<BYTE> Certificate(const std::filesystem::path& file) {
    const std::string text = ReadText(file);
    const auto length = static_cast<DWORD>(text.size());
    DWORD size = 0;
    if (!CryptStringToBinaryA(
            text.data(), length, CRYPT_STRING_BASE64HEADER, nullptr, &size, nullptr, nullptr)) {
        return {};
    }
    std::vector<BYTE> bytes(size);
    CryptStringToBinaryA(
        text.data(), length, CRYPT_STRING_BASE64HEADER, bytes.data(), &size, nullptr, nullptr);
    return bytes;
}

bool AddToTheUsersAuthorities(const std::vector<BYTE>& certificate) {
    const HCERTSTORE store =
        CertOpenStore(CERT_STORE_PROV_SYSTEM_REGISTRY_W, 0, 0, CERT_SYSTEM_STORE_CURRENT_USER, L"Root");
    if (store == nullptr) return false;
    const bool isAdded = CertAddEncodedCertificateToStore(store, X509_ASN_ENCODING, certificate.data(),
                             static_cast<DWORD>(certificate.size()), CERT_STORE_ADD_ALWAYS, nullptr) != 0;
    return CertCloseStore(store, 0) != 0 && isAdded;
}

} // namespace

bool CPrivateAuthority::IsPossible() noexcept {
    const HMODULE system = GetModuleHandleW(L"ntdll.dll");
    return system != nullptr && GetProcAddress(system, "wine_get_version") != nullptr;
}

CPrivateAuthority::CPrivateAuthority(const std::filesystem::path& file)
    : _name(L"Software\\KAV test " + std::to_wstring(GetCurrentProcessId())) {
    const auto certificate = Certificate(file);
    if (!IsPossible() || certificate.empty()) return;
    // An earlier process of the same number may have crashed.
    RegDeleteTreeW(HKEY_CURRENT_USER, _name.c_str());
    // It can't be a volatile key, because the list adds permanent keys below it.
    if (RegCreateKeyExW(HKEY_CURRENT_USER, _name.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS,
            nullptr, &_user, nullptr) != ERROR_SUCCESS) {
        return;
    }
    _isTrusted = RegOverridePredefKey(HKEY_CURRENT_USER, _user) == ERROR_SUCCESS &&
                 AddToTheUsersAuthorities(certificate);
}

CPrivateAuthority::~CPrivateAuthority() {
    if (_user == nullptr) return;
    RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    RegCloseKey(_user);
    RegDeleteTreeW(HKEY_CURRENT_USER, _name.c_str());
}

} // namespace KAV::Tests
