// listNTFSPartitions, which finds the volumes on the data partitions of one disk.
#include <set>
#include <string>
#include <vector>

#include "guarded_heap.h"
#include "volume_fixture.h"

namespace testbed {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Texts = std::vector<std::wstring>;

constexpr wchar_t disk3[] = L"\\\\.\\PhysicalDrive3";

// A volume without a drive letter.
FakeVolume volumeOn(DWORD disk, DWORD partition, unsigned number) {
    return {.name = volumeName(number), .mountPoints = mountList({}), .disk = disk, .partition = partition};
}

class DiskVolumes : public VolumeTest {
protected:
    Texts list(const std::wstring& disk = disk3) {
        const JavaObject collection = java.list();
        NATIVE(listNTFSPartitions)(disk, collection);
        return textsOf(collection);
    }
    void expectFailure(const Thrown& thrown, const std::wstring& disk = disk3) {
        EXPECT_THAT(list(disk), IsEmpty());
        EXPECT_EQ(java.takeException(), thrown);
    }
};

TEST_F(DiskVolumes, AreThoseOnTheDataPartitionsOfAnMbrDisk) {
    FakeMachine machine(system(), {});
    machine.partitions = {mbrPartition(1, 0x07), mbrPartition(2, 0x0B), mbrPartition(3, 0x0C),
                          mbrPartition(4, 0x07)};
    for (DWORD partition = 1; partition <= 4; ++partition) {
        machine.volumes.push_back(volumeOn(3, partition, partition));
    }
    EXPECT_EQ(list(), (Texts{volumeName(1), volumeName(4)}));
}

TEST_F(DiskVolumes, AreThoseOnTheBasicDataPartitionsOfAGptDisk) {
    FakeMachine machine(system(), {});
    machine.style = PARTITION_STYLE_GPT;
    machine.partitions = {gptPartition(1, efiSystem), gptPartition(2, basicData), gptPartition(3, recovery),
                          gptPartition(4, basicData, 0)};
    for (DWORD partition = 1; partition <= 4; ++partition) {
        machine.volumes.push_back(volumeOn(3, partition, partition));
    }
    EXPECT_EQ(list(), Texts{volumeName(2)});
}

TEST_F(DiskVolumes, AreNoneOnADiskOfNoKnownStyle) {
    for (const DWORD style : {DWORD{PARTITION_STYLE_RAW}, DWORD{3}, DWORD{MAXDWORD}}) {
        FakeMachine machine(system(), {volumeOn(3, 1, 1)});
        machine.style = style;
        machine.partitions = {mbrPartition(1, 0x07)};
        EXPECT_THAT(list(), IsEmpty());
    }
}

TEST_F(DiskVolumes, AreAskedForWithTheAccessThatItTakes) {
    FakeMachine machine(system(), {volumeOn(3, 1, 1)});
    machine.partitions = {mbrPartition(1, 0x07)};
    list();
    std::wstring device = volumeName(1);
    device.pop_back();
    EXPECT_THAT(machine.opened, ElementsAre(OpenCall{disk3, 0x80000000, 1, 3, 0},
                                            OpenCall{device, 0x80000000, 3, 3, 0x02000080}));
    ASSERT_EQ(machine.asked.size(), 2U);
    EXPECT_EQ(machine.asked[0].code, 0x70050U);
    EXPECT_EQ(machine.asked[0].inSize, 0U);
    EXPECT_EQ(machine.asked[1].code, 0x2D1080U);
    EXPECT_EQ(machine.asked[1].inSize, 0U);
    EXPECT_EQ(machine.asked[1].outSize, 12U);
    EXPECT_THAT(machine.nameRooms, ElementsAre(520, 520));
    EXPECT_THAT(machine.mountRooms, ElementsAre(2049));
}

TEST_F(DiskVolumes, AreShownByTheirDriveLetters) {
    FakeMachine machine(system(), {volumeOn(3, 1, 1), volumeOn(3, 2, 2)});
    machine.volumes[0].mountPoints = mountList({L"\\\\?\\x\\", L"E:\\"});
    machine.partitions = {mbrPartition(2, 0x07), mbrPartition(1, 0x07)};
    // In the order of the volumes.
    EXPECT_EQ(list(), (Texts{L"E:\\", volumeName(2)}));
}

TEST_F(DiskVolumes, LieOnThisDiskAndOnOneOfThesePartitions) {
    FakeMachine machine(system(),
                        {volumeOn(2, 1, 1), volumeOn(3, 0, 2), volumeOn(3, 1, 3), volumeOn(0, 1, 4)});
    machine.partitions = {mbrPartition(1, 0x07), mbrPartition(2, 0x07)};
    EXPECT_EQ(list(), Texts{volumeName(3)});
    EXPECT_EQ(list(L"\\\\.\\PhysicalDrive2"), Texts{volumeName(1)});
    EXPECT_EQ(list(L"\\\\.\\PhysicalDrive0"), Texts{volumeName(4)});
    EXPECT_THAT(list(L"\\\\.\\PhysicalDrive33"), IsEmpty());
}

TEST_F(DiskVolumes, AreGivenOnceForEachPartitionOfTheirNumber) {
    FakeMachine machine(system(), {volumeOn(3, 0, 1)});
    machine.partitions = {mbrPartition(0, 0x07), mbrPartition(1, 0x07), mbrPartition(0, 0x07)};
    EXPECT_EQ(list(), (Texts{volumeName(1), volumeName(1)}));
}

TEST_F(DiskVolumes, ThatDoNotOpenOrSayWhereTheyAreArePassedOver) {
    FakeMachine machine(system(), {volumeOn(3, 1, 1), volumeOn(3, 1, 2), volumeOn(3, 1, 3)});
    machine.volumes[0].openError = ERROR_ACCESS_DENIED;
    machine.volumes[1].deviceError = ERROR_INVALID_FUNCTION;
    machine.partitions = {mbrPartition(1, 0x07)};
    EXPECT_EQ(list(), Texts{volumeName(3)});
    EXPECT_THAT(printed, IsEmpty());
}

// What the answer of the volume before left on the stack is no answer of this one.
TEST_F(DiskVolumes, ThatAnswerWithoutSayingWhereTheyAreArePassedOver) {
    FakeMachine machine(system(), {volumeOn(0, 0, 1), volumeOn(0, 0, 2)});
    machine.volumes[1].tongueTied = true;
    machine.partitions = {mbrPartition(0, 0x07)};
    EXPECT_EQ(list(L"\\\\.\\PhysicalDrive0"), Texts{volumeName(1)});
}

TEST_F(DiskVolumes, MayHaveNamesWithoutABackslash) {
    FakeMachine machine(system(), {volumeOn(3, 1, 1)});
    const std::wstring name = machine.volumes[0].name;
    machine.volumes[0].name.pop_back();
    machine.partitions = {mbrPartition(1, 0x07)};
    EXPECT_EQ(list(), Texts{name});
}

TEST_F(DiskVolumes, MayHaveNamesOfAnyLengthThatFits) {
    FakeMachine machine(system(), {volumeOn(3, 1, 1), volumeOn(3, 1, 2), volumeOn(3, 1, 3)});
    machine.volumes[0].name = L"";
    machine.volumes[1].name = std::wstring(519, L'x');
    machine.volumes[2].name = L"\\";
    machine.partitions = {mbrPartition(1, 0x07)};
    const GuardedHeap heap(system());
    EXPECT_EQ(list(), (Texts{L"\\", std::wstring(519, L'x') + L"\\", L"\\"}));
}

struct LayoutSize {
    DWORD partitions;
    std::vector<DWORD> sizes;
};

TEST_F(DiskVolumes, AreFoundHoweverManyPartitionsThereAre) {
    for (const LayoutSize& layout : {LayoutSize{0, {336}},
                                     {1, {336}},
                                     {2, {336}},
                                     {3, {336, 2640}},
                                     {4, {336, 2640}},
                                     {18, {336, 2640}},
                                     {19, {336, 2640, 4944}},
                                     {128, {336, 2640, 4944, 7248, 9552, 11856, 14160, 16464, 18768}}}) {
        FakeMachine machine(system(), {volumeOn(3, layout.partitions, 1)});
        machine.style = PARTITION_STYLE_GPT;
        for (DWORD i = 1; i <= layout.partitions; ++i) {
            machine.partitions.push_back(gptPartition(i, basicData));
        }
        const GuardedHeap heap(system());
        EXPECT_EQ(list(), layout.partitions == 0 ? Texts{} : Texts{volumeName(1)}) << layout.partitions;
        EXPECT_EQ(machine.layoutSizes(), layout.sizes);
    }
}

TEST_F(DiskVolumes, AreThoseOfThePartitionsThatTheDiskGivesWhateverItCounts) {
    for (const DWORD tooMany : {1U, 2U, 1000U, MAXDWORD - 1}) {
        FakeMachine machine(system(), {volumeOn(3, 1, 1), volumeOn(3, 0, 2)});
        machine.partitions = {mbrPartition(1, 0x07)};
        machine.countedTooMany = tooMany;
        const GuardedHeap heap(system());
        EXPECT_EQ(list(), Texts{volumeName(1)}) << tooMany;
    }
}

TEST_F(DiskVolumes, AreWalkedEvenWhenNoPartitionQualifies) {
    FakeMachine machine(system(), {volumeOn(3, 1, 1), volumeOn(3, 2, 2)});
    EXPECT_THAT(list(), IsEmpty());
    EXPECT_EQ(machine.nameRooms.size(), 3U);
    EXPECT_EQ(machine.opened.size(), 3U);
    machine.endError = ERROR_ACCESS_DENIED;
    expectFailure(ioException(systemText(ERROR_ACCESS_DENIED)));
}

TEST_F(DiskVolumes, NeedANumberAtTheEndOfTheDisksPath) {
    FakeMachine machine(system(), {volumeOn(3, 1, 1)});
    machine.partitions = {mbrPartition(1, 0x07)};
    for (const wchar_t* path : {L"\\\\.\\PhysicalDrive", L"", L"C:\\", L"\\\\.\\PhysicalDrive3000000000",
                                L"\\\\.\\PhysicalDrive4294967295"}) {
        expectFailure(ioException(systemText(ERROR_PATH_NOT_FOUND)), path);
    }
    EXPECT_THAT(machine.opened, IsEmpty());
    EXPECT_THAT(machine.nameRooms, IsEmpty());
}

TEST_F(DiskVolumes, OfAMissingDiskAreAFileNotFound) {
    FakeMachine machine(system(), {volumeOn(3, 1, 1)});
    machine.diskError = ERROR_FILE_NOT_FOUND;
    expectFailure(fileNotFound(systemText(ERROR_FILE_NOT_FOUND)));
    EXPECT_THAT(machine.nameRooms, IsEmpty());
}

TEST_F(DiskVolumes, OfADiskThatDoesNotOpenFailWithTheSystemsText) {
    for (const DWORD code : {ERROR_PATH_NOT_FOUND, ERROR_ACCESS_DENIED, ERROR_INVALID_NAME}) {
        FakeMachine machine(system(), {volumeOn(3, 1, 1)});
        machine.diskError = code;
        expectFailure(ioException(systemText(code)));
    }
}

TEST_F(DiskVolumes, OfADiskWithoutALayoutFailWithTheSystemsText) {
    for (const DWORD code : {ERROR_NOT_SUPPORTED, ERROR_MORE_DATA, ERROR_NO_MORE_FILES}) {
        FakeMachine machine(system(), {volumeOn(3, 1, 1)});
        machine.layoutError = code;
        expectFailure(ioException(systemText(code)));
        EXPECT_THAT(machine.layoutSizes(), ElementsAre(336));
        EXPECT_THAT(machine.nameRooms, IsEmpty());
    }
    FakeMachine machine(system(), {volumeOn(3, 1, 1)});
    machine.layoutError = ERROR_FILE_NOT_FOUND;
    expectFailure(fileNotFound(systemText(ERROR_FILE_NOT_FOUND)));
}

TEST_F(DiskVolumes, FailWithASubstituteWhereTheSystemHasNoText) {
    FakeMachine machine(system(), {});
    machine.diskError = 0x20001234;
    ASSERT_EQ(systemText(0x20001234), L"");
    expectFailure(ioException(L"Failed to obtain error message"));
}

TEST_F(DiskVolumes, OfADiskWhoseLayoutFitsNowhereFailInTheEnd) {
    FakeMachine machine(system(), {volumeOn(3, 1, 1)});
    machine.layoutError = ERROR_INSUFFICIENT_BUFFER;
    expectFailure(ioException(systemText(ERROR_INSUFFICIENT_BUFFER)));
    EXPECT_GT(machine.layoutSizes().size(), 100U);
    EXPECT_LE(machine.layoutSizes().back(), 0x400000U);
}

TEST_F(DiskVolumes, FailWhenTheVolumesCannotBeSearched) {
    FakeMachine machine(system(), {volumeOn(3, 1, 1)});
    machine.partitions = {mbrPartition(1, 0x07)};
    machine.firstError = ERROR_ACCESS_DENIED;
    expectFailure(ioException(systemText(ERROR_ACCESS_DENIED)));
    machine.firstError = ERROR_FILE_NOT_FOUND;
    expectFailure(fileNotFound(systemText(ERROR_FILE_NOT_FOUND)));
    // Only at the end of a search does this code mean an end.
    machine.firstError = ERROR_NO_MORE_FILES;
    expectFailure(ioException(systemText(ERROR_NO_MORE_FILES)));
}

TEST_F(DiskVolumes, AreNotReportedWhenTheSearchBreaksOff) {
    FakeMachine machine(system(), {volumeOn(3, 1, 1), volumeOn(3, 1, 2)});
    machine.partitions = {mbrPartition(1, 0x07)};
    machine.endError = ERROR_GEN_FAILURE;
    expectFailure(ioException(systemText(ERROR_GEN_FAILURE)));
}

TEST_F(DiskVolumes, FailWhereverThereIsNoMemoryForThem) {
    for (const char* function : {"malloc", "calloc"}) {
        std::size_t failures = 0;
        for (std::size_t k = 1;; ++k) {
            FakeMachine machine(system(), {volumeOn(3, 1, 1), volumeOn(3, 1, 2)});
            machine.partitions = {mbrPartition(1, 0x07)};
            const Replacement failing = system().failCall(function, k, ERROR_NOT_ENOUGH_MEMORY);
            const Texts texts = list();
            const Thrown thrown = java.takeException();
            if (failing.count() < k) {
                break;
            }
            if (thrown == nothingThrown()) {
                // Without memory for the mount points, the names themselves are shown.
                EXPECT_EQ(texts, (Texts{volumeName(1), volumeName(2)}));
            } else {
                EXPECT_EQ(thrown, ioException(systemText(ERROR_NOT_ENOUGH_MEMORY)));
                EXPECT_THAT(texts, IsEmpty());
                ++failures;
            }
        }
        EXPECT_GT(failures, 0U) << function;
    }
}

TEST_F(DiskVolumes, EndWithWhatTheCollectorThrows) {
    FakeMachine machine(system(), {volumeOn(3, 1, 1), volumeOn(3, 1, 2)});
    machine.partitions = {mbrPartition(1, 0x07)};
    java.defineException("java/lang/IllegalStateException");
    int added = 0;
    const JavaObject collector =
        java.collector("add", "(Ljava/lang/Object;)Z", [&](const Arguments&) -> bool {
            ++added;
            throw JavaThrow{java.exception("java/lang/IllegalStateException", L"enough")};
        });
    NATIVE(listNTFSPartitions)(disk3, collector);
    EXPECT_EQ(java.takeException(), (Thrown{"java/lang/IllegalStateException", L"enough"}));
    EXPECT_EQ(added, 1);
}

TEST_F(DiskVolumes, AreFoundAndDroppedWithoutTheCollectorsMethod) {
    FakeMachine machine(system(), {volumeOn(3, 1, 1)});
    machine.partitions = {mbrPartition(1, 0x07)};
    NATIVE(listNTFSPartitions)(disk3, java.object("java/lang/Object"));
    NATIVE(listNTFSPartitions)(disk3, nullptr);
    EXPECT_EQ(machine.opened.size(), 4U);
    machine.diskError = ERROR_ACCESS_DENIED;
    NATIVE(listNTFSPartitions)(disk3, java.object("java/lang/Object"));
    EXPECT_EQ(java.takeException(), ioException(systemText(ERROR_ACCESS_DENIED)));
}

TEST_F(DiskVolumes, KeepTheNumberOfReferencesFlat) {
    FakeMachine machine(system(), {});
    machine.partitions = {mbrPartition(1, 0x07)};
    for (unsigned i = 0; i < 300; ++i) {
        machine.volumes.push_back(volumeOn(3, 1, i));
    }
    EXPECT_EQ(list().size(), 300U);
    EXPECT_LE(java.peakReferences(), 2U);
}

TEST_F(DiskVolumes, CloseAVolumeBeforeTheNextIsLookedFor) {
    FakeMachine machine(system(), {volumeOn(3, 1, 1), volumeOn(2, 1, 2)});
    machine.partitions = {mbrPartition(1, 0x07)};
    std::vector<std::size_t> held;
    const Replacement next = REPLACE(FindNextVolumeW, [&](HANDLE, LPWSTR, DWORD) {
        std::size_t handles = 0;
        for (const Holding& holding : ledger().left()) {
            handles += holding.kind == Kind::handle ? 1U : 0U;
        }
        held.push_back(handles);
        SetLastError(ERROR_NO_MORE_FILES);
        return FALSE;
    });
    list();
    EXPECT_THAT(held, ElementsAre(0));
}

}  // namespace

}  // namespace testbed
