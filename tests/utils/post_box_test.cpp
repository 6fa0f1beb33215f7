#include "utils/post_box.h"

#include <gtest/gtest.h>
#include <thread>
#include <vector>

using namespace KAV::Utils;

using Messages = std::vector<std::uint32_t>;

TEST(PostBox, GivesWhatHasComeInOrderAndOnce) {
    CPostBox box;
    box.Open();
    box.Post(2);
    std::thread([&] { box.Post(1); }).join();
    EXPECT_EQ(box.Take(), (Messages{2, 1}));
    EXPECT_EQ(box.Take(), Messages{});
}

TEST(PostBox, TakesNothingBeforeItIsOpenAndKeepsNothingWhenItIsClosed) {
    CPostBox box;
    box.Post(1);
    box.Open();
    EXPECT_EQ(box.Take(), Messages{});
    box.Post(2);
    box.Close();
    box.Post(3);
    box.Open();
    EXPECT_EQ(box.Take(), Messages{});
}
