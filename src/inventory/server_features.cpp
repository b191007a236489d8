#include "inventory/server_features.h"

#include "bridge/java_calls.h"
#include "inventory/wmi_property.h"
#include "inventory/wmi_session.h"

namespace winutil::inventory {

namespace {

constexpr WmiQuery featureQuery{.text = L"SELECT * FROM Win32_ServerFeature",
                                .failureText = L"Query for Server Feature failed."};

// What a feature is made and added with.
struct FeatureList {
    JNIEnv* env;
    jobject list;
    jmethodID add;
    jclass featureClass;
    jmethodID newFeature;
};

// Returns false when a Java exception is pending.
bool addFeature(const FeatureList& features, IWbemClassObject* object) noexcept {
    const WmiProperty name(object, L"Name");
    const jint id = WmiProperty(object, L"ID").number();
    const jint parentId = WmiProperty(object, L"ParentID").number();
    const LocalRef feature =
        newObject(features.env, features.featureClass, features.newFeature, id, parentId, name.text());
    return feature && addItem(features.env, features.list, features.add, feature);
}

}  // namespace

void listServerFeatures(JNIEnv* env, jobject list, ErrorBuffer& errorBuffer) noexcept {
    const jmethodID add = findCollectorMethod(env, list, java_method::add);
    if (add == nullptr) {
        return;
    }
    const LocalRef featureClass(env, env->FindClass(java_class::winServerFeature));
    const jmethodID newFeature =
        featureClass ? findMethod(env, featureClass.get(), java_method::newServerFeature) : nullptr;
    if (newFeature == nullptr) {
        env->ExceptionClear();
        return;
    }
    WmiSession session;
    if (!session.run(featureQuery, errorBuffer)) {
        return;
    }
    const FeatureList features{env, list, add, featureClass.get(), newFeature};
    while (const auto object = session.next()) {
        if (!addFeature(features, object.get())) {
            return;
        }
    }
}

}  // namespace winutil::inventory
