#pragma once

#include "device/parameter_table.h"

#include <array>
#include <atomic>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <list>
#include <mutex>

namespace KAV {

/// The host as the queue sees it. One thread at a time calls it, with no lock held; a call may take long and
/// may call back.
class IHostRoad {
public:
    IHostRoad() = default;
    IHostRoad(const IHostRoad&) = delete;
    IHostRoad& operator=(const IHostRoad&) = delete;

    virtual void BeginEdit(std::int32_t index) noexcept = 0;
    virtual void Value(std::int32_t index, float normal) noexcept = 0;
    virtual void EndEdit(std::int32_t index) noexcept = 0;
    virtual void Latency(std::int32_t samples) noexcept = 0;
    /// Pixels. False if the host leaves the window as it is.
    virtual bool Size(std::int32_t width, std::int32_t height) noexcept = 0;
    /// The present time in milliseconds, modulo 2^32. Asked on the thread that empties the queue.
    virtual std::uint32_t NowMs() const noexcept = 0;

protected:
    ~IHostRoad() = default;
};

/// Gives the host's window another size, where the host itself doesn't. Waits for nothing and calls nothing
/// else.
class IHostWindow {
public:
    virtual void ResizeParent(std::int32_t width, std::int32_t height) noexcept = 0; ///< pixels

protected:
    IHostWindow() = default;
    ~IHostWindow() = default;
};

/// What the host has to hear of one instance: edits, latencies and sizes, in the order in which they
/// happened.
///
/// Emptying the queue passes on every entry that may go, the oldest first. An entry that has to wait holds
/// back only later entries of its own parameter; all others pass it. So each parameter keeps its order, and
/// no value waits because the user has just let go of another control.
///
/// - A value directly after one of the same parameter replaces it, and so does a size directly after a size.
///   All other entries reach the host as they are.
/// - The end of an edit goes out at least 100 ms after the host got the last value of its parameter, and
///   never in the same emptying. A host that records automation looks at the edit once per audio block: one
///   that begins and ends in between is lost to it, and it sets the parameter back. An edit that begins
///   meanwhile waits for the end of the one before.
/// - Latencies and sizes make a host rebuild what it has, so they wait for its idle call. Closing the editor
///   passes on latencies and all ends, and drops sizes.
/// - A host that never makes idle calls gets edits directly, from a thread of the editor's. The first idle
///   call ends that for good.
///
/// A host may close the editor, or end the instance, inside a call, and while a direct call is under way also
/// on another thread. So whoever empties the queue holds it by a shared pointer.
///
/// Threads: any but the audio thread. No lock is held while the host is called.
class CHostQueue final {
public:
    static constexpr std::uint32_t EndDelayMs = 100;
    static constexpr std::uint64_t MostAdded = 1000;

    /// Why the queue is emptied, which decides what may go. Direct: what a turn passes on, on a thread that
    /// isn't the host's.
    enum class EOccasion { Turn, Idle, Close, Direct };

    // Indexes are those of the host; others name nothing and are dropped. Times and order are those of the
    // calls.
    void PushBegin(std::int32_t index);
    void PushValue(std::int32_t index, float normal);
    void PushEnd(std::int32_t index);
    void PushLatency(std::int32_t samples);
    void PushSize(std::int32_t width, std::int32_t height);

    /// Passes on what may go, including what the host's answers add meanwhile: up to MostAdded entries, so
    /// that it ends however fast other threads add more. Does nothing while another call of it is at work, be
    /// it further up on the same thread or on another: that one takes care of what has been added, and of
    /// closing as well. But closing doesn't wait for a direct call: it takes over, and the direct emptying
    /// ends with the call that it is in.
    void Empty(IHostRoad& road, EOccasion occasion);
    /// Whether a direct emptying has anything to do: the host has made no idle call so far.
    bool IsDirect() const noexcept { return !_hasIdled; }
    /// Sets what gives the host's window its size when the host refuses to; null: nothing. The one before is
    /// not called any more when this returns.
    void SetWindow(IHostWindow* window);
    /// The instance ends: nothing is passed on any more, and an emptying at work ends with its present call.
    void End();

private:
    enum class EKind { Begin, Value, End, Latency, Size };

    struct SEntry {
        EKind kind = EKind::Begin;
        std::uint64_t number = 0; // of all that were pushed, from 1
        std::int32_t first = 0;   // index, samples or width
        std::int32_t second = 0;  // height
        float normal = 0.0f;
    };
    /// When the host got the last value of a parameter.
    struct SPassed {
        std::uint64_t emptying = 0; // 0: never
        std::uint32_t ms = 0;
    };

    void PushEdit(const SEntry& entry);
    void Push(SEntry entry);
    static bool IsReplaced(const SEntry& entry, const SEntry& next) noexcept;
    using Parameters = std::bitset<HostParameters>;

    bool MayGo(
        const SEntry& entry, EOccasion occasion, std::uint32_t nowMs, Parameters& waiting) const noexcept;
    void Remove(std::list<SEntry>::iterator entry) noexcept;
    void DropSizes() noexcept;
    /// Passes one entry on, without the lock. False when this emptying is over: another one has taken its
    /// place, or the instance has ended.
    bool PassOne(
        std::unique_lock<std::mutex>& lock, IHostRoad& road, const SEntry& entry, std::uint64_t emptying);
    bool IsEndDue(std::int32_t index, std::uint32_t nowMs) const noexcept;
    /// False if it is a size that the host refuses.
    static bool Pass(IHostRoad& road, const SEntry& entry) noexcept;

    std::atomic<bool> _hasIdled = false; // once true it stays so

    std::mutex _mutex;
    // Under the lock
    std::list<SEntry> _entries; // the oldest first; only an emptying takes some out
    // For those to come: also when memory is short, an edit that the host has heard of has to end there.
    std::list<SEntry> _unused = std::list<SEntry>(3 * HostParameters);
    std::array<SPassed, HostParameters> _values;
    std::uint64_t _pushed = 0;    // so far, replaced ones included
    std::uint64_t _emptyings = 0; // begun so far
    bool _isEmptying = false;     // the one begun last is at work
    bool _isDirect = false;       // and it is a direct one
    bool _isClosing = false;      // and closing is part of it
    bool _isOver = false;         // the instance has ended
    IHostWindow* _window = nullptr;
};

} // namespace KAV
