#include "tools/kavhost/render/batch_report.h"

#include "tools/kavhost/base/error_line.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/report/report.h"

#include <string_view>

namespace KAV::Host {

namespace {

std::string AsJson(const SOutcome& outcome, EJson form) {
    if (outcome.report) return ReportAsJson(*outcome.report, form);
    const char* const key = outcome.fate == EFate::Skipped ? "skipped" : "error";
    return FateAsJson(outcome.job, key, outcome.reason, form);
}

/// As an element of an array.
std::string Indented(std::string_view object) {
    std::string indented("  ");
    for (const char letter : object) {
        indented += letter;
        if (letter == '\n') indented += "  ";
    }
    return indented;
}

} // namespace

CBatchReport::CBatchReport(EReportForm form, std::size_t jobs, std::ostream& out, std::ostream& errors)
    : _form(form), _isOne(jobs == 1), _out(out), _errors(errors) {}

CBatchReport::~CBatchReport() {
    if (_form == EReportForm::Json) _out << (_isEmpty ? "[]\n" : "\n]\n") << std::flush;
}

void CBatchReport::Add(const SOutcome& outcome) {
    if (outcome.fate == EFate::Failed) {
        PrintError(_errors, outcome.reason);
        _hasFailures = true;
    }
    // Of a single file the program's last line says it.
    if (outcome.fate == EFate::Unfinished && !_isOne)
        PrintError(_errors, "not finished: " + Utf8(outcome.job.input));
    if (_form == EReportForm::Text)
        AddText(outcome);
    else
        AddObject(AsJson(outcome, Layout()));
    _out.flush();
}

void CBatchReport::AddUnfinished(std::span<const SRenderJob> jobs, const std::string& reason) {
    if (_form == EReportForm::Text) return;
    for (const auto& job : jobs) AddObject(AsJson({job, EFate::Unfinished, {}, reason}, Layout()));
    _out.flush();
}

EOrder CBatchReport::OrderOf(EReportForm form) noexcept {
    return form == EReportForm::JsonLines ? EOrder::AsFinished : EOrder::OfJobs;
}

void CBatchReport::AddText(const SOutcome& outcome) {
    if (outcome.report) PrintReport(_out, *outcome.report);
    if (outcome.fate == EFate::Skipped)
        _out << TitleOf(outcome.job) << "\n  skipped: " << Printable(outcome.reason) << "\n";
}

void CBatchReport::AddObject(const std::string& object) {
    if (_form == EReportForm::JsonLines)
        _out << object + "\n";
    else
        _out << (_isEmpty ? "[\n" : ",\n") << Indented(object);
    _isEmpty = false;
}

} // namespace KAV::Host
