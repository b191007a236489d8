// Records of single files, of real ones and of such that the system only says it has.
#pragma once

#include "reparse_disk.h"

namespace testbed {

inline constexpr const char* newerConstructor =
    "(Ljava/lang/String;ZJJILjava/lang/String;BLjava/lang/String;)V";
inline constexpr const char* olderConstructor = "(Ljava/lang/String;ZJJILjava/lang/String;Z)V";
inline constexpr const char* recordClass = "com/qarvo/kel/util/WinFileList$WinFile";

// The fields of a record, in the order of the constructor.
struct Fields {
    std::wstring path;
    bool directory;
    jlong size;
    jlong lastModified;
    jlong attributes;
    std::wstring security;
    jlong kind;
    std::wstring target;
    bool operator==(const Fields&) const = default;
};

inline void PrintTo(const Fields& fields, std::ostream* out) {
    *out << toUtf8(fields.path) << (fields.directory ? " directory " : " file ") << fields.size << " "
         << fields.lastModified << " " << fields.attributes << " '" << toUtf8(fields.security) << "' kind "
         << fields.kind << " '" << toUtf8(fields.target) << "'";
}

inline Fields fieldsOf(const JavaObject& record) {
    EXPECT_EQ(record.className(), recordClass);
    EXPECT_EQ(record.constructor(), newerConstructor);
    const Arguments& a = record.arguments();
    return {a.at(0).text(),   a.at(1).boolean(), a.at(2).number(), a.at(3).number(),
            a.at(4).number(), a.at(5).text(),    a.at(6).number(), a.at(7).text()};
}

class RecordTest : public WinUtilTest {
protected:
    JavaObject record(const std::wstring& path, bool withSecurity = false, bool securityOnFiles = false) {
        return NATIVE(WinFile)(path, static_cast<jboolean>(withSecurity),
                               static_cast<jboolean>(securityOnFiles));
    }

    // Every path whose form is not refused has these attributes.
    Replacement answerAttributes(DWORD attributes, bool onlyLongForm = false) {
        return REPLACE(GetFileAttributesExW, [this, attributes, onlyLongForm](
                                                 LPCWSTR path, GET_FILEEX_INFO_LEVELS level, LPVOID data) {
            EXPECT_EQ(level, GetFileExInfoStandard);
            queries.emplace_back(path);
            if (onlyLongForm && !queries.back().starts_with(L"\\\\?\\")) {
                SetLastError(ERROR_FILENAME_EXCED_RANGE);
                return FALSE;
            }
            *static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(data) = {
                attributes, {1, 1}, {2, 2}, {0xD53E58EF, 0x019DB1DE}, 1, 2};
            return TRUE;
        });
    }

    std::vector<std::wstring> queries;
};

}  // namespace testbed
