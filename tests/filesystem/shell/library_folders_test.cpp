// The folders of a Windows library, through the shipped DLL.
#include "shell_fixture.h"

namespace {

using namespace testbed;

class LibraryFolders : public ShellTest {
protected:
    FakeShellItem first{ledger(), events, "first", L"C:\\one"};
    FakeShellItem second{ledger(), events, "second", L"D:\\two"};
    FakeShellItem nameless{ledger(), events, "nameless", L""};

    std::vector<std::wstring> list() {
        const JavaObject collection = java.list();
        NATIVE(getLibraryFolders)(L"C:\\a.library-ms", collection);
        std::vector<std::wstring> texts;
        for (const JavaObject& element : FakeJava::listElements(collection)) {
            texts.push_back(element.text());
        }
        return texts;
    }
};

using Paths = std::vector<std::wstring>;

TEST_F(LibraryFolders, AreAddedInOrder) {
    enumeration.items = {&first, &second};

    EXPECT_EQ(list(), (Paths{L"C:\\one", L"D:\\two"}));

    EXPECT_EQ(parsed, (Paths{L"C:\\a.library-ms"}));
    EXPECT_EQ(shellLibrary.loadedFrom, &item);
    EXPECT_EQ(shellLibrary.loadMode, 0u);
}

TEST_F(LibraryFolders, GiveEverythingBackBeforeComEnds) {
    enumeration.items = {&first, &second};

    list();

    EXPECT_EQ(events, (Events{"initialize", "release item", "release first", "release second",
                              "release enumeration", "release array", "release library", "uninitialize"}));
}

TEST_F(LibraryFolders, WithoutAPathAreLeftOut) {
    enumeration.items = {&first, &nameless, &second};

    EXPECT_EQ(list(), (Paths{L"C:\\one", L"D:\\two"}));
    EXPECT_EQ(count("release nameless"), 1);
}

TEST_F(LibraryFolders, EndWhereTheEnumerationFails) {
    enumeration.items = {&first};
    enumeration.endResult = E_FAIL;

    EXPECT_EQ(list(), Paths{L"C:\\one"});
}

TEST_F(LibraryFolders, AreNoneWhenAStepFails) {
    enumeration.items = {&first};
    std::ptrdiff_t calls = 0;
    for (HRESULT* result : {&initializeResult, &parseResult, &createResult, &shellLibrary.loadResult,
                            &shellLibrary.foldersResult, &folders.enumResult}) {
        *result = E_FAIL;

        EXPECT_EQ(list(), Paths{}) << "step " << calls;

        *result = S_OK;
        EXPECT_EQ(count("initialize"), ++calls);
        EXPECT_EQ(count("uninitialize"), calls - 1) << "not for the initialization that failed, the first";
    }
}

TEST_F(LibraryFolders, ReachNoCollectionWithoutAdd) {
    enumeration.items = {&first};

    NATIVE(getLibraryFolders)(L"C:\\a.library-ms", java.object("java/lang/Object"));

    EXPECT_FALSE(java.isPending());
    EXPECT_EQ(events, Events{});
}

TEST_F(LibraryFolders, EndWithTheExceptionOfTheCollection) {
    enumeration.items = {&first, &second};
    int added = 0;
    const JavaObject collection =
        java.collector("add", "(Ljava/lang/Object;)Z", [&](const Arguments&) -> Value {
            ++added;
            throw JavaThrow{java.exception("java/lang/IllegalStateException", L"full")};
        });

    NATIVE(getLibraryFolders)(L"C:\\a.library-ms", collection);

    EXPECT_EQ(java.takeException(), (Thrown{"java/lang/IllegalStateException", L"full"}));
    EXPECT_EQ(added, 1);
    EXPECT_EQ(events.back(), "uninitialize");
}

TEST_F(LibraryFolders, EndWhenTheJvmHasNoMemory) {
    enumeration.items = {&first, &second};
    java.failCall("NewString");

    EXPECT_EQ(list(), Paths{});

    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
    EXPECT_EQ(count("release second"), 0) << "not asked for";
}

TEST_F(LibraryFolders, KeepTheReferencesFlat) {
    enumeration.items.assign(2000, &first);

    EXPECT_EQ(list().size(), 2000u);
    EXPECT_LE(java.peakReferences(), 2u);
}

TEST_F(LibraryFolders, AreListedOnAThreadOfTheOtherMode) {
    enumeration.items = {&first};
    initializeResult = RPC_E_CHANGED_MODE;

    EXPECT_EQ(list(), Paths{L"C:\\one"});
    EXPECT_EQ(count("uninitialize"), 0);
}

using RealLibrary = RealShellTest;

TEST_F(RealLibrary, IsToldByTheEndOfItsNameInLowerCase) {
    EXPECT_TRUE(NATIVE(isLibrary)(L"a.library-ms"));
    EXPECT_TRUE(NATIVE(isLibrary)(L"C:\\Users\\me\\Documents.library-ms"));
    EXPECT_FALSE(NATIVE(isLibrary)(L".library-ms"));
    EXPECT_FALSE(NATIVE(isLibrary)(L"A.LIBRARY-MS"));
    EXPECT_FALSE(NATIVE(isLibrary)(L"a.library-ms "));
    EXPECT_FALSE(NATIVE(isLibrary)(L"a.library-m"));
    EXPECT_FALSE(NATIVE(isLibrary)(L""));
}

TEST_F(RealLibrary, IsNotReadOnASystemWithoutShellItems) {
    FreshLibrary old(folder(), L"old.dll");
    old.ledger().allowUnknown("FreeLibrary");  // of a module that was only looked up
    const auto hidden = old.system().hide({"SHCreateItemFromParsingName"});
    ASSERT_TRUE(old.load());
    const auto create = old.system().watch("CoCreateInstance");
    using Function = decltype(Java_com_qarvo_kel_util_WindowsUtil_getLibraryIcon);
    const char* name = "Java_com_qarvo_kel_util_WindowsUtil_getLibraryIcon";
    const NativeMethod<Function> icon(java, name, old.exported<Function>(name));

    EXPECT_EQ(icon(L"C:\\a.library-ms"), nullptr);

    EXPECT_EQ(create.count(), 0u);
    old.unload();
}

}  // namespace
