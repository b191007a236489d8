#include "inventory/memory_modules.h"

#include <cwchar>

#include "bridge/java_calls.h"
#include "inventory/wmi_property.h"
#include "inventory/wmi_session.h"

namespace winutil::inventory {

namespace {

// Required: the message of the query for the computer's model, because callers know it as such.
constexpr WmiQuery memoryQuery{.text = L"SELECT * FROM Win32_PhysicalMemory",
                               .failureText = L"Query for Computer System name failed."};

// WMI hands 64-bit numbers out as decimal texts.
jlong capacityOf(IWbemClassObject* module) noexcept {
    return std::wcstoll(WmiProperty(module, L"Capacity").text(), nullptr, 10);
}

// Returns false when a Java exception is pending.
bool report(JNIEnv* env, jobject collector, IWbemClassObject* module) noexcept {
    const WmiProperty slot(module, L"DeviceLocator");
    const jint megahertz = WmiProperty(module, L"Speed").number();
    return callCollector(env, collector, java_method::addMemoryInfo, slot.text(), megahertz,
                         capacityOf(module));
}

}  // namespace

void listMemoryModules(JNIEnv* env, jobject collector, ErrorBuffer& errorBuffer) noexcept {
    WmiSession session;
    if (!session.run(memoryQuery, errorBuffer)) {
        return;
    }
    while (const auto module = session.next()) {
        if (!report(env, collector, module.get())) {
            return;
        }
    }
}

}  // namespace winutil::inventory
