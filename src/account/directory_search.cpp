#include "account/directory_search.h"

#include <cwchar>

namespace winutil::account {

namespace {

wchar_t pathAttribute[] = L"ADsPath";

// How many rows with another success than S_OK a search may give.
constexpr unsigned flawedRowLimit = 1000;

// The rows that a search found, until the end of the scope.
class Rows {
public:
    Rows(IDirectorySearch* search, wchar_t* filter) noexcept : search_(search) {
        wchar_t* attributes[] = {pathAttribute};
        if (FAILED(search->ExecuteSearch(filter, attributes, 1, &handle_))) {
            handle_ = nullptr;
        }
    }
    Rows(const Rows&) = delete;
    Rows& operator=(const Rows&) = delete;
    ~Rows() {
        if (handle_ != nullptr) {
            search_->CloseSearchHandle(handle_);
        }
    }

    // False behind the last row, and where the directory fails.
    bool next() noexcept {
        if (handle_ == nullptr) {
            return false;
        }
        const HRESULT result = search_->GetNextRow(handle_);
        if (result == S_OK) {
            return true;
        }
        // A row that comes with errors (S_ADS_ERRORSOCCURRED) is one nevertheless. The limit is for a search
        // that has nothing else to give, and no end.
        return SUCCEEDED(result) && result != S_ADS_NOMORE_ROWS && ++flawedRows_ < flawedRowLimit;
    }

    // Reads the current row's path, none where the row has none. Returns false when memory is exhausted.
    bool readPath(WideString& path) noexcept {
        path.reset();
        ADS_SEARCH_COLUMN column = {};
        if (FAILED(search_->GetColumn(handle_, pathAttribute, &column))) {
            return true;
        }
        bool enough = true;
        if (column.dwNumValues != 0 && column.dwADsType == ADSTYPE_CASE_IGNORE_STRING) {
            const wchar_t* text = column.pADsValues->CaseIgnoreString;
            path = copyText(text, std::wcslen(text));
            enough = static_cast<bool>(path);
        }
        search_->FreeColumn(&column);
        return enough;
    }

private:
    IDirectorySearch* search_;
    ADS_SEARCH_HANDLE handle_ = nullptr;
    unsigned flawedRows_ = 0;
};

bool searchWholeSubtree(IDirectorySearch* search) noexcept {
    ADS_SEARCHPREF_INFO scope = {};
    scope.dwSearchPref = ADS_SEARCHPREF_SEARCH_SCOPE;
    scope.vValue.dwType = ADSTYPE_INTEGER;
    scope.vValue.Integer = ADS_SCOPE_SUBTREE;
    return SUCCEEDED(search->SetSearchPreference(&scope, 1));
}

}  // namespace

HRESULT findObjectPath(IDirectorySearch* search, wchar_t* filter, REFIID identifier,
                       WideString& path) noexcept {
    if (!searchWholeSubtree(search)) {
        return E_FAIL;
    }
    path.reset();
    Rows rows(search, filter);
    while (rows.next()) {
        WideString candidate;
        if (!rows.readPath(candidate)) {
            return E_OUTOFMEMORY;
        }
        ComPtr<IUnknown> object;
        if (candidate && SUCCEEDED(bindObject(candidate.get(), identifier, object))) {
            path = std::move(candidate);
        }
    }
    return path ? S_OK : E_FAIL;
}

}  // namespace winutil::account
