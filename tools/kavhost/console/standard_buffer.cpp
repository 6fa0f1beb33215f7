#include "tools/kavhost/console/standard_buffer.h"

namespace KAV::Host {

namespace {

constexpr std::size_t MostKept = 1 << 16;

}

CStandardBuffer::CStandardBuffer(std::ostream& stream, Platform::EStandardStream target)
    : _stream(stream), _target(target), _before(stream.rdbuf(this)) {}

CStandardBuffer::~CStandardBuffer() {
    CStandardBuffer::sync();
    _stream.rdbuf(_before);
}

CStandardBuffer::int_type CStandardBuffer::overflow(int_type letter) {
    if (traits_type::eq_int_type(letter, traits_type::eof())) return traits_type::not_eof(letter);
    const char one = traits_type::to_char_type(letter);
    return xsputn(&one, 1) == 1 ? letter : traits_type::eof();
}

std::streamsize CStandardBuffer::xsputn(const char* text, std::streamsize count) {
    _text.append(text, static_cast<std::size_t>(count));
    return _text.size() < MostKept || sync() == 0 ? count : 0;
}

int CStandardBuffer::sync() {
    const bool isWritten = Platform::WriteStandard(_target, _text) == _text.size();
    _text.clear(); // what could not be written never can
    return isWritten ? 0 : -1;
}

} // namespace KAV::Host
