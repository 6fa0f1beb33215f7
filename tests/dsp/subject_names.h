#pragma once

#include <string>

namespace KAV::Tests {

/// Names typed tests after their subject: each subject has a `Name`.
struct SSubjectNames {
    template<typename TSubject>
    static std::string GetName(int) {
        return TSubject::Name;
    }
};

} // namespace KAV::Tests
