// Junctions, symbolic links and encrypted files.
#include "../filesystem/encrypted_files/raw_files.h"
#include "../filesystem/links/reparse_disk.h"
#include "reasons.h"
#include "recipe.h"

namespace {

using namespace testbed;
using namespace testbed::reasons;

class LinkTest : public WinUtilTest {
protected:
    LinkTest() {
        disk.entries[L"C:\\folder"] = {FILE_ATTRIBUTE_DIRECTORY, {}};
        disk.put(L"C:\\junction", FILE_ATTRIBUTE_DIRECTORY, {});
        disk.put(L"C:\\filelink", FILE_ATTRIBUTE_ARCHIVE, {.tag = IO_REPARSE_TAG_SYMLINK});
    }

    ReparseDisk disk{system()};
    Replacement links_ = system().replace<BOOLEAN(LPCWSTR, LPCWSTR, DWORD)>(
        "CreateSymbolicLinkW", [](LPCWSTR, LPCWSTR, DWORD) -> BOOLEAN { return TRUE; });
};

RECIPE(LinkTest, createJunctionPoint, ofAFolder) {
    examine([&] { return NATIVE(createJunctionPoint)(L"C:\\new", L"C:\\folder"); });
}

RECIPE(LinkTest, createDirectorySymbolicLink, ofAFolder) {
    examine([&] { return NATIVE(createDirectorySymbolicLink)(L"C:\\new", L"C:\\folder"); });
}

RECIPE(LinkTest, createFileSymbolicLink, ofAFile) {
    examine([&] { return NATIVE(createFileSymbolicLink)(L"C:\\new", L"C:\\file"); });
}

RECIPE(LinkTest, getLinkTarget, ofAJunction) {
    tolerates({"GetFileAttributesExW"}, formOfPath);
    examine([&] { return NATIVE(getLinkTarget)(L"C:\\junction"); });
}

RECIPE(LinkTest, getLinkType, ofALink) {
    tolerates({"GetFileAttributesExW"}, formOfPath);
    // A link to a directory: attributes that neither form of the path has are passed on with every bit set.
    mayAnswer(L"18");
    examine([&] { return NATIVE(getLinkType)(L"C:\\filelink"); });
}

RECIPE(LinkTest, isLink, ofALink) {
    tolerates({"GetFileAttributesExW"}, formOfPath);
    examine([&] { return NATIVE(isLink)(L"C:\\filelink"); });
}

RECIPE(LinkTest, isDirectoryJunction, ofAJunction) {
    tolerates({"GetFileAttributesExW"}, formOfPath);
    examine([&] { return NATIVE(isDirectoryJunction)(L"C:\\junction"); });
}

RECIPE(LinkTest, WinFile, ofALink) {
    for (const char* function : {"CreateFileW", "DeviceIoControl"}) {
        answersInstead(function, L"C:\\junction 0", comesEmpty);
    }
    answersInstead("GetMethodID", L"an older record", standsIn);
    examine([&] {
        const JavaObject record = NATIVE(WinFile)(L"C:\\junction", false, false);
        if (record && record.arguments().size() != 8) {
            return std::wstring(L"an older record");
        }
        return record ? record.arguments().at(0).text() + L" " + record.arguments().at(7).text() +
                            std::to_wstring(record.arguments().at(6).number())
                      : std::wstring(L"null");
    });
}

class RawTest : public WinUtilTest {
protected:
    RawTest() { raw.files[L"C:\\secret"] = "three blocks of it"; }

    RawFiles raw{system()};
    int reads = 0;
    JavaObject input = java.collector("read", "([BII)I", [this](const Arguments& a) -> Value {
        std::ranges::fill(a[0].object().bytes(), 'a');
        return jint{++reads < 3 ? 8 : -1};
    });
};

RECIPE(RawTest, openEncryptFile, ofAFile) {
    jlong context = 0;
    examine([&] { return handleText(context = NATIVE(openEncryptFile)(L"C:\\secret", 0)); });
    if (context != 0) {
        NATIVE(closeEncryptFile)(context);
    }
}

RECIPE(RawTest, readEncryptFile, toAStream) {
    const jlong context = NATIVE(openEncryptFile)(L"C:\\secret", 0);
    mayAnswerAnythingBesideAnException();
    const JavaObject output = noting("write", "([BII)V");
    examine([&] { return NATIVE(readEncryptFile)(context, output); });
    NATIVE(closeEncryptFile)(context);
}

RECIPE(RawTest, closeEncryptFile, ofAnOpenOne) {
    const jlong context = NATIVE(openEncryptFile)(L"C:\\secret", 0);
    examine([&] { NATIVE(closeEncryptFile)(context); });
}

RECIPE(RawTest, interruptEncryptFile, withNoneUnderWay) {
    examine([&] { NATIVE(interruptEncryptFile)(); });
}

RECIPE(RawTest, writeEncryptFile, fromAStream) {
    const jlong context = NATIVE(openEncryptFile)(L"C:\\secret", CREATE_FOR_IMPORT);
    mayAnswerAnythingBesideAnException();
    alwaysKeeps("GetByteArrayElements", "the native copy of every block of an import is kept for good");
    examine([&] { return NATIVE(writeEncryptFile)(context, input); });
    NATIVE(closeEncryptFile)(context);
}

}  // namespace
