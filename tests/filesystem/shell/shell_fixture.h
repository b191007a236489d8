// The shell's objects, as a test wants them to be.
#pragma once

#include <windows.h>

#include <objidl.h>
#include <shellapi.h>
#include <shlguid.h>
#include <shlobj.h>
#include <shobjidl.h>

#include <cstring>
#include <string>
#include <vector>

#include "fake_com.h"

namespace testbed {

// A text in memory that COM gives to its caller, who must free it.
inline LPWSTR comText(Ledger& ledger, const std::wstring& text) {
    const std::size_t size = (text.size() + 1) * sizeof(wchar_t);
    void* memory = CoTaskMemAlloc(size);
    std::memcpy(memory, text.c_str(), size);
    ledger.take(Kind::comMemory, reinterpret_cast<std::uint64_t>(memory), "a COM method", "the test");
    return static_cast<LPWSTR>(memory);
}

class FakePersistFile final : public FakeCom<IPersistFile> {
public:
    FakePersistFile(Ledger& ledger, Events& events) : FakeCom(ledger, IID_IPersistFile, events, "file") {}

    HRESULT loadResult = S_OK;
    std::wstring loaded;
    DWORD loadMode = 0xFFFFFFFF;

    HRESULT WINAPI Load(LPCOLESTR path, DWORD mode) override {
        loaded = path;
        loadMode = mode;
        return loadResult;
    }
    HRESULT WINAPI GetClassID(CLSID*) override { return E_NOTIMPL; }
    HRESULT WINAPI IsDirty() override { return E_NOTIMPL; }
    HRESULT WINAPI Save(LPCOLESTR, BOOL) override { return E_NOTIMPL; }
    HRESULT WINAPI SaveCompleted(LPCOLESTR) override { return E_NOTIMPL; }
    HRESULT WINAPI GetCurFile(LPOLESTR*) override { return E_NOTIMPL; }
};

class FakeShellLink final : public FakeCom<IShellLinkW> {
public:
    FakeShellLink(Ledger& ledger, Events& events) : FakeCom(ledger, IID_IShellLinkW, events, "link") {}

    HRESULT resolveResult = S_OK;
    HRESULT pathResult = S_OK;
    std::wstring target = L"C:\\target.txt";
    HWND window = reinterpret_cast<HWND>(1);
    DWORD resolveFlags = 0;
    DWORD pathFlags = 0;
    int pathCapacity = 0;
    const void* findData = this;

    HRESULT WINAPI Resolve(HWND given, DWORD flags) override {
        window = given;
        resolveFlags = flags;
        return resolveResult;
    }
    HRESULT WINAPI GetPath(LPWSTR path, int capacity, WIN32_FIND_DATAW* data, DWORD flags) override {
        pathCapacity = capacity;
        findData = data;
        pathFlags = flags;
        if (SUCCEEDED(pathResult)) {
            wcsncpy(path, target.c_str(),
                    static_cast<std::size_t>(capacity));  // without an end where it is full
        }
        return pathResult;
    }
    HRESULT WINAPI GetIDList(PIDLIST_ABSOLUTE*) override { return E_NOTIMPL; }
    HRESULT WINAPI SetIDList(PCIDLIST_ABSOLUTE) override { return E_NOTIMPL; }
    HRESULT WINAPI GetDescription(LPWSTR, int) override { return E_NOTIMPL; }
    HRESULT WINAPI SetDescription(LPCWSTR) override { return E_NOTIMPL; }
    HRESULT WINAPI GetWorkingDirectory(LPWSTR, int) override { return E_NOTIMPL; }
    HRESULT WINAPI SetWorkingDirectory(LPCWSTR) override { return E_NOTIMPL; }
    HRESULT WINAPI GetArguments(LPWSTR, int) override { return E_NOTIMPL; }
    HRESULT WINAPI SetArguments(LPCWSTR) override { return E_NOTIMPL; }
    HRESULT WINAPI GetHotkey(WORD*) override { return E_NOTIMPL; }
    HRESULT WINAPI SetHotkey(WORD) override { return E_NOTIMPL; }
    HRESULT WINAPI GetShowCmd(int*) override { return E_NOTIMPL; }
    HRESULT WINAPI SetShowCmd(int) override { return E_NOTIMPL; }
    HRESULT WINAPI GetIconLocation(LPWSTR, int, int*) override { return E_NOTIMPL; }
    HRESULT WINAPI SetIconLocation(LPCWSTR, int) override { return E_NOTIMPL; }
    HRESULT WINAPI SetRelativePath(LPCWSTR, DWORD) override { return E_NOTIMPL; }
    HRESULT WINAPI SetPath(LPCWSTR) override { return E_NOTIMPL; }
};

class FakeShellItem final : public FakeCom<IShellItem> {
public:
    FakeShellItem(Ledger& ledger, Events& events, const std::string& name, std::wstring path)
        : FakeCom(ledger, IID_IShellItem, events, name), path_(std::move(path)), ledger_(ledger) {}

    // Without a path it has no display name.
    HRESULT WINAPI GetDisplayName(SIGDN form, LPWSTR* name) override {
        EXPECT_EQ(static_cast<DWORD>(form), 0x80058000u);
        *name = path_.empty() ? nullptr : comText(ledger_, path_);
        return path_.empty() ? E_INVALIDARG : S_OK;
    }
    HRESULT WINAPI BindToHandler(IBindCtx*, REFGUID, REFIID, void**) override { return E_NOTIMPL; }
    HRESULT WINAPI GetParent(IShellItem**) override { return E_NOTIMPL; }
    HRESULT WINAPI GetAttributes(SFGAOF, SFGAOF*) override { return E_NOTIMPL; }
    HRESULT WINAPI Compare(IShellItem*, SICHINTF, int*) override { return E_NOTIMPL; }

private:
    std::wstring path_;
    Ledger& ledger_;
};

class FakeEnumeration final : public FakeCom<IEnumShellItems> {
public:
    FakeEnumeration(Ledger& ledger, Events& events)
        : FakeCom(ledger, IID_IEnumShellItems, events, "enumeration") {}

    std::vector<FakeShellItem*> items;
    HRESULT endResult = S_FALSE;  // what follows the last item

    HRESULT WINAPI Next(ULONG count, IShellItem** item, ULONG* fetched) override {
        EXPECT_EQ(count, 1u);
        *item = nullptr;
        if (fetched != nullptr) {
            *fetched = 0;
        }
        if (next_ == items.size()) {
            return endResult;
        }
        if (fetched != nullptr) {
            *fetched = 1;
        }
        return items[next_++]->give(S_OK, item);
    }
    HRESULT WINAPI Skip(ULONG) override { return E_NOTIMPL; }
    HRESULT WINAPI Reset() override { return E_NOTIMPL; }
    HRESULT WINAPI Clone(IEnumShellItems**) override { return E_NOTIMPL; }

private:
    std::size_t next_ = 0;
};

class FakeItemArray final : public FakeCom<IShellItemArray> {
public:
    FakeItemArray(Ledger& ledger, Events& events, FakeEnumeration& enumeration)
        : FakeCom(ledger, IID_IShellItemArray, events, "array"), enumeration_(enumeration) {}

    HRESULT enumResult = S_OK;

    HRESULT WINAPI EnumItems(IEnumShellItems** items) override {
        return enumeration_.give(enumResult, items);
    }
    HRESULT WINAPI BindToHandler(IBindCtx*, REFGUID, REFIID, void**) override { return E_NOTIMPL; }
    HRESULT WINAPI GetPropertyStore(GETPROPERTYSTOREFLAGS, REFIID, void**) override { return E_NOTIMPL; }
    HRESULT WINAPI GetPropertyDescriptionList(REFPROPERTYKEY, REFIID, void**) override { return E_NOTIMPL; }
    HRESULT WINAPI GetAttributes(SIATTRIBFLAGS, SFGAOF, SFGAOF*) override { return E_NOTIMPL; }
    HRESULT WINAPI GetCount(DWORD*) override { return E_NOTIMPL; }
    HRESULT WINAPI GetItemAt(DWORD, IShellItem**) override { return E_NOTIMPL; }

private:
    FakeEnumeration& enumeration_;
};

class FakeLibrary final : public FakeCom<IShellLibrary> {
public:
    FakeLibrary(Ledger& ledger, Events& events, FakeItemArray& folders)
        : FakeCom(ledger, IID_IShellLibrary, events, "library"), folders_(folders), ledger_(ledger) {}

    HRESULT loadResult = S_OK;
    HRESULT foldersResult = S_OK;
    std::wstring icon;  // without one, asking for it fails
    const IShellItem* loadedFrom = nullptr;
    DWORD loadMode = 0xFFFFFFFF;

    HRESULT WINAPI LoadLibraryFromItem(IShellItem* item, DWORD mode) override {
        loadedFrom = item;
        loadMode = mode;
        return loadResult;
    }
    HRESULT WINAPI GetFolders(LIBRARYFOLDERFILTER filter, REFIID iid, void** folders) override {
        EXPECT_EQ(static_cast<int>(filter), 2);
        EXPECT_TRUE(iid == IID_IShellItemArray);
        return folders_.give(foldersResult, folders);
    }
    HRESULT WINAPI GetIcon(LPWSTR* location) override {
        *location = icon.empty() ? nullptr : comText(ledger_, icon);
        return icon.empty() ? E_FAIL : S_OK;
    }
    HRESULT WINAPI LoadLibraryFromKnownFolder(REFKNOWNFOLDERID, DWORD) override { return E_NOTIMPL; }
    HRESULT WINAPI AddFolder(IShellItem*) override { return E_NOTIMPL; }
    HRESULT WINAPI RemoveFolder(IShellItem*) override { return E_NOTIMPL; }
    HRESULT WINAPI ResolveFolder(IShellItem*, DWORD, REFIID, void**) override { return E_NOTIMPL; }
    HRESULT WINAPI GetDefaultSaveFolder(DEFAULTSAVEFOLDERTYPE, REFIID, void**) override { return E_NOTIMPL; }
    HRESULT WINAPI SetDefaultSaveFolder(DEFAULTSAVEFOLDERTYPE, IShellItem*) override { return E_NOTIMPL; }
    HRESULT WINAPI GetOptions(LIBRARYOPTIONFLAGS*) override { return E_NOTIMPL; }
    HRESULT WINAPI SetOptions(LIBRARYOPTIONFLAGS, LIBRARYOPTIONFLAGS) override { return E_NOTIMPL; }
    HRESULT WINAPI GetFolderType(FOLDERTYPEID*) override { return E_NOTIMPL; }
    HRESULT WINAPI SetFolderType(REFFOLDERTYPEID) override { return E_NOTIMPL; }
    HRESULT WINAPI SetIcon(LPCWSTR) override { return E_NOTIMPL; }
    HRESULT WINAPI Commit() override { return E_NOTIMPL; }
    HRESULT WINAPI Save(IShellItem*, LPCWSTR, LIBRARYSAVEFLAGS, IShellItem**) override { return E_NOTIMPL; }
    HRESULT WINAPI SaveInKnownFolder(REFKNOWNFOLDERID, LPCWSTR, LIBRARYSAVEFLAGS, IShellItem**) override {
        return E_NOTIMPL;
    }

private:
    FakeItemArray& folders_;
    Ledger& ledger_;
};

// A system on which the objects above stand behind COM's own calls.
class ShellTest : public ComTest {
protected:
    std::vector<std::wstring> parsed;  // the paths that became items
    HRESULT parseResult = S_OK;
    FakePersistFile file{ledger(), events};
    FakeShellLink link{ledger(), events};
    FakeShellItem item{ledger(), events, "item", L"C:\\a.library-ms"};
    FakeEnumeration enumeration{ledger(), events};
    FakeItemArray folders{ledger(), events, enumeration};
    FakeLibrary shellLibrary{ledger(), events, folders};

    ShellTest() {
        link.offer(IID_IPersistFile, file);
        offerClass(CLSID_ShellLink, link);
        offerClass(CLSID_ShellLibrary, shellLibrary);
    }

private:
    const Replacement parse_ =
        REPLACE(SHCreateItemFromParsingName,
                [this](PCWSTR path, IBindCtx* context, REFIID iid, void** object) -> HRESULT {
                    EXPECT_EQ(context, nullptr);
                    *object = nullptr;
                    parsed.emplace_back(path);
                    return FAILED(parseResult) ? parseResult : item.QueryInterface(iid, object);
                });
};

// Calls of the system that the objects above do not stand behind.
using RealShellTest = WinUtilTest;

}  // namespace testbed
