#pragma once

#include "device_gui/editor_system.h"
#include "platform/window_loop.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <utility>

namespace KAV::Tests {

/// The loop of the editor's window, for the test; null while there is none. Threads: any.
class CPresentLoop final {
public:
    void Set(std::shared_ptr<Platform::CWindowLoop> loop) {
        const std::scoped_lock lock(_mutex);
        _loop = std::move(loop);
    }
    /// Runs `work` on the window's thread, and waits for it. False if there is no window.
    bool Run(const std::function<void()>& work) {
        std::shared_ptr<Platform::CWindowLoop> loop;
        {
            const std::scoped_lock lock(_mutex);
            loop = _loop;
        }
        const auto done = std::make_shared<std::promise<void>>();
        if (loop == nullptr || !loop->Post([work, done] {
                work();
                done->set_value();
            }))
            return false;
        done->get_future().wait();
        return true;
    }
    bool IsThere() {
        const std::scoped_lock lock(_mutex);
        return _loop != nullptr;
    }

    std::atomic<int> rounds = 0; ///< that the window's thread has made

private:
    std::mutex _mutex;
    std::shared_ptr<Platform::CWindowLoop> _loop;
};

/// The system's own windows and pictures, whose loop the test knows.
class CWatchedSystem final : public IEditorSystem, private Native::IEditor {
public:
    explicit CWatchedSystem(CPresentLoop& present) : _present(present) {}

    bool IsAvailable() const noexcept override { return _system->IsAvailable(); }
    GUI::SSurroundings Surroundings() noexcept override { return _system->Surroundings(); }
    std::int32_t FirstWidth(std::int32_t width) noexcept override { return _system->FirstWidth(width); }
    std::u16string BeginPictures() override { return _system->BeginPictures(); }
    void EndPictures() noexcept override { _system->EndPictures(); }
    void Prepare(std::span<const Native::SPictureWish> wishes) noexcept override { _system->Prepare(wishes); }
    bool Open(void* parent, std::int32_t width, std::int32_t height, Native::IEditor& editor) override {
        _editor = &editor;
        return _system->Open(parent, width, height, *this);
    }
    void Close() noexcept override { _system->Close(); }
    bool CallOut(const std::function<void()>& call) noexcept override { return _system->CallOut(call); }
    void ResizeParent(std::int32_t width, std::int32_t height) noexcept override {
        _system->ResizeParent(width, height);
    }

private:
    void OnOpened() noexcept override {
        _present.Set(Platform::CWindowLoop::OfThisThread());
        _editor->OnOpened();
    }
    void OnRound() noexcept override {
        ++_present.rounds;
        _editor->OnRound();
    }
    void OnClosing() noexcept override {
        _present.Set(nullptr);
        _editor->OnClosing();
    }

    CPresentLoop& _present;
    Native::IEditor* _editor = nullptr;
    std::unique_ptr<IEditorSystem> _system = MakeEditorSystem();
};

} // namespace KAV::Tests
