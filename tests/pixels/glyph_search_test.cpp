#include "pixels/linux/glyph_search.h"

#include "tests/pixels/held_finder.h"

#include <csignal>
#include <new>
#include <pthread.h>

using namespace KAV;
using namespace KAV::Pixels;
using namespace KAV::Tests;

namespace {

using Paths = std::vector<std::string>;

Paths PathsOf(const CGlyphSearch::Fonts* fonts) {
    Paths paths;
    if (fonts == nullptr) return {"being looked for"};
    for (const auto* const font : *fonts) paths.push_back(font->path + ":" + std::to_string(font->index));
    return paths;
}

} // namespace

TEST(GlyphSearch, FindsLaterAndAsksOnceForEachCharacter) {
    CHeldFinder finder;
    finder.fonts = {{"a", 0}, {"b", 2}};
    CGlyphSearch search(finder.Maker());
    EXPECT_EQ(search.FontsWith(U'x'), nullptr);
    EXPECT_EQ(search.FontsWith(U'x'), nullptr);
    EXPECT_EQ(search.FontsWith(U'y'), nullptr);
    EXPECT_EQ(search.Answers(), 0u);
    finder.Release();
    WaitForAnswers(search, 2);
    EXPECT_EQ(PathsOf(search.FontsWith(U'x')), (Paths{"a:0", "b:2"}));
    EXPECT_EQ(PathsOf(search.FontsWith(U'y')), (Paths{"a:0", "b:2"}));
    EXPECT_EQ(search.FontsWith(U'x')->front(), search.FontsWith(U'y')->front()) << "kept once";
    EXPECT_EQ(finder.Asked(), U"xy");
}

TEST(GlyphSearch, WaitsForNothing) {
    CHeldFinder finder;
    {
        CGlyphSearch search(finder.Maker());
        EXPECT_EQ(search.FontsWith(U'x'), nullptr);
        EXPECT_EQ(search.FontsWith(U'y'), nullptr);
        finder.WaitUntilAsked();
    } // what is being looked for owns all that it needs
    finder.Release();
    finder.WaitUntilEnded();
    EXPECT_EQ(finder.Asked(), U"x") << "nobody needs the other one any more";
}

TEST(GlyphSearch, ItsThreadEndsWithTheWorkAndBeginsAgain) {
    CHeldFinder finder;
    finder.Release();
    CGlyphSearch search(finder.Maker());
    for (std::uint32_t n = 1; n <= 3; ++n) {
        search.FontsWith(U'a' + n);
        WaitForAnswers(search, n);
        finder.WaitUntilEnded();
    }
    EXPECT_EQ(finder.Made(), 3);
    EXPECT_EQ(finder.Asked(), U"bcd");
}

TEST(GlyphSearch, WithoutAFinderNoFontHasAnything) {
    CGlyphSearch search([] { return std::unique_ptr<IFontFinder>(); });
    EXPECT_EQ(search.FontsWith(U'x'), nullptr);
    WaitForAnswers(search, 1);
    EXPECT_EQ(PathsOf(search.FontsWith(U'x')), Paths{});
}

TEST(GlyphSearch, KeepsFourFonts) {
    CHeldFinder finder;
    finder.fonts = {{"a", 0}, {"b", 0}, {"c", 0}, {"d", 0}, {"e", 0}};
    finder.Release();
    CGlyphSearch search(finder.Maker());
    search.FontsWith(U'x');
    WaitForAnswers(search, 1);
    EXPECT_EQ(PathsOf(search.FontsWith(U'x')), (Paths{"a:0", "b:0", "c:0", "d:0"}));
}

TEST(GlyphSearch, TriesAgainAfterMemoryWasShort) {
    CHeldFinder finder;
    finder.Release();
    finder.Throw(true);
    CGlyphSearch search(finder.Maker());
    EXPECT_EQ(search.FontsWith(U'x'), nullptr);
    finder.WaitUntilEnded();
    EXPECT_EQ(search.Answers(), 0u);
    finder.Throw(false);
    while (search.Answers() == 0) {
        search.FontsWith(U'x');
        std::this_thread::yield();
    }
    EXPECT_NE(search.FontsWith(U'x'), nullptr);
}

TEST(GlyphSearch, ItsThreadTakesNoSignals) {
    CHeldFinder finder;
    finder.Release();
    std::atomic<int> blocked = 0;
    finder.inThread = [&blocked] {
        sigset_t mask;
        pthread_sigmask(SIG_BLOCK, nullptr, &mask);
        for (const int signal : {SIGINT, SIGTERM, SIGCHLD, SIGUSR1, SIGALRM})
            blocked += sigismember(&mask, signal);
    };
    CGlyphSearch search(finder.Maker());
    search.FontsWith(U'x');
    WaitForAnswers(search, 1);
    EXPECT_EQ(blocked, 5);
    sigset_t mask;
    pthread_sigmask(SIG_BLOCK, nullptr, &mask);
    EXPECT_EQ(sigismember(&mask, SIGUSR1), 0) << "and ours does as before";
}

TEST(GlyphSearch, MayBeAskedFromManyThreads) {
    CHeldFinder finder;
    finder.fonts = {{"a", 0}};
    finder.Release();
    CGlyphSearch search(finder.Maker());
    std::vector<std::thread> threads;
    for (int n = 0; n < 4; ++n) {
        threads.emplace_back([&search] {
            for (char32_t c = 0x4E00; c < 0x4E40; ++c) {
                while (search.FontsWith(c) == nullptr) std::this_thread::yield();
                EXPECT_EQ(PathsOf(search.FontsWith(c)), Paths{"a:0"});
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(search.Answers(), 64u);
    EXPECT_EQ(finder.Asked().size(), 64u);
}
