// Strings, arrays, references and exceptions of the in-memory Java environment.
#include "fake_java_fixture.h"

namespace {

using namespace testbed;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

// Strings

TEST_F(FakeJavaTest, CarriesAnyUtf16BothWays) {
    const std::wstring odd = std::wstring(L"a\0b", 3) + L"\xD83D\xDE00" + L"\xD800";
    const auto copy = NativeMethod<jstring(JNIEnv*, jobject, jstring)>(
        java, "copy", [](JNIEnv* env, jobject, jstring text) -> jstring {
            const jchar* chars = env->GetStringChars(text, nullptr);
            const jstring made = env->NewString(chars, env->GetStringLength(text));
            env->ReleaseStringChars(text, chars);
            return made;
        });

    EXPECT_EQ(copy(odd).text(), odd);
}

TEST_F(FakeJavaTest, CarriesModifiedUtf8BothWays) {
    const std::wstring odd = std::wstring(L"a\0\x00E4\x20AC", 4) + L"\xD83D\xDE00";
    const auto copy = NativeMethod<jstring(JNIEnv*, jobject, jstring)>(
        java, "copy", [](JNIEnv* env, jobject, jstring text) -> jstring {
            const char* bytes = env->GetStringUTFChars(text, nullptr);
            const jstring made = env->NewStringUTF(bytes);
            env->ReleaseStringUTFChars(text, bytes);
            return made;
        });

    EXPECT_EQ(copy(odd).text(), odd);
}

TEST_F(FakeJavaTest, EndsStringCharactersWithAUnitThatIsNoZero) {
    asNative(
        [](JNIEnv* env, jobject, jobject argument) {
            const auto text = static_cast<jstring>(argument);
            const jchar* chars = env->GetStringChars(text, nullptr);
            EXPECT_EQ(chars[1], L'b');
            EXPECT_NE(chars[2], 0);
            const_cast<jchar*>(chars)[2] = 0;  // what some natives do, and may
            env->ReleaseStringChars(text, chars);
        },
        java.string(L"ab"));
}

TEST_F(FakeJavaTest, NoticesChangedCharacters) {
    EXPECT_THAT(complaintsAbout(
                    [](JNIEnv* env, jobject, jobject argument) {
                        const auto text = static_cast<jstring>(argument);
                        const jchar* chars = env->GetStringChars(text, nullptr);
                        const_cast<jchar*>(chars)[0] = L'x';
                        env->ReleaseStringChars(text, chars);
                    },
                    java.string(L"ab")),
                ElementsAre(HasSubstr("characters of a string were changed")));
}

TEST_F(FakeJavaTest, NoticesCharactersThatAreNotReleased) {
    EXPECT_THAT(
        complaintsAbout(
            [](JNIEnv* env, jobject, jobject argument) {
                env->GetStringChars(static_cast<jstring>(argument), nullptr);
                env->GetStringUTFChars(static_cast<jstring>(argument), nullptr);
            },
            java.string(L"ab")),
        ::testing::UnorderedElementsAre(HasSubstr("what GetStringChars gave out was not released"),
                                        HasSubstr("what GetStringUTFChars gave out was not released")));
}

TEST_F(FakeJavaTest, NoticesCharactersThatAreReleasedTwiceOrByTheWrongFunction) {
    const auto complaints = complaintsAbout(
        [](JNIEnv* env, jobject, jobject argument) {
            const auto text = static_cast<jstring>(argument);
            const jchar* chars = env->GetStringChars(text, nullptr);
            env->ReleaseStringUTFChars(text, reinterpret_cast<const char*>(chars));
            env->ReleaseStringChars(text, chars);
            env->ReleaseStringChars(text, chars);
        },
        java.string(L"ab"));

    EXPECT_THAT(
        complaints,
        ElementsAre(HasSubstr("ReleaseStringUTFChars was given a pointer that GetStringUTFChars did not"),
                    HasSubstr("ReleaseStringChars was given a pointer that GetStringChars did not")));
}

// Arrays

TEST_F(FakeJavaTest, CopiesArrayElementsBackUnlessToldNotTo) {
    const JavaObject array = java.byteArray({1, 2});
    const auto change = [](jint mode) {
        return mode == 0 ? +[](JNIEnv* env, jobject, jobject argument) {
            const auto bytes = static_cast<jbyteArray>(argument);
            jbyte* elements = env->GetByteArrayElements(bytes, nullptr);
            elements[0] = 7;
            env->ReleaseByteArrayElements(bytes, elements, 0);
        } : +[](JNIEnv* env, jobject, jobject argument) {
            const auto bytes = static_cast<jbyteArray>(argument);
            jbyte* elements = env->GetByteArrayElements(bytes, nullptr);
            elements[0] = 9;
            env->ReleaseByteArrayElements(bytes, elements, JNI_ABORT);
        };
    };

    asNative(change(0), array);
    asNative(change(JNI_ABORT), array);

    EXPECT_THAT(array.bytes(), ElementsAre(7, 2));
    ASSERT_EQ(java.arrayReleases().size(), 2u);
    EXPECT_EQ(java.arrayReleases()[1].mode, JNI_ABORT);
}

TEST_F(FakeJavaTest, LeavesAnErrorOfItsOwnBehindReleasedElements) {
    asNative(
        [](JNIEnv* env, jobject, jobject argument) {
            const auto bytes = static_cast<jbyteArray>(argument);
            jbyte* elements = env->GetByteArrayElements(bytes, nullptr);
            SetLastError(ERROR_DISK_FULL);
            env->ReleaseByteArrayElements(bytes, elements, JNI_ABORT);
            EXPECT_NE(GetLastError(), DWORD{ERROR_DISK_FULL});
        },
        java.byteArray({1}));
}

TEST_F(FakeJavaTest, NoticesElementsThatAreOnlyCommitted) {
    EXPECT_THAT(complaintsAbout(
                    [](JNIEnv* env, jobject, jobject argument) {
                        const auto bytes = static_cast<jbyteArray>(argument);
                        jbyte* elements = env->GetByteArrayElements(bytes, nullptr);
                        env->ReleaseByteArrayElements(bytes, elements, JNI_COMMIT);
                    },
                    java.byteArray({1})),
                ElementsAre(HasSubstr("what GetByteArrayElements gave out was not released")));
}

TEST_F(FakeJavaTest, ThrowsForARegionBeyondTheArray) {
    asNative(
        [](JNIEnv* env, jobject, jobject argument) {
            const jbyte bytes[2] = {};
            env->SetByteArrayRegion(static_cast<jbyteArray>(argument), 1, 2, bytes);
        },
        java.byteArray({1, 2}));

    EXPECT_EQ(java.takeException().className, "java/lang/ArrayIndexOutOfBoundsException");
}

TEST_F(FakeJavaTest, MakesArraysOfStrings) {
    const auto make =
        NativeMethod<jobjectArray(JNIEnv*, jobject)>(java, "make", [](JNIEnv* env, jobject) -> jobjectArray {
            const jclass type = env->FindClass("java/lang/String");
            const jobjectArray array = env->NewObjectArray(1, type, nullptr);
            const jstring text = env->NewStringUTF("one");
            env->SetObjectArrayElement(array, 0, text);
            env->DeleteLocalRef(text);
            env->DeleteLocalRef(type);
            return array;
        });

    EXPECT_THAT(make().texts(), ElementsAre(L"one"));
}

TEST_F(FakeJavaTest, GivesTheAddressOfADirectBufferOrNone) {
    char memory[1];
    const auto addressOf = NativeMethod<jlong(JNIEnv*, jobject, jobject)>(
        java, "addressOf", [](JNIEnv* env, jobject, jobject buffer) -> jlong {
            return reinterpret_cast<jlong>(env->GetDirectBufferAddress(buffer));
        });

    EXPECT_EQ(addressOf(java.directBuffer(memory, 1)), reinterpret_cast<jlong>(memory));
    EXPECT_EQ(addressOf(java.directBuffer(nullptr, 1)), 0);
    EXPECT_EQ(addressOf(java.string(L"no buffer")), 0);
}

// References

TEST_F(FakeJavaTest, NoticesALocalReferenceThatIsNotDeleted) {
    EXPECT_THAT(
        complaintsAbout([](JNIEnv* env, jobject, jobject) { env->NewStringUTF("lost"); }),
        ElementsAre(HasSubstr("a local reference to an object of java/lang/String, made by NewStringUTF, was "
                              "not deleted (in aNative)")));
}

TEST_F(FakeJavaTest, CountsLocalReferences) {
    asNative([](JNIEnv* env, jobject, jobject) {
        const jstring first = env->NewStringUTF("1");
        const jstring second = env->NewStringUTF("2");
        env->DeleteLocalRef(first);
        env->DeleteLocalRef(second);
        env->DeleteLocalRef(env->NewStringUTF("3"));
    });

    EXPECT_EQ(java.peakReferences(), 2u);
    EXPECT_EQ(java.liveReferences(), 0u);
    EXPECT_EQ(java.count("NewStringUTF"), 3u);
}

TEST_F(FakeJavaTest, NoticesADeletedReference) {
    EXPECT_THAT(complaintsAbout([](JNIEnv* env, jobject, jobject) {
                    const jstring text = env->NewStringUTF("x");
                    env->DeleteLocalRef(text);
                    env->GetStringLength(text);
                    env->DeleteLocalRef(text);
                }),
                ElementsAre(HasSubstr("GetStringLength was given a deleted reference"),
                            HasSubstr("DeleteLocalRef was given a deleted reference")));
}

TEST_F(FakeJavaTest, NoticesWhatIsNoReference) {
    EXPECT_THAT(complaintsAbout([](JNIEnv* env, jobject, jobject) {
                    int local = 0;
                    env->GetObjectClass(reinterpret_cast<jobject>(&local));
                }),
                Contains(HasSubstr("GetObjectClass was given what is no reference")));
}

TEST_F(FakeJavaTest, NoticesAReferenceOfTheWrongKind) {
    EXPECT_THAT(complaintsAbout(
                    [](JNIEnv* env, jobject, jobject argument) {
                        env->GetStringLength(static_cast<jstring>(argument));
                        env->GetByteArrayElements(nullptr, nullptr);
                    },
                    java.byteArray({1})),
                ElementsAre(HasSubstr("GetStringLength was given an object of [B instead of a string"),
                            HasSubstr("GetByteArrayElements was given null instead of a byte array")));
}

TEST_F(FakeJavaTest, LetsANativeMethodReturnAReference) {
    const auto make = NativeMethod<jstring(JNIEnv*, jobject)>(
        java, "make", [](JNIEnv* env, jobject) -> jstring { return env->NewStringUTF("text"); });

    EXPECT_EQ(make().text(), L"text");
}

// Exceptions

TEST_F(FakeJavaTest, NoticesACallThatIsIllegalWhileAnExceptionIsPending) {
    const auto complaints = complaintsAbout([](JNIEnv* env, jobject, jobject) {
        env->FindClass("no/such/Class");
        env->DeleteLocalRef(env->NewStringUTF("too late"));
    });
    java.takeException();

    EXPECT_THAT(complaints,
                ElementsAre(HasSubstr("NewStringUTF called while java/lang/NoClassDefFoundError is "
                                      "pending")));
}

TEST_F(FakeJavaTest, LeavesAnErrorPendingForAMissingClassOrMethod) {
    asNative([](JNIEnv* env, jobject, jobject) { EXPECT_EQ(env->FindClass("no/such/Class"), nullptr); });
    EXPECT_EQ(java.takeException(), (Thrown{"java/lang/NoClassDefFoundError", L"no/such/Class"}));

    asNative([](JNIEnv* env, jobject, jobject) {
        const jclass type = env->FindClass("java/io/IOException");
        EXPECT_EQ(env->GetMethodID(type, "<init>", "(I)V"), nullptr);
        env->DeleteLocalRef(type);
    });
    EXPECT_EQ(java.takeException(), (Thrown{"java/lang/NoSuchMethodError", L"<init>"}));
}

TEST_F(FakeJavaTest, LetsNativeCodeTakeAndThrowAnExceptionAgain) {
    const Exception exception = java.exception("java/io/IOException", L"first");
    const JavaObject thrower =
        java.collector("run", "()V", [&](const Arguments&) { throw JavaThrow{exception}; });

    asNative(
        [](JNIEnv* env, jobject, jobject object) {
            const jclass type = env->GetObjectClass(object);
            env->CallVoidMethod(object, env->GetMethodID(type, "run", "()V"));
            const jthrowable taken = env->ExceptionOccurred();
            env->ExceptionClear();
            env->DeleteLocalRef(env->NewStringUTF("legal again"));
            env->Throw(taken);
            env->DeleteLocalRef(taken);
            env->DeleteLocalRef(type);
        },
        thrower);

    EXPECT_EQ(java.takeExceptionObject(), exception);
}

TEST_F(FakeJavaTest, NoticesWhenSomethingElseThanAnExceptionIsThrown) {
    EXPECT_THAT(complaintsAbout([](JNIEnv* env, jobject,
                                   jobject argument) { env->Throw(static_cast<jthrowable>(argument)); },
                                java.string(L"no exception")),
                ElementsAre(HasSubstr("Throw was given what is no exception: java/lang/String")));
}

TEST_F(FakeJavaTest, FailsTheCallThatATestChooses) {
    java.failCall("NewStringUTF", 2);

    asNative([](JNIEnv* env, jobject, jobject) {
        env->DeleteLocalRef(env->NewStringUTF("1"));
        EXPECT_EQ(env->NewStringUTF("2"), nullptr);
    });

    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
}

TEST_F(FakeJavaTest, RefusesCharactersAndElementsWithoutAWord) {
    java.failCall("GetStringChars");
    java.failCall("GetStringUTFChars");
    java.failCall("GetByteArrayElements");

    asNative(
        [](JNIEnv* env, jobject, jobject argument) {
            const auto text = static_cast<jstring>(argument);
            EXPECT_EQ(env->GetStringChars(text, nullptr), nullptr);
            EXPECT_EQ(env->GetStringUTFChars(text, nullptr), nullptr);
            EXPECT_EQ(env->GetByteArrayElements(nullptr, nullptr), nullptr);
        },
        java.string(L"ab"));

    EXPECT_FALSE(java.isPending());
}

TEST_F(FakeJavaTest, PutsDownWhichCharactersWereWipedBeforeTheyWentBack) {
    asNative(
        [](JNIEnv* env, jobject, jobject argument) {
            const auto text = static_cast<jstring>(argument);
            env->ReleaseStringChars(text, env->GetStringChars(text, nullptr));
            const jchar* chars = env->GetStringChars(text, nullptr);
            const_cast<jchar*>(chars)[0] = const_cast<jchar*>(chars)[1] = 0;
            env->ReleaseStringChars(text, chars);
        },
        java.string(L"ab"));

    ASSERT_EQ(java.stringReleases().size(), 2u);
    EXPECT_FALSE(java.stringReleases()[0].wiped);
    EXPECT_TRUE(java.stringReleases()[1].wiped);
}

TEST_F(FakeJavaTest, NamesAFunctionThatTheLibraryMayNotCall) {
    const auto complaints = complaintsAbout([](JNIEnv* env, jobject, jobject) {
        env->ExceptionCheck();
        env->NewGlobalRef(nullptr);
    });

    EXPECT_THAT(complaints, ElementsAre(HasSubstr("ExceptionCheck is not among the functions"),
                                        HasSubstr("NewGlobalRef is not among the functions")));
}

TEST_F(FakeJavaTest, NoticesAnotherThread) {
    const auto complaints = failuresOf([&] {
        JNIEnv* env = java.env();
        const HANDLE thread = CreateThread(
            nullptr, 0,
            [](void* parameter) -> DWORD {
                static_cast<JNIEnv*>(parameter)->ExceptionClear();
                return 0;
            },
            env, 0, nullptr);
        WaitForSingleObject(thread, INFINITE);
        CloseHandle(thread);
    });

    EXPECT_THAT(complaints, ElementsAre(HasSubstr("on a thread that the environment does not belong to")));
}

TEST_F(FakeJavaTest, HasNoComplaintsOfItsOwn) {
    EXPECT_THAT(complaintsAbout([](JNIEnv*, jobject, jobject) {}), IsEmpty());
}

}  // namespace
