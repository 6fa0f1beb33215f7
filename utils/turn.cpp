#include "utils/turn.h"

#include <utility>

namespace KAV::Utils {

void CTurns::SetEnd(const CTurn&, ITurnEnd* end) noexcept {
    _end = end;
}

CTurn::CTurn(CTurns& turns)
    : _turns(turns), _isPart(turns._owner.load(std::memory_order_relaxed) == std::this_thread::get_id()) {
    if (_isPart) return;
    _turns._mutex.lock();
    _turns._owner.store(std::this_thread::get_id(), std::memory_order_relaxed);
}

CTurn::~CTurn() {
    if (_isPart) return;
    try {
        if (_turns._end != nullptr) _turns._end->OnTurnEnd(*this);
    } catch (...) { // out of memory: the changes are shown at the end of a later turn
    }
    const auto then = std::exchange(_turns._then, {});
    const auto shared = _turns.Watch();
    _turns._owner.store({}, std::memory_order_relaxed);
    _turns._mutex.unlock();
    for (const auto& what : then) {
        if (shared.IsThere()) what();
    }
}

void CTurn::Then(std::function<void()> what) {
    _turns._then.push_back(std::move(what));
}

} // namespace KAV::Utils
