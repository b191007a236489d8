#include "directory_objects.h"

#include <algorithm>

namespace testbed {

namespace {

constexpr HRESULT noMoreRows = 0x5012;

template <class Interface>
HRESULT give(Interface* object, void** result) {
    object->AddRef();
    *result = object;
    return S_OK;
}

}  // namespace

FakeObject::FakeObject(FakeDirectory& directory, std::wstring path, const DirectoryEntry& entry)
    : Counted(directory, "the object " + toUtf8(path)), path_(std::move(path)), entry_(entry) {}

HRESULT FakeObject::QueryInterface(REFIID identifier, void** result) {
    *result = nullptr;
    if (const HRESULT failure = directory().step("QueryInterface"); failure != S_OK) {
        return failure;
    }
    if (identifier == IID_IDirectoryObject && entry_.isDirectoryObject) {
        return give<IDirectoryObject>(this, result);
    }
    const bool asGroup = identifier == IID_IADsGroup && entry_.isGroup;
    const bool asUser = identifier == IID_IADsUser && !entry_.isGroup;
    if (asGroup || asUser || identifier == IID_IADs) {
        return give<IADsGroup>(this, result);
    }
    return E_NOINTERFACE;
}

HRESULT FakeObject::get_ADsPath(BSTR* path) {
    *path = nullptr;
    const HRESULT result = directory().step("get_ADsPath");
    if (result == S_OK) {
        *path = directory().giveText(path_);
    }
    return result;
}

HRESULT FakeObject::Members(IADsMembers** members) {
    *members = nullptr;
    directory().noteSearched(path_);
    const HRESULT result = directory().step("Members");
    if (result != S_OK) {
        return result;
    }
    return give<IADsMembers>(directory().make<FakeMembers>(entry_.members),
                             reinterpret_cast<void**>(members));
}

HRESULT FakeObject::IsMember(BSTR user, VARIANT_BOOL* answer) {
    directory().noteQuestion(path_ + L" has " + std::wstring(user, SysStringLen(user)));
    const HRESULT result = directory().step("IsMember");
    if (SUCCEEDED(result)) {
        *answer =
            std::ranges::find(entry_.members, user) != entry_.members.end() ? VARIANT_TRUE : VARIANT_FALSE;
    }
    return result;
}

HRESULT FakeObject::GetObjectAttributes(LPWSTR* names, DWORD count, PADS_ATTR_INFO* attributes,
                                        DWORD* returned) {
    EXPECT_EQ(count, 1u);
    EXPECT_STREQ(names[0], L"objectGUID");
    *attributes = nullptr;
    *returned = 0;
    const HRESULT result = directory().step("GetObjectAttributes");
    if (result != S_OK) {
        return result;
    }
    *returned = 1;
    return directory().giveGuid(entry_, attributes);
}

HRESULT FakeMembers::get__NewEnum(IUnknown** enumerator) {
    *enumerator = nullptr;
    const HRESULT result = directory().step("get__NewEnum");
    if (result != S_OK) {
        return result;
    }
    return give<IEnumVARIANT>(directory().make<FakeEnumerator>(paths_), reinterpret_cast<void**>(enumerator));
}

HRESULT FakeEnumerator::QueryInterface(REFIID identifier, void** result) {
    EXPECT_EQ(identifier, IID_IEnumVARIANT);
    *result = nullptr;
    const HRESULT failure = directory().step("QueryInterface");
    return FAILED(failure) ? failure : give<IEnumVARIANT>(this, result);
}

HRESULT FakeEnumerator::Next(ULONG wanted, VARIANT* values, ULONG* fetched) {
    EXPECT_EQ(wanted, 16u);
    *fetched = 0;
    if (const HRESULT failure = directory().step("Next"); FAILED(failure)) {
        return failure;
    }
    while (*fetched < wanted && next_ < paths_.size()) {
        VARIANT& value = values[(*fetched)++];
        const std::wstring& path = paths_[next_++];
        if (directory().entries.contains(path)) {
            auto* object = directory().make<FakeObject>(path, directory().entries[path]);
            object->AddRef();
            V_VT(&value) = VT_DISPATCH;
            V_DISPATCH(&value) = static_cast<IADsGroup*>(object);
        }
    }
    return *fetched == wanted ? S_OK : S_FALSE;
}

HRESULT FakeSearch::SetSearchPreference(PADS_SEARCHPREF_INFO preferences, DWORD count) {
    EXPECT_EQ(count, 1u);
    EXPECT_EQ(preferences[0].dwSearchPref, 5);
    EXPECT_EQ(preferences[0].vValue.dwType, 7);
    EXPECT_EQ(preferences[0].vValue.Integer, 2u);
    wholeSubtree_ = true;
    return directory().step("SetSearchPreference");
}

HRESULT FakeSearch::ExecuteSearch(LPWSTR filter, LPWSTR* names, DWORD count, PADS_SEARCH_HANDLE handle) {
    EXPECT_TRUE(wholeSubtree_) << "the search does not say how deep it goes";
    EXPECT_EQ(count, 1u);
    EXPECT_STREQ(names[0], L"ADsPath");
    if (const HRESULT failure = directory().step("ExecuteSearch"); FAILED(failure)) {
        return failure;
    }
    auto search = std::make_unique<Found>();
    if (directory().rows.contains(filter)) {
        search->rows = directory().rows[filter];
    }
    *handle = search.get();
    directory().openHandles.insert(*handle);
    searches_[*handle] = std::move(search);
    return S_OK;
}

FakeSearch::Found& FakeSearch::found(ADS_SEARCH_HANDLE handle) {
    EXPECT_TRUE(directory().openHandles.contains(handle)) << "no open search";
    return *searches_.at(handle);
}

HRESULT FakeSearch::GetNextRow(ADS_SEARCH_HANDLE handle) {
    if (const HRESULT failure = directory().step("GetNextRow"); FAILED(failure)) {
        return failure;
    }
    Found& search = found(handle);
    const std::size_t row = search.next++;
    return row < search.rows.size() ? search.rows[row].result : noMoreRows;
}

HRESULT FakeSearch::GetColumn(ADS_SEARCH_HANDLE handle, LPWSTR name, PADS_SEARCH_COLUMN column) {
    EXPECT_STREQ(name, L"ADsPath");
    if (const HRESULT failure = directory().step("GetColumn"); FAILED(failure)) {
        return failure;
    }
    Found& search = found(handle);
    DirectoryRow& row = search.rows.at(search.next - 1);
    if (!row.readable) {
        return E_ADS_COLUMN_NOT_SET;
    }
    auto value = std::make_unique<ADSVALUE>();
    value->dwType = row.type;
    value->CaseIgnoreString = row.path.data();
    column->pszAttrName = name;
    column->dwADsType = row.type;
    column->dwNumValues = row.path.empty() ? 0 : 1;
    column->pADsValues = row.path.empty() ? nullptr : value.get();
    column->hReserved = value.get();
    directory().openHandles.insert(value.get());
    values_[value.get()] = std::move(value);
    return S_OK;
}

HRESULT FakeSearch::FreeColumn(PADS_SEARCH_COLUMN column) {
    EXPECT_EQ(directory().openHandles.erase(column->hReserved), 1u) << "a column that was not given out";
    values_.erase(column->hReserved);
    return S_OK;
}

HRESULT FakeSearch::CloseSearchHandle(ADS_SEARCH_HANDLE handle) {
    EXPECT_EQ(directory().openHandles.erase(handle), 1u) << "a search that is not open";
    searches_.erase(handle);
    return S_OK;
}

}  // namespace testbed
