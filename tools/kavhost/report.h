#pragma once

#include <ostream>
#include <span>
#include <string>

namespace KAV::Host {

struct SRenderReport;

/// One file's report for people.
void PrintReport(std::ostream& out, const SRenderReport& report);

/// Reports for programs: a JSON array with one object per file. What a build does not measure, and minus
/// infinity, are null.
std::string ReportsAsJson(std::span<const SRenderReport> reports);

} // namespace KAV::Host
