#include "tests/support/comma_locale.h"

#include "tests/support/scratch_home.h"

#include <clocale>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

namespace KAV::Tests {

namespace {

#if defined(_WIN32)
constexpr const char* CommaName = "German_Germany.1252";

void Install() {}
#else
constexpr const char* CommaName = "de_DE.UTF-8";

void Install() { // the system may have only its own locale, so one is compiled for this process
    const auto folder = ScratchFolder() / "locales";
    std::filesystem::create_directory(folder);
    const std::string command =
        "localedef --no-archive -i de_DE -f UTF-8 '" + (folder / CommaName).string() + "' >/dev/null 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
    setenv("LOCPATH", folder.c_str(), 1);
}
#endif

} // namespace

CCommaLocale::CCommaLocale() {
    Install();
    Switch(true);
    EXPECT_STREQ(std::localeconv()->decimal_point, ",");
}

CCommaLocale::~CCommaLocale() {
    Switch(false);
}

void CCommaLocale::Switch(bool comma) {
    std::setlocale(LC_ALL, comma ? CommaName : "C");
}

} // namespace KAV::Tests
