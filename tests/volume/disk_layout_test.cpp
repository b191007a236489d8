#include "volume/disk_layout.h"

#include "volume_fixture.h"

namespace testbed {

namespace {

using winutil::volume::isDataPartition;
using winutil::volume::partitionEntries;

TEST(DiskLayout, OfAnMbrDiskHasDataOnPartitionsOfTheIfsType) {
    for (unsigned type = 0; type <= 0xFF; ++type) {
        EXPECT_EQ(isDataPartition(PARTITION_STYLE_MBR, mbrPartition(1, static_cast<BYTE>(type))), type == 7)
            << type;
    }
}

TEST(DiskLayout, OfAnMbrDiskHasNoDataOnWhatTheSystemDoesNotRecognize) {
    PARTITION_INFORMATION_EX partition = mbrPartition(1, 7);
    partition.Mbr.RecognizedPartition = FALSE;
    EXPECT_FALSE(isDataPartition(PARTITION_STYLE_MBR, partition));
}

TEST(DiskLayout, OfAGptDiskHasDataOnBasicDataPartitions) {
    EXPECT_TRUE(isDataPartition(PARTITION_STYLE_GPT, gptPartition(1, basicData)));
    EXPECT_FALSE(isDataPartition(PARTITION_STYLE_GPT, gptPartition(1, efiSystem)));
    EXPECT_FALSE(isDataPartition(PARTITION_STYLE_GPT, gptPartition(1, recovery)));
    GUID nearly = basicData;
    nearly.Data4[7] ^= 1;
    EXPECT_FALSE(isDataPartition(PARTITION_STYLE_GPT, gptPartition(1, nearly)));
}

TEST(DiskLayout, HasDataOnlyWhereThereIsLength) {
    for (const LONGLONG length : {0LL, -1LL, INT64_MIN}) {
        EXPECT_FALSE(isDataPartition(PARTITION_STYLE_MBR, mbrPartition(1, 7, length)));
        EXPECT_FALSE(isDataPartition(PARTITION_STYLE_GPT, gptPartition(1, basicData, length)));
    }
    EXPECT_TRUE(isDataPartition(PARTITION_STYLE_MBR, mbrPartition(1, 7, 1)));
    EXPECT_TRUE(isDataPartition(PARTITION_STYLE_GPT, gptPartition(1, basicData, INT64_MAX)));
}

TEST(DiskLayout, GoesByTheStyleOfTheDisk) {
    EXPECT_FALSE(isDataPartition(PARTITION_STYLE_GPT, mbrPartition(1, 7)));
    EXPECT_FALSE(isDataPartition(PARTITION_STYLE_RAW, mbrPartition(1, 7)));
    EXPECT_FALSE(isDataPartition(PARTITION_STYLE_RAW, gptPartition(1, basicData)));
    EXPECT_FALSE(isDataPartition(77, mbrPartition(1, 7)));
    PARTITION_INFORMATION_EX mixed = gptPartition(1, basicData);
    mixed.PartitionStyle = PARTITION_STYLE_MBR;
    EXPECT_TRUE(isDataPartition(PARTITION_STYLE_GPT, mixed));
}

TEST(DiskLayout, HasNoMoreEntriesThanItsBytesHold) {
    GuardedBuffer block(336, "layout");
    auto& layout = *block.as<DRIVE_LAYOUT_INFORMATION_EX>();
    for (const auto& [count, held] : {std::pair(0u, 0u), {1, 1}, {2, 2}, {3, 2}, {0xFFFFFFFF, 2}}) {
        layout.PartitionCount = count;
        EXPECT_EQ(partitionEntries(layout, block.size()).size(), held) << count;
        EXPECT_EQ(static_cast<const void*>(partitionEntries(layout, block.size()).data()), block.data() + 48);
    }
    EXPECT_EQ(partitionEntries(layout, 335).size(), 1u);
    EXPECT_EQ(partitionEntries(layout, 47).size(), 0u);
}

}  // namespace

}  // namespace testbed
