#include "tools/kavhost/tags/tag_streams.h"

#include "tools/kavhost/base/errors.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <system_error>

namespace KAV::Host {

namespace {

constexpr long MoveBytes = 1 << 20; // at a time, when what follows an insertion moves

} // namespace

TagLib::ByteVector CBoundedStream::readBlock(unsigned long length) {
    const auto there = static_cast<unsigned long>(std::max(0L, this->length() - tell()));
    length = std::min(length, there);
    if (length > _left) _isExceeded = true;
    if (_isExceeded) return {};
    _left -= length;
    return FileStream::readBlock(length);
}

void CBoundedStream::Check() {
    if (!isOpen()) throw CFailure("cannot be opened");
    if (_isExceeded) throw CFailure("too large");
}

CCheckedStream::CCheckedStream(const std::filesystem::path& file)
    : _file(file), _stream(file, std::ios::binary | std::ios::in | std::ios::out) {
    std::error_code error;
    const auto size = std::filesystem::file_size(file, error);
    // The library counts in a type that has 32 bits on some systems.
    if (error || size > static_cast<std::uintmax_t>(std::numeric_limits<long>::max())) _stream.close();
    _length = isOpen() ? static_cast<long>(size) : 0;
}

void CCheckedStream::Check() {
    if (!_stream.fail()) return;
    const int number = errno;
    throw CFailure(
        "cannot be written" + (number != 0 ? ": " + std::generic_category().message(number) : std::string()));
}

void CCheckedStream::Close() {
    errno = 0;
    _stream.close();
    Check();
}

std::string CCheckedStream::Read(long place, long count) {
    std::string bytes(static_cast<std::size_t>(std::clamp(_length - place, 0L, count)), '\0');
    errno = 0;
    _stream.seekg(place);
    _stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    Check();
    return bytes;
}

void CCheckedStream::Write(long place, const char* bytes, long count) {
    errno = 0;
    _stream.seekp(place);
    _stream.write(bytes, count);
    _length = std::max(_length, place + count);
    Check();
}

TagLib::ByteVector CCheckedStream::readBlock(unsigned long length) {
    const auto most = static_cast<unsigned long>(std::max(0L, _length - _place));
    const auto bytes = Read(_place, static_cast<long>(std::min(length, most)));
    _place += static_cast<long>(bytes.size());
    return {bytes.data(), static_cast<unsigned>(bytes.size())};
}

void CCheckedStream::writeBlock(const TagLib::ByteVector& data) {
    Write(_place, data.data(), static_cast<long>(data.size()));
    _place += static_cast<long>(data.size());
}

void CCheckedStream::insert(const TagLib::ByteVector& data, unsigned long start, unsigned long replace) {
    const auto begin = static_cast<long>(start), old = static_cast<long>(replace);
    const auto size = static_cast<long>(data.size());
    if (size > old) {
        // From the end backwards, or what is still to be moved would be overwritten.
        for (long end = _length; end > begin + old;) {
            const long count = std::min(MoveBytes, end - begin - old);
            end -= count;
            const auto bytes = Read(end, count);
            Write(end + size - old, bytes.data(), count);
        }
    }
    Write(begin, data.data(), size);
    if (size < old) removeBlock(start + data.size(), replace - data.size());
    _place = begin + size;
}

void CCheckedStream::removeBlock(unsigned long start, unsigned long length) {
    const auto begin = static_cast<long>(start), size = static_cast<long>(length);
    for (long place = begin; place + size < _length;) {
        const auto bytes = Read(place + size, MoveBytes);
        const auto count = static_cast<long>(bytes.size());
        Write(place, bytes.data(), count);
        place += count;
    }
    truncate(std::max(begin, _length - size));
}

void CCheckedStream::seek(long offset, Position origin) {
    _place = origin == Beginning ? offset : origin == Current ? _place + offset : _length + offset;
}

void CCheckedStream::truncate(long length) {
    _stream.flush();
    Check();
    std::error_code error;
    std::filesystem::resize_file(_file, static_cast<std::uintmax_t>(length), error);
    if (error) throw CFailure("cannot be written: " + error.message());
    _length = length;
}

} // namespace KAV::Host
