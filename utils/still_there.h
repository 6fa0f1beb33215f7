#pragma once

#include <memory>

namespace KAV::Utils {

/// Whether an object still exists, for whatever may run after its end: an answer of the user, for example,
/// which must not touch an asker that has gone.
///
/// Lifetime: refers to the CLife of that object and may outlive it.
/// Threads: any. The result stays true only on the thread that destroys the object, or on one that has ended
/// before: on others it may be out of date at once.
class CStillThere final {
public:
    bool IsThere() const noexcept { return !_life.expired(); }

private:
    friend class CLife;
    explicit CStillThere(const std::shared_ptr<const char>& life) noexcept : _life(life) {}

    std::weak_ptr<const char> _life;
};

/// A member of an object that others ask about: both end together. Threads: any for Watch().
class CLife final {
public:
    CLife() = default;
    CLife(const CLife&) = delete;
    CLife& operator=(const CLife&) = delete;

    CStillThere Watch() const noexcept { return CStillThere(_life); }

private:
    std::shared_ptr<const char> _life = std::make_shared<const char>(); // only here: nothing else prolongs it
};

} // namespace KAV::Utils
