#pragma once

#include <array>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <zlib.h>

namespace KAV::Tests {

/// A text as a gzip stream.
inline std::string Gzip(std::string_view text) {
    z_stream z{};
    if (deflateInit2(&z, 9, Z_DEFLATED, 31, 8, Z_DEFAULT_STRATEGY) != Z_OK) throw std::runtime_error("zlib");
    std::string copy(text); // the library wants it writable
    z.next_in = reinterpret_cast<Bytef*>(copy.data());
    z.avail_in = static_cast<uInt>(copy.size());
    std::string stream;
    std::array<char, 65536> block{};
    int code = Z_OK;
    while (code == Z_OK) {
        z.next_out = reinterpret_cast<Bytef*>(block.data());
        z.avail_out = static_cast<uInt>(block.size());
        code = deflate(&z, Z_FINISH);
        stream.append(block.data(), block.size() - z.avail_out);
    }
    deflateEnd(&z);
    return stream;
}

/// That many characters, always the same, which gzip halves.
inline std::string Letters(std::size_t size) {
    std::mt19937 random(1);
    std::string text(size, ' ');
    for (char& c : text) c = static_cast<char>('a' + random() % 16);
    return text;
}

} // namespace KAV::Tests
