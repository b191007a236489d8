#include "inventory/processors.h"

#include "bridge/java_calls.h"
#include "inventory/wmi_property.h"
#include "inventory/wmi_session.h"

namespace winutil::inventory {

namespace {

// Required: the message of the query for the computer's model, because callers know it as such.
constexpr WmiQuery processorQuery{.text = L"SELECT * FROM Win32_Processor",
                                  .failureText = L"Query for Computer System name failed."};

const wchar_t* architectureName(LONG code) noexcept {
    switch (code) {
        case 0:
            return L"x86";
        case 1:
            return L"MIPS";
        case 2:
            return L"Alpha";
        case 3:
            return L"PowerPC";
        case 6:
            return L"Itanium-based systems";
        case 9:
            return L"x64";
        default:
            return L"Unknown";
    }
}

const wchar_t* architectureText(IWbemClassObject* processor) noexcept {
    WmiProperty architecture(processor, L"Architecture");
    return architecture.hasValue() ? architectureName(architecture.number()) : L"";
}

jint numberOf(IWbemClassObject* processor, const wchar_t* property) noexcept {
    return static_cast<jint>(WmiProperty(processor, property).number());
}

// Returns false when a Java exception is pending.
bool report(JNIEnv* env, jobject collector, IWbemClassObject* processor) noexcept {
    const WmiProperty deviceId(processor, L"DeviceID");
    const WmiProperty manufacturer(processor, L"Manufacturer");
    const WmiProperty name(processor, L"Name");
    const WmiProperty description(processor, L"Description");
    const jlong megahertz = numberOf(processor, L"CurrentClockSpeed");
    const jint cores = numberOf(processor, L"NumberOfCores");
    const jint logicalProcessors = numberOf(processor, L"NumberOfLogicalProcessors");
    return callCollector(env, collector, java_method::addCpuInfo, deviceId.text(), manufacturer.text(),
                         name.text(), architectureText(processor), megahertz, description.text(), cores,
                         logicalProcessors);
}

}  // namespace

void listProcessors(JNIEnv* env, jobject collector, ErrorBuffer& errorBuffer) noexcept {
    WmiSession session;
    if (!session.run(processorQuery, errorBuffer)) {
        return;
    }
    while (const auto processor = session.next()) {
        if (!report(env, collector, processor.get())) {
            return;
        }
    }
}

}  // namespace winutil::inventory
