#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <random>
#include <span>
#include <string>

namespace KAV::Tests {

/// What a random test decides by: a seed, which decides without end, or the bytes of a fuzzer, which can then
/// change each decision by itself. When the bytes are used up, everything is 0.
class CChance {
public:
    explicit CChance(std::uint32_t seed) : _random(seed) {}
    explicit CChance(std::span<const std::uint8_t> bytes) : _bytes(bytes) {}

    bool IsOver() const { return !_random && _bytes.empty(); }
    std::uint32_t Below(std::uint32_t end) { return Number(end - 1) % end; }
    bool OneIn(std::uint32_t count) { return Below(count) == 0; }
    std::int32_t Between(std::int32_t first, std::int32_t last) {
        return first + static_cast<std::int32_t>(Below(static_cast<std::uint32_t>(last - first + 1)));
    }
    float Share() { return static_cast<float>(Below(1001)) / 1000.0f; }
    /// Any float there is, also one that is no number.
    float AnyFloat() { return std::bit_cast<float>(AnyNumber()); }
    std::uint32_t AnyNumber() { return Number(~0u); }
    std::string AnyText(std::uint32_t longest) {
        std::string text(Below(longest + 1), '\0');
        for (char& byte : text) byte = static_cast<char>(Below(256));
        return text;
    }
    template<typename Choices>
    const auto& OneOf(const Choices& choices) {
        return choices[Below(static_cast<std::uint32_t>(std::size(choices)))];
    }

private:
    /// Uses as few bytes as can decide, so that a fuzzer that changes one byte changes one decision.
    std::uint32_t Number(std::uint32_t most) {
        if (_random) return static_cast<std::uint32_t>((*_random)());
        std::uint32_t number = 0;
        for (; most > 0 && !_bytes.empty(); most >>= 8u) {
            number = number << 8u | _bytes.front();
            _bytes = _bytes.subspan(1);
        }
        return number;
    }

    std::optional<std::mt19937> _random;
    std::span<const std::uint8_t> _bytes;
};

} // namespace KAV::Tests
