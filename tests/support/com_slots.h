// The methods of a test's COM objects as calls that the DLL makes: while a ComSlots lives, each call of one
// leads through a slot of its own, named as in "IWbemServices.ExecQuery", and can be counted and made to
// fail.
#pragma once

#include <windows.h>

#include <unknwn.h>

#include "system_calls.h"

namespace testbed {

class ComSlots {
public:
    explicit ComSlots(SystemCalls& calls);
    ~ComSlots();
    ComSlots(const ComSlots&) = delete;
    ComSlots& operator=(const ComSlots&) = delete;

    // Leads the methods of an object through slots, if a ComSlots lives and knows the interface.
    static void lead(IUnknown& object, const IID& identifier);

private:
    void leadMethods(IUnknown& object, const IID& identifier);

    SystemCalls& calls_;
};

}  // namespace testbed
