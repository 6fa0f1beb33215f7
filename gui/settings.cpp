#include "gui/settings.h"

#include "utils/location.h"
#include "utils/product.h"

#include <atomic>
#include <cstring>
#include <string>

namespace KAV::GUI {

namespace {

constexpr const char16_t* UsersOwn = u"HKEY_CURRENT_USER/Software/" KAV_VENDOR "/" KAV_PRODUCT "/";

std::atomic<const char16_t*> testLocation{nullptr};

std::u16string Location(std::u16string_view a_sName) {
    const char16_t* const location = testLocation.load(std::memory_order_acquire);
    return std::u16string(location != nullptr ? location : UsersOwn).append(a_sName);
}

} // namespace

std::optional<std::uint32_t> StoredNumber(std::u16string_view a_sName) noexcept {
    try {
        std::size_t size = 0;
        const auto stored = Utils::ReadUniversal(Location(a_sName), size);
        std::uint32_t number = 0;
        if (stored == nullptr || size != sizeof(number)) return std::nullopt;
        std::memcpy(&number, stored.get(), sizeof(number));
        return number;
    } catch (...) { // no memory for the path
        return std::nullopt;
    }
}

void StoreNumber(std::u16string_view a_sName, std::uint32_t a_nNumber) noexcept {
    try {
        Utils::WriteUniversal(Location(a_sName), &a_nNumber, sizeof(a_nNumber));
    } catch (...) { // the next session has the value of before
    }
}

void UseSettingsAt(const char16_t* a_psLocation) noexcept {
    testLocation.store(a_psLocation, std::memory_order_release);
}

} // namespace KAV::GUI
