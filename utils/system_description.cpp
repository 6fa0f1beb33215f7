#include "utils/system_description.h"

#include "platform/system_info.h"
#include "utils/number.h"
#include "utils/text.h"

namespace KAV::Utils {

namespace {

std::u16string Gigabytes(std::uint64_t bytes) {
    return FormatUnsigned(static_cast<std::uint32_t>(bytes >> 30));
}

} // namespace

std::u16string DescribeOS() {
    return ToUtf16(Platform::SystemName());
}

std::u16string DescribeCPU() {
    auto name = ToUtf16(Platform::ProcessorName());
    return name.empty() ? u"Undef" : name;
}

std::u16string DescribeMemory() {
    return DescribeMemory(Platform::PhysicalMemory());
}

std::u16string DescribeMemory(const Platform::SMemory& memory) {
    return Gigabytes(memory.freeBytes) + u"/" + Gigabytes(memory.totalBytes) + u"GB";
}

std::u16string DescribeDisplay() {
    return DescribeDisplay(Platform::Display());
}

std::u16string DescribeDisplay(const Platform::SDisplay& display) {
    if (display.monitors == 0) return {};
    return FormatInt(display.monitors) + u", 1:" + FormatInt(display.width) + u"x" +
           FormatInt(display.height) + u"@" + FormatInt(display.refreshHz) + u", dpi=" +
           FormatInt(display.scalePercent) + u"%";
}

std::u16string MachineId() {
    return ToUtf16(Platform::MachineIdentifier());
}

} // namespace KAV::Utils
