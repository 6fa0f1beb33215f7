#include "tests/tree/image.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <set>
#include <stdexcept>

namespace KAV::Tests {

namespace {

using Bytes = std::span<const std::byte>;

Bytes Part(Bytes file, std::uint64_t offset, std::uint64_t size) {
    if (offset > file.size() || size > file.size() - offset)
        throw std::runtime_error("the file ends too early");
    return file.subspan(static_cast<std::size_t>(offset), static_cast<std::size_t>(size));
}

template<typename T>
T Read(Bytes file, std::uint64_t offset) {
    T value{};
    std::memcpy(&value, Part(file, offset, sizeof(T)).data(), sizeof(T));
    return value;
}

std::string ReadName(Bytes file, std::uint64_t offset) {
    const auto rest = Part(file, offset, file.size() - std::min<std::uint64_t>(offset, file.size()));
    const auto end = std::find(rest.begin(), rest.end(), std::byte{0});
    if (end == rest.end()) throw std::runtime_error("a name does not end");
    std::string name;
    std::transform(
        rest.begin(), end, std::back_inserter(name), [](std::byte byte) { return static_cast<char>(byte); });
    return name;
}

/// Elf64_Ehdr, Elf64_Shdr, Elf64_Sym and Elf64_Dyn, by the offsets that the System V ABI defines.
class CElf final {
public:
    explicit CElf(Bytes file) : _file(file) {
        const auto elfClass = Read<std::uint8_t>(file, 4), order = Read<std::uint8_t>(file, 5);
        if (elfClass != 2 || order != 1) throw std::runtime_error("not a 64-bit little-endian ELF file");
        const auto table = Read<std::uint64_t>(file, 0x28);
        const auto size = Read<std::uint16_t>(file, 0x3A), count = Read<std::uint16_t>(file, 0x3C);
        for (std::uint64_t i = 0; i < count; ++i) {
            const auto header = Part(file, table + i * size, 64);
            _sections.push_back({Read<std::uint32_t>(header, 4), Read<std::uint32_t>(header, 40),
                Read<std::uint64_t>(header, 24), Read<std::uint64_t>(header, 32)});
        }
    }

    SImage Image() const {
        SImage image;
        image.format = SImage::EFormat::Elf;
        ReadSymbols(image);
        ReadDynamic(image);
        return image;
    }

private:
    struct SSection {
        std::uint32_t type;
        std::uint32_t link;
        std::uint64_t offset;
        std::uint64_t size;
    };

    const SSection& Find(std::uint32_t type) const {
        const auto found = std::find_if(_sections.begin(), _sections.end(),
            [type](const SSection& section) { return section.type == type; });
        if (found == _sections.end()) throw std::runtime_error("not a dynamic library");
        return *found;
    }

    Bytes Content(const SSection& section) const { return Part(_file, section.offset, section.size); }

    Bytes Names(const SSection& section) const {
        if (section.link >= _sections.size()) throw std::runtime_error("a table has no names");
        return Content(_sections[section.link]);
    }

    void ReadSymbols(SImage& image) const {
        constexpr std::uint32_t SHT_DYNSYM = 11;
        constexpr std::uint16_t SHN_UNDEF = 0;
        constexpr std::size_t entrySize = 24;
        const auto symbols = Content(Find(SHT_DYNSYM)), names = Names(Find(SHT_DYNSYM));
        for (std::size_t at = entrySize; at < symbols.size();
             at += entrySize) { // the first one stands for "none"
            if (Read<std::uint16_t>(symbols, at + 6) == SHN_UNDEF) continue;
            image.exports.push_back(ReadName(names, Read<std::uint32_t>(symbols, at)));
        }
        std::sort(image.exports.begin(), image.exports.end());
    }

    void ReadDynamic(SImage& image) const {
        constexpr std::uint32_t SHT_DYNAMIC = 6;
        constexpr std::int64_t DT_NULL = 0, DT_NEEDED = 1, DT_FLAGS = 30, DT_FLAGS_1 = 0x6FFFFFFB;
        constexpr std::uint64_t DF_SYMBOLIC = 2, DF_1_NODELETE = 8;
        constexpr std::size_t entrySize = 16;
        const auto entries = Content(Find(SHT_DYNAMIC)), names = Names(Find(SHT_DYNAMIC));
        for (std::size_t at = 0; at < entries.size(); at += entrySize) {
            const auto tag = Read<std::int64_t>(entries, at);
            const auto value = Read<std::uint64_t>(entries, at + 8);
            if (tag == DT_NULL) break;
            if (tag == DT_NEEDED) image.libraries.push_back(ReadName(names, value));
            if (tag == DT_FLAGS) image.bindsToItself = (value & DF_SYMBOLIC) != 0;
            if (tag == DT_FLAGS_1) image.staysLoaded = (value & DF_1_NODELETE) != 0;
        }
    }

    Bytes _file;
    std::vector<SSection> _sections;
};

/// The headers of Microsoft's "PE Format", for images with 64-bit addresses ("PE32+").
class CPe final {
public:
    explicit CPe(Bytes file) : _file(file), _header(Read<std::uint32_t>(file, 0x3C)) {
        if (Read<std::uint32_t>(file, _header) != 0x4550 ||
            Read<std::uint16_t>(file, _header + 24) != 0x20B) {
            throw std::runtime_error("not a 64-bit PE file");
        }
        const auto count = Read<std::uint16_t>(file, _header + 6);
        const auto table = _header + 24 + Read<std::uint16_t>(file, _header + 20);
        for (std::uint64_t i = 0; i < count; ++i) {
            const auto entry = Part(file, table + i * 40, 40);
            _sections.push_back({Read<std::uint32_t>(entry, 12), Read<std::uint32_t>(entry, 16),
                Read<std::uint32_t>(entry, 20)});
        }
    }

    SImage Image() const {
        SImage image;
        image.format = SImage::EFormat::Pe;
        ReadExports(image);
        ReadImports(image);
        image.oldestWindows =
            100 * Read<std::uint16_t>(_file, _header + 72) + Read<std::uint16_t>(_file, _header + 74);
        return image;
    }

private:
    struct SSection {
        std::uint32_t address;
        std::uint32_t size;
        std::uint32_t offset;
    };

    /// Where the first byte of a table of the data directory is, as an address; 0 if there is no such table.
    std::uint32_t Directory(std::uint64_t index) const {
        return Read<std::uint32_t>(_file, _header + 136 + index * 8);
    }

    std::uint64_t Offset(std::uint32_t address) const {
        for (const auto& section : _sections) {
            if (address >= section.address && address - section.address < section.size) {
                return std::uint64_t{address} - section.address + section.offset;
            }
        }
        throw std::runtime_error("an address lies in no section");
    }

    void ReadExports(SImage& image) const {
        const auto directory = Directory(0);
        if (directory == 0) return;
        const auto table = Offset(directory);
        const auto functions = Read<std::uint32_t>(_file, table + 20),
                   count = Read<std::uint32_t>(_file, table + 24);
        for (std::uint32_t i = 0; i < count; ++i) {
            const auto entry = Offset(Read<std::uint32_t>(_file, table + 32) + i * 4);
            image.exports.push_back(ReadName(_file, Offset(Read<std::uint32_t>(_file, entry))));
        }
        if (functions > count) image.exports.push_back("(by number)");
        std::sort(image.exports.begin(), image.exports.end());
    }

    void ReadImports(SImage& image) const {
        const auto directory = Directory(1);
        if (directory == 0) return;
        for (auto entry = Offset(directory);; entry += 20) {
            const auto name = Read<std::uint32_t>(_file, entry + 12);
            if (name == 0) return;
            image.libraries.push_back(ReadName(_file, Offset(name)));
            ReadFunctions(image, Read<std::uint32_t>(_file, entry));
        }
    }

    /// Of the library that was read last.
    void ReadFunctions(SImage& image, std::uint32_t names) const {
        constexpr std::uint64_t byNumber = std::uint64_t{1} << 63;
        for (auto entry = Offset(names);; entry += 8) {
            const auto function = Read<std::uint64_t>(_file, entry);
            if (function == 0) return;
            const auto name = (function & byNumber) != 0
                                  ? std::string("(by number)")
                                  : ReadName(_file, Offset(static_cast<std::uint32_t>(function)) + 2);
            image.functions.push_back(image.libraries.back() + " " + name);
        }
    }

    Bytes _file;
    std::uint64_t _header;
    std::vector<SSection> _sections;
};

std::string LowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
        [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

bool IsPartOfTheSystem(const SImage& image, const std::string& library) {
    static const std::set<std::string> elf{
        "ld-linux-x86-64.so.2", "libc.so.6", "libdl.so.2", "libm.so.6", "libpthread.so.0"};
    static const std::set<std::string> pe{
        "advapi32.dll", "gdi32.dll", "kernel32.dll", "msvcrt.dll", "ole32.dll", "shell32.dll", "user32.dll"};
    if (image.format == SImage::EFormat::Elf) return elf.contains(library);
    return pe.contains(LowerCase(library)); // the loader there ignores case
}

/// The functions of Windows 7 that we take, by library in lower case. The C library, msvcrt, is as old as all
/// of them. Whoever adds one looks up its "minimum supported client" first.
const std::set<std::string>& FunctionsOfWindows7() {
    static const std::set<std::string> names = [] {
        std::ifstream list(KAV_WINDOWS_7_FUNCTIONS);
        std::set<std::string> found;
        std::string library;
        for (std::string word; list >> word;) {
            if (word.ends_with(':'))
                library = word.substr(0, word.size() - 1);
            else
                found.insert(library + " " + word);
        }
        return found;
    }();
    return names;
}

bool IsOfWindows7(const std::string& function) {
    const auto end = function.find(' ');
    const auto library = LowerCase(function.substr(0, end));
    return library == "msvcrt.dll" || FunctionsOfWindows7().contains(library + function.substr(end));
}

} // namespace

SImage ReadImage(Bytes file) {
    if (Read<std::uint32_t>(file, 0) == 0x464C457F) return CElf(file).Image();
    if (Read<std::uint16_t>(file, 0) == 0x5A4D) return CPe(file).Image();
    throw std::runtime_error("neither ELF nor PE");
}

SImage ReadImage(const std::filesystem::path& file) {
    return ReadImage(ReadBytes(file));
}

std::vector<std::byte> ReadBytes(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) throw std::runtime_error("cannot read " + file.string());
    std::vector<std::byte> bytes(std::filesystem::file_size(file));
    stream.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!stream) throw std::runtime_error("cannot read all of " + file.string());
    return bytes;
}

std::vector<std::string> Complaints(const SImage& image) {
    static const std::set<std::string> entries{"MAIN", "VSTPluginMain", "main"};
    std::vector<std::string> complaints;
    for (const auto& name : image.exports) {
        if (!entries.contains(name)) complaints.push_back("exports " + name);
    }
    for (const auto& name : entries) {
        if (std::find(image.exports.begin(), image.exports.end(), name) == image.exports.end()) {
            complaints.push_back("does not export " + name);
        }
    }
    for (const auto& library : image.libraries) {
        if (!IsPartOfTheSystem(image, library)) complaints.push_back("loads " + library);
    }
    for (const auto& function : image.functions) {
        if (!IsOfWindows7(function)) complaints.push_back("takes " + function);
    }
    constexpr int windows7 = 601;
    if (image.oldestWindows > windows7) complaints.push_back("is for Windows after 7");
    if (image.format == SImage::EFormat::Elf) {
        if (!image.bindsToItself) complaints.push_back("takes its own names from the process");
        if (!image.staysLoaded) complaints.push_back("can be unloaded");
    }
    return complaints;
}

} // namespace KAV::Tests
