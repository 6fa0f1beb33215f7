#pragma once

#include <windows.h>

#include <unknwn.h>

/// Calls of the system's objects as plain functions, so that a table of them can be replaced. Only for
/// Windows.
namespace KAV::Platform {

template<auto Method>
struct SComCall;

template<typename Object, typename Result, typename... Arguments, Result (Object::*Method)(Arguments...)>
struct SComCall<Method> {
    using Function = Result (*)(Object* object, Arguments... arguments);
    static Result Call(Object* object, Arguments... arguments) { return (object->*Method)(arguments...); }
};

/// A function that calls this method of the object that it gets first.
template<auto Method>
using ComFunction = typename SComCall<Method>::Function;
template<auto Method>
inline constexpr ComFunction<Method> CallMethod = &SComCall<Method>::Call;

} // namespace KAV::Platform
