#pragma once

#include "pixels/linux/glyph_search.h"

#include <atomic>
#include <condition_variable>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace KAV::Tests {

/// A finder of fonts that answers nothing until it is released. What a search gets of it lives on by itself.
class CHeldFinder final {
public:
    std::vector<Pixels::SFontFile> fonts; ///< what it finds for every character; set before Maker()
    std::function<void()> inThread;       ///< is run before each answer; the same

    Pixels::MakeFontFinder Maker() {
        _state->fonts = fonts;
        _state->inThread = inThread;
        return [state = _state] {
            ++state->made;
            return std::make_unique<CFinder>(state);
        };
    }
    /// From now on there is no memory, or there is again.
    void Throw(bool throws) { _state->throws = throws; }
    void Release() {
        const std::scoped_lock lock(_state->mutex);
        _state->isReleased = true;
        _state->changed.notify_all();
    }
    void WaitUntilAsked() {
        std::unique_lock lock(_state->mutex);
        _state->changed.wait(lock, [this] { return !_state->asked.empty(); });
    }
    /// As many have ended as have been made.
    void WaitUntilEnded() {
        std::unique_lock lock(_state->mutex);
        _state->changed.wait(lock, [this] { return _state->made > 0 && _state->ended == _state->made; });
    }
    int Made() const { return _state->made; }
    std::u32string Asked() const {
        const std::scoped_lock lock(_state->mutex);
        return _state->asked;
    }

private:
    struct SState {
        std::mutex mutex;
        std::condition_variable changed;
        bool isReleased = false;
        std::u32string asked;
        int ended = 0;
        std::atomic<int> made = 0;
        std::atomic<bool> throws = false;
        std::vector<Pixels::SFontFile> fonts;
        std::function<void()> inThread;
    };
    class CFinder final : public Pixels::IFontFinder {
    public:
        explicit CFinder(std::shared_ptr<SState> state) : _state(std::move(state)) {}
        ~CFinder() override {
            const std::scoped_lock lock(_state->mutex);
            ++_state->ended;
            _state->changed.notify_all();
        }
        std::vector<Pixels::SFontFile> FontsWith(char32_t character) override {
            std::unique_lock lock(_state->mutex);
            _state->asked += character;
            _state->changed.notify_all();
            _state->changed.wait(lock, [this] { return _state->isReleased; });
            if (_state->throws) throw std::bad_alloc();
            if (_state->inThread) _state->inThread();
            return _state->fonts;
        }

    private:
        const std::shared_ptr<SState> _state;
    };

    const std::shared_ptr<SState> _state = std::make_shared<SState>();
};

inline void WaitForAnswers(const Pixels::CGlyphSearch& search, std::uint32_t count) {
    while (search.Answers() < count) std::this_thread::yield();
}

} // namespace KAV::Tests
