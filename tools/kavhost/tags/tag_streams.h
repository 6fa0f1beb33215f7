#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <taglib/tfilestream.h>
#include <taglib/tiostream.h>

/// What TagLib reads from and writes to.
namespace KAV::Host {

/// A file that ends for the library when it has read too much of it: sizes in tags may claim anything.
class CBoundedStream final : public TagLib::FileStream {
public:
    explicit CBoundedStream(const std::filesystem::path& file) : FileStream(file.c_str(), true) {}

    TagLib::ByteVector readBlock(unsigned long length) override;

    /// Throws CFailure if the library has not seen all that it asked for.
    void Check();

private:
    unsigned long _left = 128UL << 20;
    bool _isExceeded = false;
};

/// A file that the library changes. Its own stream doesn't notice a full disk; this one throws CFailure, with
/// a text that wants a file name in front.
class CCheckedStream final : public TagLib::IOStream {
public:
    explicit CCheckedStream(const std::filesystem::path& file);

    /// Writes what is buffered.
    void Close();

    TagLib::FileName name() const override { return _file.c_str(); }
    TagLib::ByteVector readBlock(unsigned long length) override;
    void writeBlock(const TagLib::ByteVector& data) override;
    void insert(const TagLib::ByteVector& data, unsigned long start, unsigned long replace) override;
    void removeBlock(unsigned long start, unsigned long length) override;
    bool readOnly() const override { return false; }
    bool isOpen() const override { return _stream.is_open(); }
    void seek(long offset, Position origin) override;
    long tell() const override { return _place; }
    long length() override { return _length; }
    void truncate(long length) override;

private:
    std::string Read(long place, long count);
    void Write(long place, const char* bytes, long count);
    void Check();

    std::filesystem::path _file;
    std::fstream _stream;
    long _place = 0;
    long _length = 0;
};

} // namespace KAV::Host
