#include "tools/kavhost/setup/profile.h"

#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/text.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

namespace KAV::Host {

namespace {

using Json = nlohmann::json;

constexpr std::uintmax_t LargestFile = 16 << 20;

[[noreturn]] void Fail(const std::string& where, const std::string& what) {
    throw CFailure("not an effect profile: " + where + what);
}

const Json& Member(const Json& object, const char* name, Json::value_t type, const std::string& where) {
    const auto member = object.find(name);
    if (member == object.end()) Fail(where, std::string("\"") + name + "\" is missing");
    const bool fits = type == Json::value_t::number_float ? member->is_number() : member->type() == type;
    if (!fits) Fail(where, std::string("\"") + name + "\" has the wrong type");
    return *member;
}

std::string TextMember(const Json& object, const char* name, const std::string& where) {
    return Member(object, name, Json::value_t::string, where).get<std::string>();
}

double NumberMember(const Json& object, const char* name, const std::string& where) {
    return Member(object, name, Json::value_t::number_float, where).get<double>();
}

std::int32_t IntegerMember(const Json& object, const char* name, const std::string& where) {
    const double number = NumberMember(object, name, where);
    // Numbers of four characters are at home in both views of 32 bits.
    if (number != std::floor(number) || number < -0x1p31 || number >= 0x1p32) {
        Fail(where, std::string("\"") + name + "\" is not a 32-bit number");
    }
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::int64_t>(number)));
}

ELaw LawOf(const std::string& name, const std::string& where) {
    if (name == "linear") return ELaw::Linear;
    if (name == "exponential") return ELaw::Exponential;
    if (name == "toggle") return ELaw::Toggle;
    if (name == "choice") return ELaw::Choice;
    Fail(where, "the law \"" + name + "\" is unknown");
}

SParameterProfile ParseParameter(const Json& object, const std::string& where) {
    if (!object.is_object()) Fail(where, "not an object");
    SParameterProfile parameter;
    parameter.index = IntegerMember(object, "index", where);
    if (object.contains("tag")) parameter.tag = IntegerMember(object, "tag", where);
    parameter.name = TextMember(object, "name", where);
    parameter.unit = object.contains("unit") ? TextMember(object, "unit", where) : std::string{};
    parameter.law = LawOf(TextMember(object, "law", where), where);
    if (parameter.index < 0) Fail(where, "the index is negative");
    if (parameter.law == ELaw::Linear || parameter.law == ELaw::Exponential) {
        parameter.minimum = NumberMember(object, "minimum", where);
        parameter.maximum = NumberMember(object, "maximum", where);
        if (parameter.minimum == parameter.maximum) Fail(where, "the range is empty");
    }
    if (parameter.law == ELaw::Exponential && (parameter.minimum <= 0 || parameter.maximum <= 0)) {
        Fail(where, "an exponential range must be above 0");
    }
    if (parameter.law == ELaw::Choice) {
        for (const auto& choice : Member(object, "choices", Json::value_t::array, where)) {
            if (!choice.is_string()) Fail(where, "a choice is not a text");
            parameter.choices.push_back(choice.get<std::string>());
        }
        if (parameter.choices.size() < 2) Fail(where, "fewer than two choices");
    }
    if (object.contains("default")) parameter.initial = NumberMember(object, "default", where);
    return parameter;
}

std::string FileText(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return std::move(text).str();
}

/// A JSON object with this number; cheap for the large files that build folders have, too.
bool ClaimsNumber(const std::string& text, std::int32_t uniqueId) {
    if (!Trim(text).starts_with('{')) return false;
    const auto json = Json::parse(text, nullptr, false);
    if (!json.is_object() || !json.contains("unique_id") || !json["unique_id"].is_number_integer())
        return false;
    return static_cast<std::int32_t>(json["unique_id"].get<std::int64_t>()) == uniqueId;
}

std::optional<double> Continuous(const SParameterProfile& parameter, std::string_view quantity) {
    const auto number = ReadNumber(quantity);
    if (!number || !(number->unit.empty() || EqualIgnoringCase(number->unit, parameter.unit)))
        return std::nullopt;
    const auto [lowest, highest] = std::minmax(parameter.minimum, parameter.maximum);
    if (number->value < lowest || number->value > highest) return std::nullopt;
    return parameter.law == ELaw::Linear
               ? (number->value - parameter.minimum) / (parameter.maximum - parameter.minimum)
               : std::log(number->value / parameter.minimum) /
                     std::log(parameter.maximum / parameter.minimum);
}

std::optional<double> Toggle(std::string_view quantity) {
    const auto is = [quantity](std::string_view text) { return EqualIgnoringCase(quantity, text); };
    if (is("on") || is("1") || is("true") || is("yes")) return 1;
    if (is("off") || is("0") || is("false") || is("no")) return 0;
    return std::nullopt;
}

std::optional<double> Choice(const SParameterProfile& parameter, std::string_view quantity) {
    const auto& choices = parameter.choices;
    const auto place = [&](auto matches) -> std::optional<double> {
        const auto found = std::ranges::find_if(choices, matches);
        if (found == choices.end()) return std::nullopt;
        return static_cast<double>(found - choices.begin()) / static_cast<double>(choices.size() - 1);
    };
    if (const auto whole = place([=](const auto& choice) { return EqualIgnoringCase(choice, quantity); })) {
        return whole;
    }
    if (const auto index = ReadIndex(quantity)) {
        if (*index < 0 || static_cast<std::size_t>(*index) >= choices.size()) return std::nullopt;
        return static_cast<double>(*index) / static_cast<double>(choices.size() - 1);
    }
    return place([=](const std::string& choice) {
        const auto space = choice.rfind(' ');
        return space != std::string::npos &&
               EqualIgnoringCase(std::string_view(choice).substr(space + 1), quantity);
    });
}

} // namespace

const SParameterProfile* SProfile::Find(std::int32_t index) const noexcept {
    const auto found = std::ranges::find(parameters, index, &SParameterProfile::index);
    return found == parameters.end() ? nullptr : &*found;
}

const SParameterProfile* SProfile::FindByTag(std::int32_t tag) const noexcept {
    const auto found = std::ranges::find(parameters, std::optional(tag), &SParameterProfile::tag);
    return found != parameters.end() ? &*found : nullptr;
}

const SParameterProfile* SProfile::Find(std::string_view wanted) const noexcept {
    const auto found = std::ranges::find_if(
        parameters, [wanted](const auto& parameter) { return EqualIgnoringCase(parameter.name, wanted); });
    return found == parameters.end() ? nullptr : &*found;
}

SProfile ParseProfile(std::string_view text) {
    const auto json = Json::parse(text, nullptr, false);
    if (json.is_discarded() || !json.is_object()) Fail("", "not a JSON object");
    SProfile profile;
    profile.name = TextMember(json, "name", "");
    profile.uniqueId = IntegerMember(json, "unique_id", "");
    if (json.contains("state")) profile.state = TextMember(json, "state", "");
    for (const auto& object : Member(json, "parameters", Json::value_t::array, "")) {
        const std::string where = "parameter " + std::to_string(profile.parameters.size() + 1) + ": ";
        profile.parameters.push_back(ParseParameter(object, where));
    }
    return profile;
}

SProfile ReadProfile(const std::filesystem::path& file) {
    return Naming(Utf8(file), [&] {
        if (!std::filesystem::is_regular_file(file)) throw CFailure("no such file");
        if (std::filesystem::file_size(file) > LargestFile)
            throw CFailure("not an effect profile: too large");
        return ParseProfile(FileText(file));
    });
}

std::optional<SProfile> FindProfile(const std::filesystem::path& folder, std::int32_t uniqueId) {
    std::vector<std::filesystem::path> files;
    std::error_code error; // a folder that cannot be listed has no profile
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        const bool candidate = EqualIgnoringCase(Utf8(entry.path().extension()), ".json") &&
                               entry.is_regular_file(error) && entry.file_size(error) <= LargestFile;
        if (candidate) files.push_back(entry.path());
    }
    std::ranges::sort(files); // the system lists in any order
    for (const auto& file : files) {
        const auto text = FileText(file);
        if (ClaimsNumber(text, uniqueId)) return Naming(Utf8(file), [&] { return ParseProfile(text); });
    }
    return std::nullopt;
}

std::string AllowedQuantities(const SParameterProfile& parameter) {
    const std::string unit = parameter.unit.empty() ? "" : " " + parameter.unit;
    switch (parameter.law) {
    case ELaw::Toggle:
        return "on or off";
    case ELaw::Choice: {
        std::string list = "one of";
        for (const auto& choice : parameter.choices) {
            list += (&choice == &parameter.choices.front() ? " \"" : ", \"") + choice + "\"";
        }
        return list;
    }
    default:
        return Shortest(parameter.minimum) + " to " + Shortest(parameter.maximum) + unit;
    }
}

float HostValue(const SParameterProfile& parameter, std::string_view quantity) {
    quantity = Trim(quantity);
    const auto value = parameter.law == ELaw::Toggle   ? Toggle(quantity)
                       : parameter.law == ELaw::Choice ? Choice(parameter, quantity)
                                                       : Continuous(parameter, quantity);
    if (!value) {
        throw CUsageError(parameter.name + ": \"" + std::string(quantity) + "\" is not accepted, only " +
                          AllowedQuantities(parameter));
    }
    return static_cast<float>(*value);
}

std::string QuantityAt(const SParameterProfile& parameter, double value) {
    const double x = value > 0 ? std::min(value, 1.0) : 0.0; // not-a-number is 0, too
    const std::string unit = parameter.unit.empty() ? "" : " " + parameter.unit;
    switch (parameter.law) {
    case ELaw::Toggle:
        return x >= 0.5 ? "on" : "off";
    case ELaw::Choice: {
        const double last = static_cast<double>(parameter.choices.size() - 1);
        return parameter.choices[static_cast<std::size_t>(std::lround(x * last))];
    }
    case ELaw::Linear:
        return Fixed(parameter.minimum + x * (parameter.maximum - parameter.minimum), 2) + unit;
    case ELaw::Exponential:
        return Fixed(parameter.minimum * std::pow(parameter.maximum / parameter.minimum, x), 2) + unit;
    }
    return {};
}

} // namespace KAV::Host
