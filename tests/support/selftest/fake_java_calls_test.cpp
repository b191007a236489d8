// Calls of Java methods and constructors, in their three forms.
#include "fake_java_fixture.h"

namespace {

using namespace testbed;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr const char* everyType = "(Ljava/lang/String;ZBCSIJFD[B)V";

// Passes one value of each type to the method "take", in the form that the number says.
void passEveryType(JNIEnv* env, jobject object, int form) {
    const jclass type = env->GetObjectClass(object);
    const jmethodID take = env->GetMethodID(type, "take", everyType);
    const jstring text = env->NewStringUTF("text");
    const jbyteArray bytes = env->NewByteArray(3);
    const auto throughList = [&](JNIEnv* environment, ...) {
        va_list list;
        va_start(list, environment);
        environment->CallVoidMethodV(object, take, list);
        va_end(list);
    };
    if (form == 0) {
        env->functions->CallVoidMethod(env, object, take, text, JNI_TRUE, -1, 0xFFFF, -2, -3L, -4LL, 1.5, 2.5,
                                       bytes);
    } else if (form == 1) {
        throughList(env, text, JNI_TRUE, -1, 0xFFFF, -2, -3L, -4LL, 1.5, 2.5, bytes);
    } else {
        jvalue values[10];
        values[0].l = text;
        values[1].z = JNI_TRUE;
        values[2].b = -1;
        values[3].c = 0xFFFF;
        values[4].s = -2;
        values[5].i = -3;
        values[6].j = -4;
        values[7].f = 1.5f;
        values[8].d = 2.5;
        values[9].l = bytes;
        env->CallVoidMethodA(object, take, values);
    }
    env->DeleteLocalRef(bytes);
    env->DeleteLocalRef(text);
    env->DeleteLocalRef(type);
}

class FakeJavaCalls : public FakeJavaTest, public ::testing::WithParamInterface<int> {};

TEST_P(FakeJavaCalls, DecodeEveryType) {
    Arguments seen;
    const JavaObject taker = java.collector("take", everyType, [&](const Arguments& given) { seen = given; });

    NativeMethod<void(JNIEnv*, jobject, jobject, jint)>(java, "pass",
                                                        [](JNIEnv* env, jobject, jobject object, jint form) {
                                                            passEveryType(env, object, form);
                                                        })(taker, GetParam());

    ASSERT_EQ(seen.size(), 10u);
    EXPECT_EQ(seen[0].text(), L"text");
    EXPECT_TRUE(seen[1].boolean());
    EXPECT_EQ(seen[2].number(), -1);
    EXPECT_EQ(seen[3].number(), 0xFFFF);
    EXPECT_EQ(seen[4].number(), -2);
    EXPECT_EQ(seen[5].number(), -3);
    EXPECT_EQ(seen[6].number(), -4);
    EXPECT_EQ(std::get<float>(seen[7].any()), 1.5f);
    EXPECT_EQ(std::get<double>(seen[8].any()), 2.5);
    EXPECT_EQ(seen[9].object().bytes().size(), 3u);
}

INSTANTIATE_TEST_SUITE_P(Form, FakeJavaCalls, ::testing::Values(0, 1, 2));

TEST_F(FakeJavaTest, KeepsWhatAConstructorWasGiven) {
    const auto make =
        NativeMethod<jobject(JNIEnv*, jobject)>(java, "make", [](JNIEnv* env, jobject) -> jobject {
            const jclass type = env->FindClass("com/qarvo/kel/util/WinPipe");
            const jobject made = env->NewObject(type, env->GetMethodID(type, "<init>", "(J)V"), jlong{77});
            env->DeleteLocalRef(type);
            return made;
        });

    const JavaObject pipe = make();

    EXPECT_EQ(pipe.className(), "com/qarvo/kel/util/WinPipe");
    EXPECT_EQ(pipe.constructor(), "(J)V");
    EXPECT_EQ(pipe.arguments()[0].number(), 77);
}

TEST_F(FakeJavaTest, ReturnsBooleansNumbersAndObjects) {
    const JavaObject list = java.list({java.string(L"first")});

    asNative(
        [](JNIEnv* env, jobject, jobject object) {
            const jclass type = env->GetObjectClass(object);
            EXPECT_EQ(env->CallIntMethod(object, env->GetMethodID(type, "size", "()I")), 1);
            const jobject first = env->CallObjectMethod(
                object, env->GetMethodID(type, "get", "(I)Ljava/lang/Object;"), jint{0});
            EXPECT_TRUE(env->CallBooleanMethod(object, env->GetMethodID(type, "add", "(Ljava/lang/Object;)Z"),
                                               first));
            env->DeleteLocalRef(first);
            env->DeleteLocalRef(type);
        },
        list);

    ASSERT_EQ(FakeJava::listElements(list).size(), 2u);
    EXPECT_EQ(FakeJava::listElements(list)[1].text(), L"first");
}

TEST_F(FakeJavaTest, NoticesABooleanThatIsNeitherTrueNorFalse) {
    const JavaObject taker = java.collector("take", "(Z)V", [](const Arguments&) {});

    EXPECT_THAT(complaintsAbout(
                    [](JNIEnv* env, jobject, jobject object) {
                        const jclass type = env->GetObjectClass(object);
                        env->CallVoidMethod(object, env->GetMethodID(type, "take", "(Z)V"), 16);
                        env->DeleteLocalRef(type);
                    },
                    taker),
                ElementsAre(HasSubstr("CallVoidMethod was given a boolean of 16")));
}

TEST_F(FakeJavaTest, NoticesAnArgumentOfAnotherClass) {
    const JavaObject taker = java.collector("take", "([B)V", [](const Arguments&) {});

    EXPECT_THAT(complaintsAbout(
                    [](JNIEnv* env, jobject, jobject object) {
                        const jclass type = env->GetObjectClass(object);
                        env->CallVoidMethod(object, env->GetMethodID(type, "take", "([B)V"), type);
                        env->DeleteLocalRef(type);
                    },
                    taker),
                ElementsAre(HasSubstr("an object of java/lang/Class where the signature says [B")));
}

TEST_F(FakeJavaTest, NoticesAMethodOfAnotherClass) {
    const JavaObject taker = java.collector("take", "()V", [](const Arguments&) {});

    EXPECT_THAT(complaintsAbout(
                    [](JNIEnv* env, jobject, jobject object) {
                        const jclass type = env->FindClass("com/qarvo/kel/util/WinPipe");
                        const jmethodID constructor = env->GetMethodID(type, "<init>", "(J)V");
                        env->CallVoidMethod(object, constructor, jlong{1});
                        env->CallVoidMethod(object, reinterpret_cast<jmethodID>(object));
                        env->DeleteLocalRef(type);
                    },
                    taker),
                Contains(HasSubstr("CallVoidMethod was given a method of com/qarvo/kel/util/WinPipe")));
}

TEST_F(FakeJavaTest, NoticesACallForAnotherResult) {
    const JavaObject adder = java.collector("add", "(I)Z", [](const Arguments&) -> Value { return true; });

    EXPECT_THAT(complaintsAbout(
                    [](JNIEnv* env, jobject, jobject object) {
                        const jclass type = env->GetObjectClass(object);
                        env->CallVoidMethod(object, env->GetMethodID(type, "add", "(I)Z"), jint{1});
                        env->DeleteLocalRef(type);
                    },
                    adder),
                ElementsAre(HasSubstr("CallVoidMethod calls add, whose result is Z")));
}

TEST_F(FakeJavaTest, ReportsATestsOwnMistakeInAMethod) {
    const JavaObject taker =
        java.collector("take", "(J)V", [](const Arguments& arguments) { arguments[0].text(); });

    EXPECT_THAT(complaintsAbout(
                    [](JNIEnv* env, jobject, jobject object) {
                        const jclass type = env->GetObjectClass(object);
                        env->CallVoidMethod(object, env->GetMethodID(type, "take", "(J)V"), jlong{1});
                        env->DeleteLocalRef(type);
                    },
                    taker),
                ElementsAre(HasSubstr("the test's take failed: a number where an object is expected")));
}

TEST_F(FakeJavaTest, ForgetsAClassOrAMethodThatATestRemoves) {
    java.removeClass("java/io/IOException");
    java.removeMethod("com/qarvo/kel/util/WinPipe", "<init>", "(J)V");

    asNative(
        [](JNIEnv* env, jobject, jobject) { EXPECT_EQ(env->FindClass("java/io/IOException"), nullptr); });
    EXPECT_EQ(java.takeException().className, "java/lang/NoClassDefFoundError");
    asNative([](JNIEnv* env, jobject, jobject) {
        const jclass type = env->FindClass("com/qarvo/kel/util/WinPipe");
        EXPECT_EQ(env->GetMethodID(type, "<init>", "(J)V"), nullptr);
        env->DeleteLocalRef(type);
    });
    EXPECT_EQ(java.takeException().className, "java/lang/NoSuchMethodError");
}

}  // namespace
