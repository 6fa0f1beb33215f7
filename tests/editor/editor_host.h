#pragma once

#include "tests/editor/host_loop.h"
#include "tests/support/loaded_library.h"
#include "vst/vst2.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace KAV::Tests {

/// What the effect has called the host for.
struct SHostCall {
    std::int32_t opcode = 0;
    std::int32_t index = 0;
    std::intptr_t value = 0;
    float option = 0.0f;
    std::thread::id thread;
};

/// A host of the delivered library: one thread of it makes all calls of the editor, and calls idle at a rate
/// while the editor is open. Everything that the effect asks is noted.
class CEditorHost final {
public:
    /// `idleHz` 0: it never calls idle.
    explicit CEditorHost(const CLoadedLibrary& library, int idleHz = 25);
    /// Closes the effect; the editor stays open if it is, so that this is part of the test.
    ~CEditorHost();
    CEditorHost(const CEditorHost&) = delete;
    CEditorHost& operator=(const CEditorHost&) = delete;

    /// Runs `work` on the host's thread, and waits for it.
    void Run(const std::function<void()>& work) { _loop.Run(work); }
    /// One call of the dispatcher on the host's thread.
    std::intptr_t Dispatch(VST::EffectOpcode opcode, std::int32_t index = 0, std::intptr_t value = 0,
        void* pointer = nullptr, float option = 0.0f);

    /// `parent` is a window of the system's: its address or its number.
    bool Open(std::uintptr_t parent);
    void Close();
    VST::ERect Rect();
    /// The next idle calls come on another thread than all others.
    void IdleElsewhere(bool elsewhere) { _idlesElsewhere = elsewhere; }
    /// What the host answers to a request for another size.
    void AcceptSizes(bool accepts) { _acceptsSizes = accepts; }
    /// Runs inside the next call of this kind that the effect makes.
    void Inside(std::int32_t opcode, std::function<void()> work);

    VST::AEffect* Effect() const noexcept { return _effect; }
    std::thread::id Thread() const noexcept { return _loop.Thread(); }
    std::vector<SHostCall> Calls() const;
    std::vector<SHostCall> Calls(std::int32_t opcode) const;
    std::size_t Count(std::int32_t opcode) const { return Calls(opcode).size(); }
    std::string Chunk();
    /// The first parameter whose name, which hosts get cut, this begins with.
    std::int32_t IndexOf(std::string_view name);
    int Idles() const noexcept { return _idles; }

private:
    static std::intptr_t Answer(
        VST::AEffect*, std::int32_t opcode, std::int32_t index, std::intptr_t value, void*, float option);
    std::intptr_t Note(std::int32_t opcode, std::int32_t index, std::intptr_t value, float option);
    void Idle();

    VST::AEffect* _effect = nullptr;
    std::atomic<bool> _idlesElsewhere{false};
    std::atomic<bool> _acceptsSizes{true};
    std::atomic<bool> _isOpen{false};
    std::atomic<int> _idles{0};

    mutable std::mutex _mutex;
    std::vector<SHostCall> _calls; // under the lock
    std::int32_t _insideOf = -1;   // under the lock
    std::function<void()> _inside; // under the lock
    CHostLoop _loop;
};

/// Waits for a fact, at most half a minute.
bool Until(const std::function<bool()>& holds);

} // namespace KAV::Tests
