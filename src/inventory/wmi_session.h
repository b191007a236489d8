// One query to the Windows Management Instrumentation of this computer.
#pragma once

#include <cstdint>

#include "bridge/com.h"
#include "bridge/errors.h"

// wbemcli.h needs the types of com.h.
#include <wbemcli.h>

namespace winutil::inventory {

// What the message of a failed session is made of.
enum class FailureForm : std::uint8_t {
    // The step's text alone; only where COM itself fails the system's text follows.
    fixedText,
    // The step's text, and the system's behind it where it has one.
    withSystemText,
};

struct WmiQuery {
    const wchar_t* text;         // in WQL
    const wchar_t* failureText;  // the message when it fails
    FailureForm failureForm = FailureForm::fixedText;
};

// A session in the namespace "ROOT\CIMV2" on the calling thread, with the objects that its query found.
// Everything goes back at the end of the scope, COM last.
class WmiSession {
public:
    // Connects and runs the query. Returns false, with the message of the step that failed, when it cannot.
    bool run(const WmiQuery& query, ErrorBuffer& errorBuffer) noexcept;

    // Returns the next object; none behind the last, and where the enumeration fails.
    ComPtr<IWbemClassObject> next() noexcept;

private:
    struct Failure;
    Failure connect() noexcept;

    // In this order, so that they are released in the opposite one.
    ComLibrary com_;
    ComPtr<IWbemLocator> locator_;
    ComPtr<IWbemServices> services_;
    ComPtr<IEnumWbemClassObject> objects_;
};

}  // namespace winutil::inventory
