#include "java_state.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ranges>
#include <utility>

#include "text.h"

namespace testbed {

namespace {

// References are numbers that no pointer looks like, and none is used twice: a stale one is always found out.
constexpr std::uintptr_t firstReference = 0x1F00'0000'0001;
constexpr std::uintptr_t referenceStep = 0x10;

jobject asReference(std::uintptr_t number) {
    return reinterpret_cast<jobject>(number);
}

// What has no memory for characters or elements answers null, as virtual machines do: only what makes Java
// objects leaves an error.
bool refusesSilently(std::string_view function) {
    return function == "GetStringChars" || function == "GetStringUTFChars" ||
           function == "GetByteArrayElements";
}

std::uintptr_t asNumber(jobject reference) {
    return reinterpret_cast<std::uintptr_t>(reference);
}

}  // namespace

JavaState::JavaState() : table_(jniTable()), nextReference_(firstReference) {
    functions = &table_;
    defineLibraryClasses();
    self = make("com/qarvo/kel/util/WindowsUtil");
}

void JavaState::fail(const std::string& what) const {
    ADD_FAILURE() << "JNI: " << what << (frames_.empty() ? "" : " (in " + frames_.back() + ")");
}

bool JavaState::enter(const char* function, WhilePending whilePending) {
    if (GetCurrentThreadId() != thread_) {
        fail(std::string(function) + " called on a thread that the environment does not belong to");
    }
    if (pending && whilePending == WhilePending::illegal) {
        fail(std::string(function) + " called while " + pending.className() + " is pending");
    }
    const std::size_t number = ++counts[function];
    auto& planned = failures[function];
    const auto failure = planned.find(number);
    if (failure == planned.end()) {
        return true;
    }
    const std::string exceptionClass = std::move(failure->second);
    planned.erase(failure);
    if (!refusesSilently(function)) {
        throwNew(exceptionClass, L"as the test wants it");
    }
    return false;
}

std::shared_ptr<JavaClass> JavaState::findClass(const std::string& name) const {
    // Virtual machines take the descriptor of a class for its name.
    const bool isDescriptor = name.size() > 2 && name.front() == 'L' && name.back() == ';';
    const auto found = classes.find(isDescriptor ? name.substr(1, name.size() - 2) : name);
    return found == classes.end() ? nullptr : found->second;
}

std::shared_ptr<JavaClass> JavaState::makeClass(const std::string& name) {
    std::shared_ptr<JavaClass>& made = classes[name];
    if (!made) {
        made = std::make_shared<JavaClass>();
        made->name = name;
        auto mirror = std::make_shared<JavaContent>();
        mirror->any = made.get();
        mirror->type = name == "java/lang/Class" ? made : makeClass("java/lang/Class");
        made->mirror = JavaObject(std::move(mirror));
    }
    return classes[name];
}

JavaObject JavaState::make(const std::string& className, JavaContent::Any content) {
    auto made = std::make_shared<JavaContent>();
    made->type = makeClass(className);
    made->any = std::move(content);
    return JavaObject(std::move(made));
}

Exception JavaState::makeException(const std::string& className, std::wstring_view message) {
    makeClass(className)->isThrowable = true;
    const Exception made = make(className);
    made.content()->constructor = "(Ljava/lang/String;)V";
    made.content()->arguments = {make("java/lang/String", std::wstring(message))};
    return made;
}

void JavaState::throwNew(const std::string& className, std::wstring_view message) {
    pending = makeException(className, message);
}

jobject JavaState::refer(const JavaObject& object, ReferenceKind kind, const char* madeBy) {
    if (!object) {
        return nullptr;
    }
    const std::uintptr_t number = nextReference_;
    nextReference_ += referenceStep;
    references_.emplace(number, Reference{object, kind, madeBy, frames_.size()});
    if (kind == ReferenceKind::local) {
        peak = std::max(peak, ++live);
    }
    return asReference(number);
}

JavaObject JavaState::resolve(jobject reference, const char* function) const {
    if (reference == nullptr) {
        return {};
    }
    const std::uintptr_t number = asNumber(reference);
    const auto found = references_.find(number);
    if (found != references_.end()) {
        return found->second.object;
    }
    const bool wasOne =
        number >= firstReference && number < nextReference_ && (number - firstReference) % referenceStep == 0;
    fail(std::string(function) +
         (wasOne ? " was given a deleted reference" : " was given what is no reference"));
    return {};
}

void JavaState::deleteLocal(jobject reference) {
    // A null is allowed, and nothing happens.
    if (reference == nullptr || !resolve(reference, "DeleteLocalRef")) {
        return;
    }
    const auto found = references_.find(asNumber(reference));
    if (found->second.kind == ReferenceKind::local) {
        --live;
    }
    references_.erase(found);
}

void* JavaState::pin(const JavaObject& object, GuardedBuffer buffer, const char* madeBy) {
    void* pointer = buffer.data();
    pins_.emplace(pointer, Pin{object, std::move(buffer), madeBy, frames_.size()});
    return pointer;
}

void JavaState::noteRelease(const Pin& pin, std::span<const std::byte> given) {
    const std::span now(pin.buffer.data(), given.size());
    const bool wiped =
        !now.empty() && std::ranges::all_of(now, [](std::byte each) { return each == std::byte{0}; });
    if (!wiped && !std::ranges::equal(now, given)) {
        fail("the characters of a string were changed");
    }
    stringReleases.push_back({pin.object, wiped});
}

const Pin* JavaState::findPin(const void* pointer) const {
    const auto found = pins_.find(pointer);
    return found == pins_.end() ? nullptr : &found->second;
}

std::optional<Pin> JavaState::unpin(jobject reference, const void* pointer, const char* madeBy,
                                    const char* releasedBy) {
    const JavaObject object = resolve(reference, releasedBy);
    const auto found = pins_.find(pointer);
    if (found == pins_.end() || std::string(found->second.madeBy) != madeBy) {
        fail(std::string(releasedBy) + " was given a pointer that " + madeBy + " did not give out, or twice");
        return std::nullopt;
    }
    if (found->second.object != object) {
        fail(std::string(releasedBy) + " was given the pointer of another object");
    }
    Pin pin = std::move(found->second);
    pins_.erase(found);
    return pin;
}

Value JavaState::invoke(const JavaMethod& method, const Arguments& arguments) {
    try {
        return method.body(arguments);
    } catch (const JavaThrow& thrown) {
        pending = thrown.exception;
    } catch (const std::exception& error) {
        fail("the test's " + method.name + " failed: " + error.what());
    }
    return {};
}

void JavaState::enterNative(const std::string& name) {
    if (pending) {
        fail(name + " entered while " + pending.className() + " is pending");
    }
    frames_.push_back(name);
}

// What the returning native method still holds.
void JavaState::reportLeftovers() {
    const std::size_t frame = frames_.size();
    std::erase_if(references_, [&](const auto& entry) {
        const Reference& reference = entry.second;
        if (reference.frame != frame) {
            return false;
        }
        if (reference.kind == ReferenceKind::local) {
            fail("a local reference to an object of " + reference.object.className() + ", made by " +
                 reference.madeBy + ", was not deleted");
            --live;
        }
        return true;
    });
    std::erase_if(pins_, [&](const auto& entry) {
        if (entry.second.frame != frame) {
            return false;
        }
        if (std::size_t& expected = expectedPins[entry.second.madeBy]; expected > 0) {
            --expected;
        } else if (!keptPins.contains(entry.second.madeBy)) {
            fail("what " + std::string(entry.second.madeBy) + " gave out was not released");
        }
        return true;
    });
    for (const auto& [function, expected] : std::exchange(expectedPins, {})) {
        if (expected > 0) {
            fail(std::to_string(expected) + " more of what " + function + " gave out should have stayed");
        }
    }
}

JavaObject JavaState::leaveNative(jobject result) {
    const JavaObject object = resolve(result, "the return");
    if (object) {
        deleteLocal(result);
    }
    reportLeftovers();
    frames_.pop_back();
    return object;
}

}  // namespace testbed
