// The ways in which a call can be made to fail, and the calls of COM objects that can.
#include <gmock/gmock.h>

#include <objidl.h>

#include "com_slots.h"
#include "fake_com.h"
#include "pe_image.h"
#include "selftest_library.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class FailingCalls : public MisbehavingLibrary {
protected:
    FailingCalls() {
        EXPECT_TRUE(library.load());
        library.system().start();
        ledger.start();
    }
    SystemCalls& system() { return library.system(); }
};

TEST_F(FailingCalls, AreRefusedFromOneCallUpToAnother) {
    const Fault refusal = {.result = INVALID_FILE_ATTRIBUTES, .lastError = DWORD{ERROR_NOT_READY}};
    const auto failing = system().failCall("GetFileAttributesW", 2, refusal, 3);
    auto* attributes = exported<DWORD(const wchar_t*)>("lastErrorOfAttributes");

    std::vector<DWORD> codes;
    for (int i = 0; i < 4; ++i) {
        codes.push_back(attributes(L"C:\\windows"));
    }

    EXPECT_THAT(codes, ElementsAre(0, ERROR_NOT_READY, ERROR_NOT_READY, 0));
}

TEST_F(FailingCalls, AreMadeAllTheSameWhereTheyGiveSomethingBack) {
    const Fault made = {.way = Fault::Way::made, .lastError = DWORD{ERROR_GEN_FAILURE}};
    const auto failing = system().failCall("CloseHandle", 1, made, 1);

    EXPECT_EQ(exported<DWORD(DWORD)>("lastErrorAfterClose")(4711), DWORD{ERROR_GEN_FAILURE});

    EXPECT_THAT(ledger.differences(), IsEmpty());
}

TEST_F(FailingCalls, AreCutToHalfOfWhatTheyAskFor) {
    std::vector<DWORD> asked;
    const auto sleep = system().replace<decltype(Sleep)>(
        "Sleep", [&](DWORD milliseconds) { asked.push_back(milliseconds); });
    const auto cut = system().failCall("Sleep", 1, {.way = Fault::Way::cut}, 2);

    for (const DWORD milliseconds : {500, 1, 500}) {
        exported<void(DWORD)>("sleepFor")(milliseconds);
    }

    EXPECT_THAT(asked, ElementsAre(250, 1, 500));
}

TEST_F(FailingCalls, AreCutAlsoWhereASizeIsBehindAPointer) {
    const auto cut = system().failCall(
        "GetComputerNameW", 1, {.way = Fault::Way::cut, .cutArgument = 1, .cutBehindPointer = true}, 1);
    auto* name = exported<DWORD(DWORD)>("lastErrorOfComputerName");

    EXPECT_EQ(name(2), DWORD{ERROR_BUFFER_OVERFLOW});
    EXPECT_EQ(name(MAX_COMPUTERNAME_LENGTH + 1), 0u);
}

TEST_F(FailingCalls, AreNotedWithTheirPlacesInTheLibrary) {
    system().takeCallers();

    exported<DWORD(const wchar_t*)>("lastErrorOfAttributes")(L"C:\\windows");

    const std::set<const void*> callers = system().takeCallers();
    const PeImage image = PeImage::ofModule(library.module());
    ASSERT_THAT(callers, ::testing::Not(IsEmpty()));
    for (const void* caller : callers) {
        EXPECT_TRUE(image.isCode(caller));
    }
    EXPECT_THAT(system().takeCallers(), IsEmpty());
}

class SomeFile final : public FakeCom<IPersistFile> {
public:
    explicit SomeFile(Ledger& ledger) : FakeCom(ledger, IID_IPersistFile) {}

    int loads = 0;

    HRESULT WINAPI Load(LPCOLESTR, DWORD) override {
        ++loads;
        return S_OK;
    }
    HRESULT WINAPI GetClassID(CLSID*) override { return E_NOTIMPL; }
    HRESULT WINAPI IsDirty() override { return E_NOTIMPL; }
    HRESULT WINAPI Save(LPCOLESTR, BOOL) override { return E_NOTIMPL; }
    HRESULT WINAPI SaveCompleted(LPCOLESTR) override { return E_NOTIMPL; }
    HRESULT WINAPI GetCurFile(LPOLESTR*) override { return E_NOTIMPL; }
};

TEST_F(FailingCalls, CanBeMethodsOfComObjects) {
    const ComSlots slots(system());
    SomeFile file(ledger);
    IPersistFile* given = file.referenced();
    const auto failing = system().failCall("IPersistFile.Load", 2, {.result = DWORD(E_FAIL)}, 2);
    auto* load = exported<HRESULT(IPersistFile*)>("loadIt");

    EXPECT_EQ(load(given), S_OK);
    EXPECT_EQ(load(given), E_FAIL);
    EXPECT_EQ(load(given), S_OK);

    EXPECT_EQ(file.loads, 2);
    EXPECT_EQ(system().count("IPersistFile.Load"), 3u);
    given->Release();
}

TEST_F(FailingCalls, AreNoMethodsOfComObjectsMadeBeforeTheirSlots) {
    SomeFile file(ledger);
    IPersistFile* given = file.referenced();
    const ComSlots slots(system());

    EXPECT_EQ(exported<HRESULT(IPersistFile*)>("loadIt")(given), S_OK);

    EXPECT_EQ(system().count("IPersistFile.Load"), 0u);
    given->Release();
}

}  // namespace
