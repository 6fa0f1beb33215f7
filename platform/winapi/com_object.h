#pragma once

/// Objects of the system's graphics libraries. Only for Windows.
namespace KAV::Platform {

/// An object that is given back at the end, by the calls of the library that made it. Threads: one.
template<typename Object, typename Calls>
class CComObject final {
public:
    CComObject() = default;
    ~CComObject() { Reset(); }
    CComObject(const CComObject&) = delete;
    CComObject& operator=(const CComObject&) = delete;

    Object* Get() const noexcept { return _object; }
    explicit operator bool() const noexcept { return _object != nullptr; }
    /// Where a call that makes an object puts it. `calls` live longer.
    Object** Fill(const Calls& calls) noexcept {
        Reset();
        _calls = &calls;
        return &_object;
    }
    void Adopt(const Calls& calls, Object* object) noexcept { *Fill(calls) = object; }
    void Reset() noexcept {
        if (_object != nullptr) _calls->Release(_object);
        _object = nullptr;
    }

private:
    const Calls* _calls = nullptr;
    Object* _object = nullptr;
};

} // namespace KAV::Platform
