// The list of group names that is handed over, and the one that comes back.
#include "membership_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using MembershipList = MembershipTest;

TEST_F(MembershipList, IsANewOneOfTheSameClass) {
    isMemberOf({L"Staff"});

    ASSERT_TRUE(result);
    EXPECT_NE(result, list);
    EXPECT_EQ(result.className(), listClass);
    EXPECT_EQ(result.constructor(), "()V");
}

TEST_F(MembershipList, IsEmptyForAnEmptyOne) {
    EXPECT_THAT(isMemberOf({}), IsEmpty());

    ASSERT_TRUE(result);
    EXPECT_NE(result, list);
    EXPECT_THAT(directory.bound(), IsEmpty());
}

TEST_F(MembershipList, HasTheVeryNamesThatWereHandedOver) {
    addGroup(L"Admins", {});

    isMemberOf({L"Admins"});

    EXPECT_EQ(added, names);
}

TEST_F(MembershipList, HasTheElementsThatAreNull) {
    addGroup(L"Admins", {});
    addGroup(L"Staff", {alice});
    names = {nullptr, java.string(L"Admins"), java.string(L"Staff"), nullptr};

    const JavaObject made = NATIVE(isMemberOf)(list);

    EXPECT_THAT(added, ElementsAre(JavaObject(), names[1], JavaObject()));
    EXPECT_TRUE(made);
}

TEST_F(MembershipList, HasANameThatJavaHasNoMemoryFor) {
    addGroup(L"Staff", {alice});
    java.failCall("GetStringChars", 1);

    EXPECT_THAT(isMemberOf({L"Staff", L"Staff"}), ElementsAre(L"Staff"));

    EXPECT_EQ(java.takeException(), nothingThrown());
    EXPECT_THAT(directory.questions(), SizeIs(1));
}

TEST_F(MembershipList, IsNullForNull) {
    EXPECT_FALSE(NATIVE(isMemberOf)(nullptr));
}

struct MissingMethod {
    const char* name;
    const char* method;
    const char* signature;
};

class IncompleteList : public MembershipTest, public testing::WithParamInterface<MissingMethod> {};

TEST_P(IncompleteList, GivesNullAndNoException) {
    java.removeMethod(listClass, GetParam().method, GetParam().signature);

    isMemberOf({L"Staff"});

    EXPECT_FALSE(result);
    EXPECT_EQ(java.takeException(), nothingThrown());
    EXPECT_THAT(directory.bound(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Methods, IncompleteList,
                         testing::Values(MissingMethod{"Add", "add", "(Ljava/lang/Object;)Z"},
                                         MissingMethod{"Get", "get", "(I)Ljava/lang/Object;"},
                                         MissingMethod{"Size", "size", "()I"},
                                         MissingMethod{"Constructor", "<init>", "()V"}),
                         [](const auto& test) { return test.param.name; });

const Thrown broken{"java/lang/IllegalStateException", L"broken"};

class ThrowingList : public MembershipTest {
protected:
    // Has a method of the list throw.
    void throwIn(const char* method, const char* signature) {
        java.removeMethod(listClass, method, signature);
        java.defineMethod(listClass, method, signature, [this](const Arguments&) -> Value {
            throw JavaThrow{java.exception(broken.className, broken.message)};
        });
    }
};

TEST_F(ThrowingList, LetsTheExceptionOfSizeThrough) {
    throwIn("size", "()I");

    isMemberOf({L"Staff"});

    EXPECT_FALSE(result);
    EXPECT_EQ(java.takeException(), broken);
}

TEST_F(ThrowingList, LetsTheExceptionOfGetThrough) {
    throwIn("get", "(I)Ljava/lang/Object;");

    isMemberOf({L"Staff", L"Admins"});

    EXPECT_FALSE(result);
    EXPECT_EQ(java.takeException(), broken);
    EXPECT_EQ(java.count("CallObjectMethod"), 1u);
}

TEST_F(ThrowingList, LetsTheExceptionOfAddThroughAndEndsThere) {
    addGroup(L"Admins", {});
    throwIn("add", "(Ljava/lang/Object;)Z");

    isMemberOf({L"Admins", L"Admins"});

    EXPECT_FALSE(result);
    EXPECT_EQ(java.takeException(), broken);
    EXPECT_EQ(java.count("CallBooleanMethod"), 1u);
}

TEST_F(ThrowingList, LetsTheExceptionOfTheConstructorThrough) {
    java.failCall("NewObject", 1, "java/lang/InstantiationException");

    isMemberOf({L"Staff"});

    EXPECT_FALSE(result);
    EXPECT_EQ(java.takeException().className, "java/lang/InstantiationException");
    EXPECT_THAT(directory.bound(), IsEmpty());
}

TEST_F(MembershipList, KeepsTheReferenceCountFlat) {
    addGroup(L"Admins", {});

    EXPECT_EQ(isMemberOf(std::vector<std::wstring>(1000, L"Admins")).size(), 1000u);

    EXPECT_LE(java.peakReferences(), 5u);
}

}  // namespace
