#include "pixels/linux/glyph_search.h"

#include "platform/quiet_signals.h"

#include <atomic>
#include <deque>
#include <mutex>
#include <set>
#include <system_error>
#include <thread>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace KAV::Pixels {

namespace {

constexpr std::size_t MostFonts = 4; // the others would be tried only if all of these can't be used

} // namespace

/// Shared with the thread, and everything but `make` and `answers` guarded by the mutex.
struct CGlyphSearch::SState {
    explicit SState(MakeFontFinder itsMake) : make(std::move(itsMake)) {}

    const MakeFontFinder make;
    std::atomic<std::uint32_t> answers = 0;

    std::mutex mutex;
    bool isRunning = false;
    bool isGivenUp = false;
    std::deque<char32_t> wanted;                // the front one is being looked for
    std::unordered_set<char32_t> asked;         // and not answered
    std::unordered_map<char32_t, Fonts> answer; // its entries never change
    std::set<SFontFile> files;                  // what the answers point to

    void Take(char32_t character, const std::vector<SFontFile>& found) {
        Fonts fonts;
        for (const auto& font : found) {
            if (fonts.size() == MostFonts) break;
            fonts.push_back(&*files.insert(font).first);
        }
        answer.emplace(character, std::move(fonts));
        asked.erase(character);
        wanted.pop_front();
        answers.fetch_add(1, std::memory_order_release);
    }
};

CGlyphSearch::CGlyphSearch(MakeFontFinder make) : _state(std::make_shared<SState>(std::move(make))) {}

CGlyphSearch::~CGlyphSearch() {
    const std::scoped_lock lock(_state->mutex);
    _state->isGivenUp = true;
}

CGlyphSearch& CGlyphSearch::OfProcess() {
    static auto& search = *new CGlyphSearch(FindSystemFonts); // its thread may outlive all static objects
    return search;
}

const CGlyphSearch::Fonts* CGlyphSearch::FontsWith(char32_t character) {
    const std::scoped_lock lock(_state->mutex);
    const auto found = _state->answer.find(character);
    if (found != _state->answer.end()) return &found->second;
    if (_state->asked.insert(character).second) {
        try {
            _state->wanted.push_back(character);
        } catch (...) {
            _state->asked.erase(character);
            throw;
        }
    }
    if (!_state->isRunning) Start();
    return nullptr;
}

/// With the mutex held. A thread that can't be started is tried again with the next question.
void CGlyphSearch::Start() {
    try {
        const Platform::CQuietSignals quiet;
        std::thread([state = _state] { Run(state); }).detach();
        _state->isRunning = true;
    } catch (const std::system_error&) {}
}

void CGlyphSearch::Run(const std::shared_ptr<SState>& state) noexcept {
    try {
        Work(state);
    } catch (...) { // no memory: the next question begins again with what is left
        const std::scoped_lock lock(state->mutex);
        state->isRunning = false;
    }
}

void CGlyphSearch::Work(const std::shared_ptr<SState>& state) {
    const auto finder = state->make();
    while (true) {
        char32_t character = 0;
        {
            const std::scoped_lock lock(state->mutex);
            if (state->wanted.empty() || state->isGivenUp) {
                state->isRunning = false;
                return;
            }
            character = state->wanted.front();
        }
        const auto fonts = finder != nullptr ? finder->FontsWith(character) : std::vector<SFontFile>();
        const std::scoped_lock lock(state->mutex);
        state->Take(character, fonts);
    }
}

std::uint32_t CGlyphSearch::Answers() const noexcept {
    return _state->answers.load(std::memory_order_acquire);
}

} // namespace KAV::Pixels
