// Patches of any bytes: every iteration ends, and what is written from what was read is a patch again.

#include "patch/patch_formats.h"
#include "patch/patch_text.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

using namespace KAV::Patch;

namespace {

void Require(bool holds) {
    if (!holds) std::abort();
}

void ReadText(std::string_view text) {
    CPieces lines(text, LineEnd);
    while (lines.Next()) {
        const auto line = ReadParamLine(lines.Piece());
        if (!line) continue;
        Require(line->tag >= 0 && !line->rawValue.empty());
        const auto moved = ReadParamLine(WithTag(lines.Piece(), 123));
        Require(!moved || moved->tag == 123); // what was read as the number may have been the whole line
    }
    for (int macro = 0; macro < 5; ++macro) {
        CPieces targets(MacroTargets(text, macro), "||");
        while (targets.Next()) ReadMacroTarget(targets.Piece());
    }
    CRoutingBlocks blocks(text);
    while (blocks.Next()) Require(blocks.Group().empty() || !blocks.Document().empty());
    CopyGroup(text, 0, 1, [](std::int32_t tag) { return tag % 100 > 30; });
    TextFromFile(text, "name");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<char> bytes(data, data + size); // whose end the sanitizer guards
    ReadText(std::string_view(bytes.data(), bytes.size()));
    if (IsText(bytes)) ReadText(TextOf(bytes));
    const auto text = TextFromBinary(bytes);
    Require(IsText(std::vector<char>(text.begin(), text.end())));
    ReadText(text);
    const auto patch = PatchFromFxp(bytes, u"a name");
    Require(patch.size() <= 148);
    if (IsBinary(patch)) ReadText(TextFromBinary(patch));
    return 0;
}
