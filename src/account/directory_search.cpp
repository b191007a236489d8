#include "account/directory_search.h"

#include <cwchar>

#include "bridge/java_strings.h"

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

    // Returns the current row's path, or none.
    WideString path() noexcept {
        ADS_SEARCH_COLUMN column = {};
        if (FAILED(search_->GetColumn(handle_, pathAttribute, &column))) {
            return {};
        }
        WideString path;
        if (column.dwNumValues != 0 && column.dwADsType == ADSTYPE_CASE_IGNORE_STRING) {
            const wchar_t* text = column.pADsValues->CaseIgnoreString;
            path = copyText(text, std::wcslen(text));
        }
        search_->FreeColumn(&column);
        return path;
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

WideString findObjectPath(IDirectorySearch* search, wchar_t* filter, REFIID identifier) noexcept {
    if (!searchWholeSubtree(search)) {
        return {};
    }
    WideString found;
    Rows rows(search, filter);
    while (rows.next()) {
        WideString path = rows.path();
        ComPtr<IUnknown> object;
        if (path && SUCCEEDED(bindObject(path.get(), identifier, object))) {
            found = std::move(path);
        }
    }
    return found;
}

}  // namespace winutil::account
