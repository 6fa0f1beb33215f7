#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace KAV::Tests {

/// .fxp records built without any code of the host: a chunk of one program, and a list of values.
std::string ChunkRecord(std::int32_t uniqueId, const std::string& chunk);
std::string ValueRecord(std::int32_t uniqueId, const std::string& name, const std::vector<float>& values);

/// The record with a different number at `place`, highest byte first.
std::string WithNumber(std::string record, std::size_t place, std::uint32_t number);

/// A state of the test effect "keeper", whose first letters are `kind`.
std::string KeeperChunk(const std::string& kind, const std::vector<float>& values);

} // namespace KAV::Tests
