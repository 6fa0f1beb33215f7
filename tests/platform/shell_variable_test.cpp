#include "platform/shell_variable.h"

#include <gtest/gtest.h>

using namespace KAV::Platform;

TEST(ShellVariable, TakesWhatAShellWouldAssign) {
    EXPECT_EQ(ShellVariable("NAME=plain\n", "NAME"), "plain");
    EXPECT_EQ(ShellVariable("NAME=\"in quotes\"\n", "NAME"), "in quotes");
    EXPECT_EQ(ShellVariable("NAME='it is \"so\" \\'", "NAME"), "it is \"so\" \\");
    EXPECT_EQ(ShellVariable("NAME=\"a \\\"b\\\" \\$c \\d\"", "NAME"), "a \"b\" $c \\d");
    EXPECT_EQ(ShellVariable("NAME=a\\ b c", "NAME"), "a b");
    EXPECT_EQ(ShellVariable("NAME=value\r\n", "NAME"), "value");
}

TEST(ShellVariable, TakesTheLastOfItsLines) {
    EXPECT_EQ(ShellVariable("NAME=1\n#NAME=2\n  NAME=3\nOTHER=4\nNAMES=5\n", "NAME"), "3");
}

TEST(ShellVariable, IsEmptyWithoutALineThatEnds) {
    EXPECT_EQ(ShellVariable("", "NAME"), "");
    EXPECT_EQ(ShellVariable("NAME", "NAME"), "");
    EXPECT_EQ(ShellVariable("NAME=\"open\nstill open\"", "NAME"), "");
    EXPECT_EQ(ShellVariable("NAME=open\\", "NAME"), "");
}
