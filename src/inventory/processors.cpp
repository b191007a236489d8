#include "inventory/processors.h"

#include "bridge/java_classes.h"
#include "bridge/java_strings.h"
#include "inventory/wmi_property.h"
#include "inventory/wmi_session.h"

namespace winutil::inventory {

namespace {

// The message is that of the query for the computer's model: callers know it as such.
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

LocalRef<jstring> architectureText(JNIEnv* env, IWbemClassObject* processor) noexcept {
    WmiProperty architecture(processor, L"Architecture");
    return {env, newJavaString(env, architecture.hasValue() ? architectureName(architecture.number()) : L"")};
}

LocalRef<jstring> textOf(JNIEnv* env, IWbemClassObject* processor, const wchar_t* property) noexcept {
    return {env, newJavaString(env, WmiProperty(processor, property).text())};
}

jint numberOf(IWbemClassObject* processor, const wchar_t* property) noexcept {
    return static_cast<jint>(WmiProperty(processor, property).number());
}

// Returns false when a Java exception is pending.
bool report(JNIEnv* env, jobject collector, IWbemClassObject* processor) noexcept {
    const jmethodID addCpuInfo = findCollectorMethod(env, collector, java_method::addCpuInfo);
    if (addCpuInfo == nullptr) {
        return true;
    }
    const LocalRef deviceId = textOf(env, processor, L"DeviceID");
    if (!deviceId) {
        return false;
    }
    const LocalRef manufacturer = textOf(env, processor, L"Manufacturer");
    if (!manufacturer) {
        return false;
    }
    const LocalRef name = textOf(env, processor, L"Name");
    if (!name) {
        return false;
    }
    const LocalRef architecture = architectureText(env, processor);
    if (!architecture) {
        return false;
    }
    const LocalRef description = textOf(env, processor, L"Description");
    if (!description) {
        return false;
    }
    const auto megahertz = static_cast<jlong>(numberOf(processor, L"CurrentClockSpeed"));
    const jint cores = numberOf(processor, L"NumberOfCores");
    const jint logicalProcessors = numberOf(processor, L"NumberOfLogicalProcessors");
    env->CallVoidMethod(collector, addCpuInfo, deviceId.get(), manufacturer.get(), name.get(),
                        architecture.get(), megahertz, description.get(), cores, logicalProcessors);
    return !exceptionPending(env);
}

}  // namespace

bool listProcessors(JNIEnv* env, jobject collector, ErrorBuffer& errorBuffer) noexcept {
    WmiSession session;
    if (!session.run(processorQuery, errorBuffer)) {
        return false;
    }
    while (const auto processor = session.next()) {
        if (!report(env, collector, processor.get())) {
            break;
        }
    }
    return true;
}

}  // namespace winutil::inventory
