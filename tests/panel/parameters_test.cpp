// The panel's rows and the device's parameters are two tables on purpose, because neither folder may include
// the other. Where they describe the same control, they must agree.

#include "device/parameter_table.h"
#include "panel/layout.h"

#include <gtest/gtest.h>
#include <set>
#include <string>

using namespace KAV;

TEST(PanelRows, AgreeWithTheParametersOfTheFirstGroup) {
    std::set<int> seen;
    for (const auto& row : Panel::Rows()) {
        if (row.id < 0) continue;
        SCOPED_TRACE(row.name);
        const auto parameter = FindParameter(row.id);
        ASSERT_TRUE(parameter);
        seen.insert(row.id);
        const auto& definition = *parameter.row;
        std::string name(definition.name);
        if (definition.count > 1) name += std::to_string(row.id - definition.firstTag + 1);
        EXPECT_EQ(row.name, name);
        EXPECT_EQ(static_cast<float>(row.value), definition.initial(row.id - definition.firstTag, 0));
        if (definition.kind != EParameterKind::Continuous) continue;
        EXPECT_EQ(row.minimum, definition.minimum);
        EXPECT_EQ(row.maximum, definition.maximum);
        EXPECT_EQ(row.unit, definition.unit);
    }
    EXPECT_EQ(seen.size(), 37u) << "every parameter that a group or the device has";
}
