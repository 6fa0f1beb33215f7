#pragma once

#include "gui/settings.h"
#include "utils/text.h"

#include <random>
#include <string>

namespace KAV::Tests {

/// Settings of editors that no other process and no other test has, instead of the user's during its
/// lifetime. At first there are none.
class COwnSettings final {
public:
    COwnSettings() { GUI::UseSettingsAt(_location.c_str()); }
    ~COwnSettings() { GUI::UseSettingsAt(nullptr); }
    COwnSettings(const COwnSettings&) = delete;
    COwnSettings& operator=(const COwnSettings&) = delete;

    std::u16string At(std::u16string_view name) const { return _location + std::u16string(name); }

private:
    std::u16string _location = u"HKEY_CURRENT_USER/Software/Kavelin/Test " +
                               Utils::ToUtf16(std::to_string(std::random_device()())) + u"/";
};

} // namespace KAV::Tests
