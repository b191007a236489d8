// A directory service in memory, behind ADsGetObject and ADsEnumerateNext, which this system lacks. Its COM
// objects count their references: one that is left, or released once too often, fails the test, and so do
// searches, columns and memory that do not go back.
#pragma once

// windows.h comes first: the others build on it.
#include <windows.h>

#include <oleauto.h>

#include <activeds.h>

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "winutil_fixture.h"

namespace testbed {

// An object of the directory: a user or a group.
struct DirectoryEntry {
    bool isGroup = false;
    DWORD number = 0;  // what its objectGUID is made of
    // Paths; one that is not in the directory is enumerated as an empty value.
    std::vector<std::wstring> members = {};
    ADSTYPE guidType = ADSTYPE_OCTET_STRING;
    DWORD guidLength = sizeof(GUID);  // bytes that the attribute says it has
    DWORD guidValues = 1;
    bool isDirectoryObject = true;
};

// A row that a search finds. One that cannot be read has no path.
struct DirectoryRow {
    std::wstring path;
    bool readable = true;
    ADSTYPE type = ADSTYPE_CASE_IGNORE_STRING;
    HRESULT result = S_OK;  // what the search answers when it comes to this row
};

class FakeDirectory;

// What every object counts.
class Counted {
public:
    Counted(FakeDirectory& directory, std::string name);
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
    virtual ~Counted();

protected:
    ULONG retain() { return ++references_; }
    ULONG drop();
    FakeDirectory& directory() { return directory_; }

private:
    FakeDirectory& directory_;
    std::string name_;
    ULONG references_ = 0;
};

class FakeDirectory {
public:
    // `root` is the path that can be searched.
    FakeDirectory(SystemCalls& system, Ledger& ledger, std::wstring root);
    ~FakeDirectory();

    std::map<std::wstring, DirectoryEntry> entries;          // by path
    std::map<std::wstring, std::vector<DirectoryRow>> rows;  // by filter

    // From now on call number k of a method (by its bare name, ADsGetObject among them) fails with this
    // value; with S_FALSE it succeeds and gives nothing.
    void failCall(const std::string& method, std::size_t k, HRESULT result = E_ACCESSDENIED);
    // The same for the k-th of all calls, whichever it is.
    void failStep(std::size_t k) { failingStep_ = steps_ + k; }
    std::size_t steps() const { return steps_; }
    std::size_t count(const std::string& method) const;

    // What was bound, as "path as interface", and whose members were enumerated.
    const std::vector<std::wstring>& bound() const { return bound_; }
    const std::vector<std::wstring>& searchedGroups() const { return searchedGroups_; }
    // What IsMember was asked, as "group has user".
    const std::vector<std::wstring>& questions() const { return questions_; }
    std::size_t mostObjects() const { return mostObjects_; }

    // For the objects.
    HRESULT step(const std::string& method);
    template <class Object, class... Args>
    Object* make(Args&&... args) {
        auto object = std::make_unique<Object>(*this, std::forward<Args>(args)...);
        Object* made = object.get();
        objects_.push_back(std::move(object));
        mostObjects_ = std::max(mostObjects_, ++liveObjects_);
        return made;
    }
    void objectIsGone() { --liveObjects_; }
    HRESULT giveObject(const std::wstring& path, REFIID identifier, void** result);
    HRESULT giveGuid(const DirectoryEntry& entry, ADS_ATTR_INFO** result);
    BSTR giveText(const std::wstring& text);
    void noteSearched(const std::wstring& path) { searchedGroups_.push_back(path); }
    void noteQuestion(const std::wstring& question) { questions_.push_back(question); }
    std::set<const void*> openHandles;  // of searches and columns

private:
    struct Attribute {
        GuardedBuffer block;
        GuardedBuffer bytes;
    };

    HRESULT bind(const wchar_t* path, REFIID identifier, void** result);

    SystemCalls& system_;
    Ledger& ledger_;
    std::wstring root_;
    std::vector<std::unique_ptr<Counted>> objects_;
    std::size_t liveObjects_ = 0;
    std::size_t mostObjects_ = 0;
    std::map<void*, Attribute> attributes_;
    std::map<std::string, std::size_t> counts_;
    std::map<std::string, std::map<std::size_t, HRESULT>> failures_;
    std::size_t steps_ = 0;
    std::size_t failingStep_ = 0;
    std::vector<std::wstring> bound_;
    std::vector<std::wstring> searchedGroups_;
    std::vector<std::wstring> questions_;
    std::vector<Replacement> replacements_;
};

}  // namespace testbed
