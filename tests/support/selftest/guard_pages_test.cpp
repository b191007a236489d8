#include "guard_pages.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "guarded_heap.h"
#include "selftest_library.h"

namespace {

using namespace testbed;

bool isAccessible(const void* address) {
    MEMORY_BASIC_INFORMATION region = {};
    VirtualQuery(address, &region, sizeof region);
    return region.State == MEM_COMMIT && region.Protect == PAGE_READWRITE;
}

TEST(GuardPages, EndRightBehindTheContent) {
    for (const std::size_t size : {1u, 2u, 4095u, 4096u, 4097u}) {
        const GuardedBuffer buffer(size, "the buffer");

        EXPECT_TRUE(isAccessible(buffer.data()));
        EXPECT_TRUE(isAccessible(buffer.data() + size - 1));
        EXPECT_FALSE(isAccessible(buffer.data() + size));
        EXPECT_EQ(guardedBufferBefore(buffer.data() + size), "the buffer");
    }
}

TEST(GuardPages, HoldTheContent) {
    const char content[] = "content";

    const GuardedBuffer buffer(std::as_bytes(std::span(content)));

    EXPECT_STREQ(buffer.as<char>(), content);
}

TEST(GuardPages, MakeAnEmptyBufferInaccessible) {
    const GuardedBuffer buffer(0, "nothing");

    EXPECT_NE(buffer.data(), nullptr);
    EXPECT_FALSE(isAccessible(buffer.data()));
}

TEST(GuardPages, AreForgottenWithTheBuffer) {
    const std::byte* end = nullptr;
    {
        const GuardedBuffer buffer(1, "gone");
        end = buffer.data() + 1;
    }
    EXPECT_EQ(guardedBufferBefore(end), "");
}

using GuardedHeapTest = MisbehavingLibrary;

TEST_F(GuardedHeapTest, ServesTheLibrary) {
    ASSERT_TRUE(library.load());
    {
        const GuardedHeap heap(library.system());
        EXPECT_NE(exported<int()>("readFreshMemory")(), 0);
    }
    library.unload();

    EXPECT_THAT(ledger.differences(), ::testing::IsEmpty());
}

}  // namespace
