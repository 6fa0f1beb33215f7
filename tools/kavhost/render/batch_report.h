#pragma once

#include "tools/kavhost/render/render_batch.h"

#include <cstddef>
#include <ostream>
#include <span>
#include <string>

namespace KAV::Host {

enum class EReportForm {
    Text,
    Json,     ///< one array
    JsonLines ///< an object per line
};

/// Reports of a batch, printed one by one. A file that failed, or wasn't finished, is a line among the
/// errors, and in JSON also an object with the key "error".
class CBatchReport final {
public:
    /// For a batch of `jobs` jobs. The streams must outlive the report.
    CBatchReport(EReportForm form, std::size_t jobs, std::ostream& out, std::ostream& errors);
    /// Ends the array.
    ~CBatchReport();
    CBatchReport(const CBatchReport&) = delete;
    CBatchReport& operator=(const CBatchReport&) = delete;

    void Add(const SOutcome& outcome);

    /// Jobs of a whole that has failed; the caller says why among the errors.
    void AddUnfinished(std::span<const SRenderJob> jobs, const std::string& reason);

    bool HasFailures() const noexcept { return _hasFailures; }

    /// The order in which outcomes should arrive: lines for programs don't wait for each other.
    static EOrder OrderOf(EReportForm form) noexcept;

private:
    EJson Layout() const noexcept { return _form == EReportForm::Json ? EJson::Lines : EJson::OneLine; }
    void AddText(const SOutcome& outcome);
    void AddObject(const std::string& object);

    EReportForm _form;
    bool _isOne;
    std::ostream& _out;
    std::ostream& _errors;
    bool _isEmpty = true; ///< no object is in the array yet
    bool _hasFailures = false;
};

} // namespace KAV::Host
