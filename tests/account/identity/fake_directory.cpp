#include "fake_directory.h"

#include <cstring>

#include "directory_objects.h"

namespace testbed {

namespace {

std::wstring interfaceName(REFIID identifier) {
    const std::pair<const IID*, const wchar_t*> names[] = {{&IID_IDirectorySearch, L"IDirectorySearch"},
                                                           {&IID_IADsGroup, L"IADsGroup"},
                                                           {&IID_IADsUser, L"IADsUser"},
                                                           {&IID_IDirectoryObject, L"IDirectoryObject"}};
    for (const auto& [known, name] : names) {
        if (*known == identifier) {
            return name;
        }
    }
    return L"an interface that the library has no business with";
}

HRESULT WINAPI succeed() {
    return S_OK;
}

}  // namespace

Counted::Counted(FakeDirectory& directory, std::string name)
    : directory_(directory), name_(std::move(name)) {}

Counted::~Counted() {
    if (references_ != 0) {
        ADD_FAILURE() << references_ << " references left to " << name_;
    }
}

// An object stays in memory until the directory goes, so that one reference too many is seen and not
// suffered.
ULONG Counted::drop() {
    if (references_ == 0) {
        ADD_FAILURE() << name_ << " released too often";
        return 0;
    }
    if (--references_ == 0) {
        directory_.objectIsGone();
    }
    return references_;
}

FakeDirectory::FakeDirectory(SystemCalls& system, Ledger& ledger, std::wstring root)
    : system_(system), ledger_(ledger), root_(std::move(root)) {
    replacements_.push_back(system.replace<decltype(::ADsGetObject)>(
        "ADsGetObject",
        [this](LPCWSTR path, REFIID identifier, void** result) { return bind(path, identifier, result); }));
    replacements_.push_back(system.replace<decltype(::ADsEnumerateNext)>(
        "ADsEnumerateNext", [](IEnumVARIANT* members, ULONG wanted, VARIANT* values, ULONG* fetched) {
            return members->Next(wanted, values, fetched);
        }));
    replacements_.push_back(
        system.replace<decltype(::FreeADsMem)>("FreeADsMem", [this](LPVOID memory) -> BOOL {
            EXPECT_EQ(attributes_.erase(memory), 1u) << "memory that the directory has not given out";
            return TRUE;
        }));
}

FakeDirectory::~FakeDirectory() {
    EXPECT_TRUE(attributes_.empty()) << "attributes that were not freed";
    EXPECT_TRUE(openHandles.empty()) << "searches or columns that were not closed";
}

void FakeDirectory::failCall(const std::string& method, std::size_t k, HRESULT result) {
    failures_[method][counts_[method] + k] = result;
}

std::size_t FakeDirectory::count(const std::string& method) const {
    const auto found = counts_.find(method);
    return found == counts_.end() ? 0 : found->second;
}

// Each step is a call of the library as well, which can be counted and made to fail as those of the system.
HRESULT FakeDirectory::step(const std::string& method) {
    using Step = HRESULT WINAPI();
    const auto* code = system_.lead("directory." + method, reinterpret_cast<const void*>(&succeed));
    if (const HRESULT failure = reinterpret_cast<Step*>(const_cast<void*>(code))(); FAILED(failure)) {
        return failure;
    }
    const std::size_t number = ++counts_[method];
    if (++steps_ == failingStep_) {
        return E_ACCESSDENIED;
    }
    const auto planned = failures_.find(method);
    if (planned == failures_.end() || !planned->second.contains(number)) {
        return S_OK;
    }
    return planned->second.at(number);
}

HRESULT FakeDirectory::bind(const wchar_t* path, REFIID identifier, void** result) {
    bound_.push_back(std::wstring(path) + L" as " + interfaceName(identifier));
    *result = nullptr;
    if (const HRESULT failure = step("ADsGetObject"); failure != S_OK) {
        return failure;
    }
    if (identifier == IID_IDirectorySearch && path == root_) {
        auto* search = make<FakeSearch>();
        search->AddRef();
        *result = static_cast<IDirectorySearch*>(search);
        return S_OK;
    }
    return giveObject(path, identifier, result);
}

HRESULT FakeDirectory::giveObject(const std::wstring& path, REFIID identifier, void** result) {
    const auto found = entries.find(path);
    if (found == entries.end()) {
        return E_ADS_UNKNOWN_OBJECT;
    }
    auto* object = make<FakeObject>(path, found->second);
    // The reference of the one who makes it, so that an interface that is refused ends the object.
    object->AddRef();
    const HRESULT answer = object->QueryInterface(identifier, result);
    object->Release();
    return answer;
}

HRESULT FakeDirectory::giveGuid(const DirectoryEntry& entry, ADS_ATTR_INFO** result) {
    // They differ in their last bytes alone: who compares only the beginning of a text takes all for one.
    GUID guid = {0xDEAD0000, 0xBEEF, 0xCAFE, {1, 2, 3, 4}};
    std::memcpy(guid.Data4 + 4, &entry.number, sizeof(entry.number));
    struct Block {
        ADS_ATTR_INFO attribute;
        ADSVALUE value;
    };
    Attribute made{GuardedBuffer(sizeof(Block), "an attribute"),
                   GuardedBuffer(entry.guidLength, "the bytes of an attribute")};
    std::memcpy(made.bytes.data(), &guid, std::min<std::size_t>(entry.guidLength, sizeof(guid)));
    auto* block = made.block.as<Block>();
    block->attribute.dwADsType = entry.guidType;
    block->attribute.dwNumValues = entry.guidValues;
    block->attribute.pADsValues = entry.guidValues == 0 ? nullptr : &block->value;
    block->value.dwType = entry.guidType;
    block->value.OctetString.dwLength = entry.guidLength;
    block->value.OctetString.lpValue = made.bytes.as<BYTE>();
    *result = &block->attribute;
    attributes_.emplace(*result, std::move(made));
    return S_OK;
}

BSTR FakeDirectory::giveText(const std::wstring& text) {
    BSTR made = SysAllocString(text.c_str());
    ledger_.take(Kind::text, reinterpret_cast<std::uint64_t>(made), "a directory object", "");
    return made;
}

}  // namespace testbed
