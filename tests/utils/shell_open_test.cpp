#include "utils/shell_open.h"

#include <gtest/gtest.h>
#include <string>

using namespace KAV::Utils;
using namespace std::string_literals;

TEST(ShellOpen, RefusesAnEmptyOrIllFormedPath) {
    EXPECT_FALSE(ShellOpen(u""));
    EXPECT_FALSE(ShellOpen(u"", u"arguments"));
    EXPECT_FALSE(ShellOpen(u"/tmp/\xD800"));
    EXPECT_FALSE(ShellOpen(u"/tmp/a\0b"s));
}
