// The COM objects of the directory in memory.
#pragma once

#include "fake_directory.h"

namespace testbed {

// The methods that the library has no business with.
#define UNUSED_METHOD(name, ...)                         \
    HRESULT WINAPI name(__VA_ARGS__) override {          \
        ADD_FAILURE() << "unexpected call of " << #name; \
        return E_NOTIMPL;                                \
    }
#define UNUSED_DISPATCH                                                  \
    UNUSED_METHOD(GetTypeInfoCount, UINT*)                               \
    UNUSED_METHOD(GetTypeInfo, UINT, LCID, ITypeInfo**)                  \
    UNUSED_METHOD(GetIDsOfNames, REFIID, LPOLESTR*, UINT, LCID, DISPID*) \
    UNUSED_METHOD(Invoke, DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*)
#define COUNTED_REFERENCES            \
    ULONG WINAPI AddRef() override {  \
        return retain();              \
    }                                 \
    ULONG WINAPI Release() override { \
        return drop();                \
    }

// A user or a group. As a user it has no methods: it is only ever bound.
class FakeObject final : public Counted, public IADsGroup, public IDirectoryObject {
public:
    FakeObject(FakeDirectory& directory, std::wstring path, const DirectoryEntry& entry);

    COUNTED_REFERENCES
    HRESULT WINAPI QueryInterface(REFIID identifier, void** result) override;
    HRESULT WINAPI get_ADsPath(BSTR* path) override;
    HRESULT WINAPI Members(IADsMembers** members) override;
    HRESULT WINAPI IsMember(BSTR user, VARIANT_BOOL* answer) override;
    HRESULT WINAPI GetObjectAttributes(LPWSTR* names, DWORD count, PADS_ATTR_INFO* attributes,
                                       DWORD* returned) override;

    UNUSED_DISPATCH
    UNUSED_METHOD(get_Name, BSTR*)
    UNUSED_METHOD(get_Class, BSTR*)
    UNUSED_METHOD(get_GUID, BSTR*)
    UNUSED_METHOD(get_Parent, BSTR*)
    UNUSED_METHOD(get_Schema, BSTR*)
    UNUSED_METHOD(GetInfo)
    UNUSED_METHOD(SetInfo)
    UNUSED_METHOD(Get, BSTR, VARIANT*)
    UNUSED_METHOD(Put, BSTR, VARIANT)
    UNUSED_METHOD(GetEx, BSTR, VARIANT*)
    UNUSED_METHOD(PutEx, LONG, BSTR, VARIANT)
    UNUSED_METHOD(GetInfoEx, VARIANT, LONG)
    UNUSED_METHOD(get_Description, BSTR*)
    UNUSED_METHOD(put_Description, BSTR)
    UNUSED_METHOD(Add, BSTR)
    UNUSED_METHOD(Remove, BSTR)
    UNUSED_METHOD(GetObjectInformation, PADS_OBJECT_INFO*)
    UNUSED_METHOD(SetObjectAttributes, PADS_ATTR_INFO, DWORD, DWORD*)
    UNUSED_METHOD(CreateDSObject, LPWSTR, PADS_ATTR_INFO, DWORD, IDispatch**)
    UNUSED_METHOD(DeleteDSObject, LPWSTR)

private:
    std::wstring path_;
    DirectoryEntry entry_;
};

class FakeMembers final : public Counted, public IADsMembers {
public:
    FakeMembers(FakeDirectory& directory, std::vector<std::wstring> paths)
        : Counted(directory, "IADsMembers"), paths_(std::move(paths)) {}

    COUNTED_REFERENCES
    HRESULT WINAPI get__NewEnum(IUnknown** enumerator) override;

    UNUSED_METHOD(QueryInterface, REFIID, void**)
    UNUSED_DISPATCH
    UNUSED_METHOD(get_Count, LONG*)
    UNUSED_METHOD(get_Filter, VARIANT*)
    UNUSED_METHOD(put_Filter, VARIANT)

private:
    std::vector<std::wstring> paths_;
};

class FakeEnumerator final : public Counted, public IEnumVARIANT {
public:
    FakeEnumerator(FakeDirectory& directory, std::vector<std::wstring> paths)
        : Counted(directory, "IEnumVARIANT"), paths_(std::move(paths)) {}

    COUNTED_REFERENCES
    HRESULT WINAPI QueryInterface(REFIID identifier, void** result) override;
    HRESULT WINAPI Next(ULONG wanted, VARIANT* values, ULONG* fetched) override;

    UNUSED_METHOD(Skip, ULONG)
    UNUSED_METHOD(Reset)
    UNUSED_METHOD(Clone, IEnumVARIANT**)

private:
    std::vector<std::wstring> paths_;
    std::size_t next_ = 0;
};

class FakeSearch final : public Counted, public IDirectorySearch {
public:
    explicit FakeSearch(FakeDirectory& directory) : Counted(directory, "IDirectorySearch") {}

    COUNTED_REFERENCES
    HRESULT WINAPI SetSearchPreference(PADS_SEARCHPREF_INFO preferences, DWORD count) override;
    HRESULT WINAPI ExecuteSearch(LPWSTR filter, LPWSTR* names, DWORD count,
                                 PADS_SEARCH_HANDLE handle) override;
    HRESULT WINAPI GetNextRow(ADS_SEARCH_HANDLE handle) override;
    HRESULT WINAPI GetColumn(ADS_SEARCH_HANDLE handle, LPWSTR name, PADS_SEARCH_COLUMN column) override;
    HRESULT WINAPI FreeColumn(PADS_SEARCH_COLUMN column) override;
    HRESULT WINAPI CloseSearchHandle(ADS_SEARCH_HANDLE handle) override;

    UNUSED_METHOD(QueryInterface, REFIID, void**)
    UNUSED_METHOD(AbandonSearch, ADS_SEARCH_HANDLE)
    UNUSED_METHOD(GetFirstRow, ADS_SEARCH_HANDLE)
    UNUSED_METHOD(GetPreviousRow, ADS_SEARCH_HANDLE)
    UNUSED_METHOD(GetNextColumnName, ADS_SEARCH_HANDLE, LPWSTR*)

private:
    // The rows of one search, and where it stands.
    struct Found {
        std::vector<DirectoryRow> rows;
        std::size_t next = 0;
    };

    Found& found(ADS_SEARCH_HANDLE handle);

    std::map<ADS_SEARCH_HANDLE, std::unique_ptr<Found>> searches_;
    std::map<HANDLE, std::unique_ptr<ADSVALUE>> values_;
    bool wholeSubtree_ = false;
};

}  // namespace testbed
