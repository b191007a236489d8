// The misbehaving library as the tests of the test bed load it.
#pragma once

#include <windows.h>

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "temp_folder.h"
#include "tested_library.h"

namespace testbed {

inline std::wstring misbehavingFile() {
    return builtPath(L"" MISBEHAVING_LIBRARY);
}

class MisbehavingLibrary : public ::testing::Test {
protected:
    template <class Function>
    Function* exported(const char* name) {
        return library.exported<Function>(name);
    }

    LibraryUnderTest library{misbehavingFile()};
    Ledger& ledger = library.ledger();
};

// The failures that the body causes, which then do not count.
template <class Body>
std::vector<std::string> failuresOf(Body&& body) {
    ::testing::TestPartResultArray results;
    {
        const ::testing::ScopedFakeTestPartResultReporter reporter(
            ::testing::ScopedFakeTestPartResultReporter::INTERCEPT_ALL_THREADS, &results);
        body();
    }
    std::vector<std::string> messages;
    for (int i = 0; i < results.size(); ++i) {
        messages.push_back(results.GetTestPartResult(i).message());
    }
    return messages;
}

}  // namespace testbed
