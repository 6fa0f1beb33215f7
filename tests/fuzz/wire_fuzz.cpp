// Data from a server: a version answer, a gzip stream, a redirect, compared with plain versions of the rules.

#include "device_gui/version_check.h"
#include "utils/gunzip.h"
#include "utils/web_address.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

using namespace KAV;

namespace {

constexpr std::size_t Limit = 100000;
constexpr std::size_t Block = 4096;

void Require(bool holds) {
    if (!holds) std::abort();
}

void Version(std::string_view bytes) {
    const auto answer = ReadVersionAnswer(bytes);
    if (!answer) return;
    const bool newer = IsNewer(answer->sVersion);
    Require(!newer || !answer->sVersion.empty());
    Require(answer->sVersion.find(u"||") == std::u16string::npos);
    Require(answer->sVersion.size() + answer->sDownload.size() + 4 <= bytes.size());
}

/// The result is the same however the stream is cut into pieces, unless it is too long.
void Inflation(const std::string& bytes, std::size_t piece) {
    std::string whole;
    std::string inPieces;
    Utils::CGunzip first;
    Utils::CGunzip second;
    const bool fits = first.Add(bytes.data(), bytes.size(), whole, Limit);
    bool alsoFits = true;
    for (std::size_t i = 0; i < bytes.size() && alsoFits; i += piece)
        alsoFits = second.Add(bytes.data() + i, std::min(piece, bytes.size() - i), inPieces, Limit);
    Require(fits == alsoFits);
    Require(fits ? whole == inPieces : whole.size() <= Limit + Block);
}

void Address(const std::optional<Utils::SWebAddress>& address) {
    if (!address) return;
    Require(address->port != 0 && !address->host.empty() && address->path.starts_with('/'));
    Require(address->host.find_first_of("@/:?#\\ %") == std::string::npos);
    Require(
        std::all_of(address->path.begin(), address->path.end(), [](char c) { return c > ' ' && c < 0x7F; }));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) return 0;
    const std::string bytes(reinterpret_cast<const char*>(data + 1), size - 1);
    Version(bytes);
    Inflation(bytes, 1u + data[0]);
    Address(Utils::ParseWebAddress(bytes));
    for (const auto* const from : {"https://host/a/b?c", "http://host:81/"}) {
        const auto next = Utils::FollowRedirect(*Utils::ParseWebAddress(from), bytes);
        Address(next);
        Require(!next || next->secure || from[4] != 's');
    }
    return 0;
}
