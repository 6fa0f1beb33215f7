// Writes the parameter table as JSON: unique id, and per host index the tag, the full name, the unit and the
// true law.
//     kav_profile FILE

#include "device/parameter_table.h"
#include "plugin/vst_dsp_v2.h"
#include "utils/product.h"

#include <array>
#include <fstream>
#include <iostream>
#include <string>

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

void WriteProfile(std::ostream& out) {
    out.imbue(std::locale::classic());
    out << "{\n  \"name\": \"" KAV_PRODUCT "\",\n  \"unique_id\": " << CVSTDSPv2::UniqueId
        << ",\n  \"parameters\": [";
    std::int32_t index = 0;
    for (const std::int32_t tag : HostParamTable()) {
        const SParameter parameter = FindParameter(tag);
        std::array<char, TagNameCapacity> name{};
        WriteParameterName(parameter, name); // nothing in names and units needs escaping in JSON
        out << (index == 0 ? "" : ",") << "\n    {\"index\": " << index << ", \"tag\": " << tag
            << ", \"name\": \"" << name.data() << "\", \"unit\": \"" << parameter.row->unit << "\", ";
        WriteLaw(out, *parameter.row);
        out << '}';
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
