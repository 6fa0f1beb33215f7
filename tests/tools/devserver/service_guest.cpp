// An instance with a running service. service_test starts this program, after it has prepared the server and
// the previous session's log. Exits with 0 if the instance knows the version in KAV_EXPECT; "nothing" stands
// for no version. KAV_AUTHORITIES is a PEM file of the authorities to trust; exits with NotPossible where
// that can't be set.

#include "device_gui/new_version_led.h"
#include "device_gui/xxx_gui.h"
#include "tests/support/recording_host.h"
#include "utils/text.h"

#if defined(_WIN32)
#include "tests/tools/devserver/private_authority.h"

#include <optional>
#endif

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

using namespace KAV;
using namespace KAV::Tests;

namespace {

constexpr int NotPossible = 77;

std::u16string Variable(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? Utils::ToUtf16(value) : std::u16string();
}

/// Sets the folder of the log. Wine has its own folders, whatever its caller sets.
void UseTemporaryFolder(const char* folder) {
#if defined(_WIN32)
    for (const char* const name : {"TEMP", "TMP"}) _putenv_s(name, folder);
#else
    setenv("TMPDIR", folder, 1);
#endif
}

void Wait(int ms) {
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

} // namespace

int main() {
    if (const char* const folder = std::getenv("KAV_TEMPORARY")) UseTemporaryFolder(folder);
    const auto expected = Variable("KAV_EXPECT");
    const auto authorities = Variable("KAV_AUTHORITIES");
#if defined(_WIN32) // the list of authorities is always the system's
    std::optional<CPrivateAuthority> authority;
    if (!authorities.empty()) {
        if (!CPrivateAuthority::IsPossible()) {
            std::puts("the user's own list of authorities stays as it is");
            return NotPossible;
        }
        if (!authority.emplace(authorities).IsTrusted()) {
            std::puts("the authority can't be added");
            return 1;
        }
    }
#endif
    const auto origin = Variable("KAV_ORIGIN");
    const int triesForNothing = origin.empty() ? 0 : 200;
    const Utils::SMakerService service{origin, {}, u"0123abcd", u"vst24_test", authorities};
    std::u16string told;
    bool lampIsLit = false;
    {
        CHostedEffect first(nullptr, service);
        auto& gui = first.Device().GUI();
        for (int i = 0; i < 500 && gui.Version().LatestVersion().empty(); ++i) {
            if (expected == u"nothing" && i == triesForNothing) break;
            Wait(20);
        }
        Wait(500); // for the report, which has its own thread
        gui.CreateGUIWindow();
        told = gui.Maker().NewVersionText() + u"|" + gui.Maker().WhatsNewText() + u"|" +
               gui.Version().DownloadAddress();
        lampIsLit = gui.Find<CNewVersionLED>()->IsVisible();
        const CHostedEffect second(nullptr, service);
        Wait(500);
    }
    const std::u16string wanted = expected == u"nothing" ? u"||"
                                                         : u"New version " + expected +
                                                               u" is available...|What's new in version " +
                                                               expected + u"...|https://example.invalid/";
    std::printf("%s, the lamp is %s\n", Utils::ToUtf8(told).c_str(), lampIsLit ? "lit" : "dark");
    return told == wanted && lampIsLit == (expected != u"nothing") ? 0 : 1;
}
