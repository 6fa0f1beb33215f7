#include "utils/gunzip.h"

#include <algorithm>
#include <array>

#define ZLIB_CONST // the library only reads what it inflates
#include <zlib.h>

namespace KAV::Utils {

namespace {

constexpr int GzipWindowBits = 31; // the largest window, and a stream with gzip's header and trailer
constexpr std::size_t Block = 4096;

} // namespace

struct CGunzip::SStream {
    z_stream z{};
    std::array<char, Block> block{};
};

CGunzip::CGunzip() : _stream(std::make_unique<SStream>()) {
    if (inflateInit2(&_stream->z, GzipWindowBits) != Z_OK) _stream.reset();
}

CGunzip::~CGunzip() {
    if (_stream != nullptr) inflateEnd(&_stream->z);
}

bool CGunzip::Add(const char* data, std::size_t size, std::string& text, std::size_t limit) {
    if (_stream == nullptr) return true;
    z_stream& z = _stream->z;
    while (size > 0) {
        const std::size_t piece = std::min(size, Block);
        z.next_in = reinterpret_cast<const Bytef*>(data);
        z.avail_in = static_cast<uInt>(piece);
        int code = Z_OK;
        do {
            z.next_out = reinterpret_cast<Bytef*>(_stream->block.data());
            z.avail_out = static_cast<uInt>(Block);
            code = inflate(&z, Z_NO_FLUSH);
            text.append(_stream->block.data(), Block - z.avail_out);
            if (text.size() > limit) return false;
        } while (code == Z_OK && z.avail_out == 0);
        data += piece;
        size -= piece;
    }
    return true;
}

} // namespace KAV::Utils
