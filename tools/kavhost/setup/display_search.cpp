#include "tools/kavhost/setup/display_search.h"

#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/effect/effect.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

namespace KAV::Host {

namespace {

constexpr int Halvings = 30; // a float between 0 and 1 has 24 bits; small ones have more places
constexpr int Steps = 1000;
constexpr std::size_t ListedTexts = 8;

/// One parameter's display as a function of the host's value.
class CDisplay final {
public:
    CDisplay(CEffect& effect, std::int32_t index) : _effect(effect), _index(index) {}

    std::string At(float value) {
        _effect.SetParameter(_index, value);
        return _effect.ParameterDisplay(_index);
    }
    std::optional<SNumber> NumberAt(float value) {
        _text = At(value);
        return ReadNumber(_text);
    }

    /// Where `isAbove` turns true on the way from `low`, where it is false, to `high`, where it is true.
    template<typename PREDICATE>
    std::pair<float, float> Turn(float low, float high, PREDICATE isAbove) {
        for (int i = 0; i < Halvings; ++i) {
            const float middle = low + (high - low) / 2;
            const auto number = NumberAt(middle);
            (number && isAbove(number->value) ? high : low) = middle;
        }
        return {low, high};
    }

    std::string Label() const { return _effect.ParameterLabel(_index); }
    std::string Parameter() const { return "parameter " + std::to_string(_index); }

private:
    CEffect& _effect;
    std::int32_t _index;
    std::string _text; ///< keeps the last number's unit alive
};

[[noreturn]] void Fail(const CDisplay& display, std::string_view wanted, const std::string& shown) {
    throw CUsageError(
        display.Parameter() + ": its display never shows \"" + std::string(wanted) + "\", " + shown);
}

/// The nearer to `target` of the two values where the display jumps over it, when a scale's own rounding
/// explains it.
float NearerSide(CDisplay& display, std::string_view wanted, double target, std::pair<float, float> jump) {
    const auto below = display.NumberAt(jump.first);
    const auto above = display.NumberAt(jump.second);
    if (!below || !above) Fail(display, wanted, "and is not a scale there");
    const bool takeBelow = std::abs(below->value - target) < std::abs(above->value - target);
    const SNumber& nearer = takeBelow ? *below : *above;
    const double lastDigit = std::pow(10.0, -std::max(below->decimals, above->decimals));
    if (!(std::abs(nearer.value - target) < lastDigit)) {
        Fail(display, wanted, "but " + Shortest(below->value) + " and then " + Shortest(above->value));
    }
    return takeBelow ? jump.first : jump.second;
}

float FindNumber(CDisplay& display, std::string_view wanted, double target, double atZero, double atOne) {
    const auto [lowest, highest] = std::minmax(atZero, atOne);
    if (target < lowest || target > highest) {
        const std::string label = display.Label();
        Fail(display, wanted,
            "only " + Shortest(atZero) + " to " + Shortest(atOne) + (label.empty() ? "" : " " + label));
    }
    const double sign = atZero <= atOne ? 1 : -1;
    const auto reaches = [=](double shown) { return sign * (shown - target) >= 0; };
    const auto passes = [=](double shown) { return sign * (shown - target) > 0; };
    // Both ends of the stretch that shows the number; the scale's own ends have no neighbour to turn at.
    const auto first = atZero == target ? std::pair{0.0f, 0.0f} : display.Turn(0, 1, reaches);
    const auto last = atOne == target ? std::pair{1.0f, 1.0f} : display.Turn(0, 1, passes);
    const auto shown = display.NumberAt(first.second);
    if (shown && shown->value == target) {
        if (atZero == target) return 0; // all of a scale is reachable
        if (atOne == target) return 1;
        return first.second + (last.first - first.second) / 2;
    }
    return NearerSide(display, wanted, target, first);
}

float FindText(CDisplay& display, std::string_view wanted) {
    const auto number = ReadNumber(wanted);
    std::vector<std::string> seen;
    std::optional<int> first;
    int last = 0;
    for (int step = 0; step <= Steps; ++step) {
        const std::string text = display.At(static_cast<float>(step) / Steps);
        const auto shown = ReadNumber(text);
        const bool same = EqualIgnoringCase(text, wanted) ||
                          (number && shown && number->value == shown->value && number->unit.empty());
        if (same) {
            if (!first) first = step;
            last = step;
        } else if (first) {
            break; // the first stretch is enough
        }
        if (seen.size() <= ListedTexts && std::ranges::find(seen, text) == seen.end()) seen.push_back(text);
    }
    if (first) {
        // The ends are safe from the effect's own rounding; between them the middle is.
        if (*first == 0) return 0;
        if (last == Steps) return 1;
        return static_cast<float>(*first + last) / (2 * Steps);
    }
    std::string list = "only";
    for (std::size_t i = 0; i < std::min(seen.size(), ListedTexts); ++i) {
        list += (i == 0 ? " \"" : ", \"") + seen[i] + "\"";
    }
    Fail(display, wanted, list + (seen.size() > ListedTexts ? " and others" : ""));
}

} // namespace

float FindDisplayed(CEffect& effect, std::int32_t index, std::string_view wanted) {
    wanted = Trim(wanted);
    CDisplay display(effect, index);
    const std::string lowest = display.At(0);
    const std::string highest = display.At(1);
    const auto target = ReadNumber(wanted);
    const auto atZero = ReadNumber(lowest);
    const auto atOne = ReadNumber(highest);
    const bool isScale = target && atZero && atOne && atZero->value != atOne->value &&
                         (target->unit.empty() || EqualIgnoringCase(target->unit, display.Label()) ||
                             EqualIgnoringCase(target->unit, atOne->unit));
    const float value = isScale ? FindNumber(display, wanted, target->value, atZero->value, atOne->value)
                                : FindText(display, wanted);
    effect.SetParameter(index, value);
    return value;
}

} // namespace KAV::Host
