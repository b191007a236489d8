// The classes that the library looks up by name, as a complete Java side has them.
#include <string>

#include "java_state.h"

namespace testbed {

namespace {

constexpr const char* exceptions[] = {
    "java/io/IOException",
    "java/io/FileNotFoundException",
    "java/lang/OutOfMemoryError",
    "java/lang/RuntimeException",
    "java/lang/SecurityException",
    "com/qarvo/dov/io/DiskFullException",
    "com/qarvo/dov/io/SharingViolationException",
    "com/qarvo/kel/util/UtilException$AccountRestrictionException",
};

struct Record {
    const char* className;
    const char* signature;
};

constexpr Record records[] = {
    {"com/qarvo/kel/util/WinFileList$WinFile",
     "(Ljava/lang/String;ZJJILjava/lang/String;BLjava/lang/String;)V"},
    {"com/qarvo/kel/util/WinFileList$WinFile", "(Ljava/lang/String;ZJJILjava/lang/String;Z)V"},
    {"com/qarvo/kel/util/WinPipe", "(J)V"},
    {"com/qarvo/kel/util/WinProcess", "(JLcom/qarvo/kel/util/WinPipe;Lcom/qarvo/kel/util/WinPipe;JJ)V"},
    {"com/qarvo/kel/util/WinProcessInfo", "(Ljava/lang/String;JJLjava/lang/String;Ljava/lang/String;)V"},
    {"com/qarvo/kel/util/WinServerFeature", "(IILjava/lang/String;)V"},
};

void addConstructor(JavaClass& type, const char* signature) {
    type.methods.push_back(std::make_unique<JavaMethod>(
        JavaMethod{"<init>", signature, [](const Arguments&) { return Value(); }, &type}));
}

}  // namespace

void JavaState::defineLibraryClasses() {
    makeClass("java/lang/Object");
    makeClass("java/lang/String");
    for (const char* name : exceptions) {
        JavaClass& type = *makeClass(name);
        type.isThrowable = true;
        addConstructor(type, "(Ljava/lang/String;)V");
    }
    for (const Record& record : records) {
        addConstructor(*makeClass(record.className), record.signature);
    }
}

}  // namespace testbed
