#include "tests/tools/kavhost/records.h"

#include <bit>
#include <cstring>

namespace KAV::Tests {

namespace {

std::string BigEndian(std::uint32_t number) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) bytes.push_back(static_cast<char>(number >> shift & 0xFF));
    return bytes;
}

/// The 56 bytes with which both formats begin.
std::string Head(const char* form, std::int32_t uniqueId, std::size_t parameters, const std::string& name) {
    std::string head = "CcnK" + BigEndian(0) + form + BigEndian(1) +
                       BigEndian(static_cast<std::uint32_t>(uniqueId)) + BigEndian(1) +
                       BigEndian(static_cast<std::uint32_t>(parameters)) + name;
    head.resize(56);
    return head;
}

} // namespace

std::string ChunkRecord(std::int32_t uniqueId, const std::string& chunk) {
    return Head("FPCh", uniqueId, 3, "In the record") + BigEndian(static_cast<std::uint32_t>(chunk.size())) +
           chunk;
}

std::string ValueRecord(std::int32_t uniqueId, const std::string& name, const std::vector<float>& values) {
    auto record = Head("FxCk", uniqueId, values.size(), name);
    for (const float value : values) record += BigEndian(std::bit_cast<std::uint32_t>(value));
    return record;
}

std::string WithNumber(std::string record, std::size_t place, std::uint32_t number) {
    return record.replace(place, 4, BigEndian(number));
}

std::string KeeperChunk(const std::string& kind, const std::vector<float>& values) {
    auto chunk = kind;
    chunk.resize(kind.size() + values.size() * sizeof(float));
    std::memcpy(chunk.data() + kind.size(), values.data(), values.size() * sizeof(float));
    return chunk;
}

} // namespace KAV::Tests
