#pragma once

#include "device_gui/version_check.h"
#include "utils/maker_service.h"

#include <string>

namespace KAV {

/// What the maker's service tells, and the pages of his that the user opens. Threads: any but the audio
/// thread.
class CMakerPages final {
public:
    /// `a_piVersion` lives longer.
    CMakerPages(const CVersionCheck& a_piVersion, const Utils::SMakerService& a_psService)
        : _piVersion(a_piVersion), _sService(a_psService) {}
    CMakerPages(const CMakerPages&) = delete;
    CMakerPages& operator=(const CMakerPages&) = delete;

    // Entries of the menu; empty: there is none.
    std::u16string NewVersionText() const; ///< a newer version is known
    std::u16string WhatsNewText() const;   ///< any version is known
    // The pages, in the user's browser. False when there is no such page, or nothing could be started; the
    // address of the download has to be one of the web.
    bool OpenDownload() const;
    bool OpenWhatsNew() const;
    bool OpenUserManual() const;
    bool OpenMakersSite() const;

private:
    const CVersionCheck& _piVersion;
    Utils::SMakerService _sService;
};

} // namespace KAV
