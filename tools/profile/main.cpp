// Writes as JSON what a host can't ask for: unique id, the state of built-in values, and per host index the
// tag, the full name, the unit, the true law and the value in a new instance.
//     kav_profile FILE

#include "device/parameter_table.h"
#include "device_gui/editor_system.h"
#include "plugin/device_dsp.h"
#include "utils/marked_text.h"
#include "utils/path.h"
#include "utils/product.h"

#include <array>
#include <fstream>
#include <iostream>
#include <limits>
#include <memory>
#include <string>
#include <string_view>

namespace {

using namespace KAV;

void WriteLaw(std::ostream& out, const SParameterRow& row) {
    switch (row.kind) {
    case EParameterKind::Toggle:
        out << R"("law": "toggle")";
        break;
    case EParameterKind::Selector: {
        out << R"("law": "choice", "choices": [)";
        const char* separator = "";
        for (const auto text : OversamplingTexts()) {
            out << separator << '"' << text << '"';
            separator = ", ";
        }
        out << ']';
        break;
    }
    case EParameterKind::Continuous:
        out << R"("law": ")" << (row.law == EParameterLaw::Linear ? "linear" : "exponential")
            << R"(", "minimum": )" << row.minimum << R"(, "maximum": )" << row.maximum;
        break;
    }
}

/// A host's value in a new instance.
float DefaultPosition(const SParameter& parameter) {
    const auto& row = *parameter.row;
    const float initial = row.initial(parameter.place, parameter.group);
    if (row.kind != EParameterKind::Selector) return initial;
    return initial / static_cast<float>(OversamplingTexts().size() - 1);
}

/// The state of an instance whose user has no patches and no routings: every value is the built-in one.
std::string BuiltInState() {
    Utils::UseDocumentsFolder(u"/no such folder/");
    CDeviceDSP device(nullptr, {}, std::make_unique<IEditorSystem>());
    void* data = nullptr;
    const auto size = device.GetChunk(&data, false);
    const std::string state(static_cast<const char*>(data), static_cast<std::size_t>(size));
    // A reader takes a routing's line of the group out up to the tab before it. Without that tab an instance
    // that reads this state writes the very bytes of one that has read none.
    return Utils::ReplaceAll(state, "\t<fx>", "<fx>");
}

/// A state is ASCII with line ends and a zero at its end.
void WriteText(std::ostream& out, std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    out << '"';
    for (const char letter : text) {
        if (letter == '"' || letter == '\\') {
            out << '\\' << letter;
        } else if (letter >= 0 && letter < ' ') {
            out << "\\u00" << digits[static_cast<std::size_t>(letter) >> 4]
                << digits[static_cast<std::size_t>(letter) & 15];
        } else {
            out << letter;
        }
    }
    out << '"';
}

void WriteProfile(std::ostream& out) {
    out.imbue(std::locale::classic());
    out.precision(std::numeric_limits<float>::max_digits10);
    out << "{\n  \"name\": \"" KAV_PRODUCT "\",\n  \"unique_id\": " << CVSTDSPv2::UniqueId
        << ",\n  \"state\": ";
    WriteText(out, BuiltInState());
    out << ",\n  \"parameters\": [";
    std::int32_t index = 0;
    for (const std::int32_t tag : HostParamTable()) {
        const SParameter parameter = FindParameter(tag);
        std::array<char, TagNameCapacity> name{};
        WriteParameterName(parameter, name); // nothing in names and units needs escaping in JSON
        out << (index == 0 ? "" : ",") << "\n    {\"index\": " << index << ", \"tag\": " << tag
            << ", \"name\": \"" << name.data() << "\", \"unit\": \"" << parameter.row->unit << "\", ";
        WriteLaw(out, *parameter.row);
        out << R"(, "default": )" << DefaultPosition(parameter) << '}';
        ++index;
    }
    out << "\n  ]\n}\n";
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: kav_profile FILE\n";
        return 2;
    }
    std::ofstream file(argv[1], std::ios::binary);
    WriteProfile(file);
    file.close();
    if (!file) {
        std::cerr << "kav_profile: cannot write " << argv[1] << '\n';
        return 1;
    }
    return 0;
}
