#include "native/linux/x11_connection.h"

namespace KAV::Native {

xcb_atom_t CX11Connection::Atom(std::string_view name) {
    const auto known = _atoms.find(name);
    if (known != _atoms.end()) return known->second;
    const auto atom = Platform::Atom(Connection(), name);
    if (atom != XCB_ATOM_NONE) _atoms.emplace(name, atom);
    return atom;
}

void CX11Connection::Flush() const noexcept {
    Platform::Xcb()->flush(Connection());
}

} // namespace KAV::Native
