// Owners for COM: the library on a thread, interface pointers, texts, and the memory that methods hand out.
#pragma once

#include <windows.h>

#include <objbase.h>
// oleauto.h needs the types of objbase.h.
#include <oleauto.h>

#include "bridge/owners.h"

namespace winutil {

// Holds COM on the calling thread, in the multithreaded model. A thread whose COM runs in the other model is
// taken as it is, and that COM is then not this scope's to end.
class ComLibrary {
public:
    ComLibrary() noexcept : result_(CoInitializeEx(nullptr, COINIT_MULTITHREADED)) {}
    ComLibrary(const ComLibrary&) = delete;
    ComLibrary& operator=(const ComLibrary&) = delete;
    ~ComLibrary() {
        if (SUCCEEDED(result_)) {
            CoUninitialize();
        }
    }

    // Whether COM can be used; result() says why not.
    explicit operator bool() const noexcept { return SUCCEEDED(result_) || result_ == RPC_E_CHANGED_MODE; }
    HRESULT result() const noexcept { return result_; }

private:
    HRESULT result_;
};

template <class Interface>
struct ComKind {
    using Value = Interface*;
    static Value none() noexcept { return nullptr; }
    static void close(Value value) noexcept { value->Release(); }
};

// One reference to a COM object. `receive` goes with IID_PPV_ARGS.
template <class Interface>
class ComPtr : public Owned<ComKind<Interface>> {
public:
    using Owned<ComKind<Interface>>::Owned;

    Interface* operator->() const noexcept { return this->get(); }
};

// Memory that a COM method allocated for its caller.
template <class T>
using ComMemory = Resource<T*, CoTaskMemFree>;

// A text of COM's automation, made with SysAllocString or handed out by a method.
using Bstr = Resource<BSTR, SysFreeString>;

}  // namespace winutil
