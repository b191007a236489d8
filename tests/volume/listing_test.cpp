// listPartitions, which hands every volume of the machine to a collector.
#include <cwchar>
#include <string>
#include <vector>

#include "guarded_heap.h"
#include "volume_fixture.h"

namespace testbed {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Texts = std::vector<std::wstring>;

class VolumeListing : public VolumeTest {
protected:
    Texts list() {
        const JavaObject collection = java.list();
        NATIVE(listPartitions)(collection);
        return textsOf(collection);
    }
    Texts listOne(const std::wstring& mountPoints) {
        FakeMachine machine(system(), {{.name = volumeName(1), .mountPoints = mountPoints}});
        return list();
    }
};

TEST_F(VolumeListing, GivesVolumesByTheirDriveLettersOrElseByTheirNames) {
    FakeMachine machine(system(), {{.name = volumeName(1), .mountPoints = mountList({L"C:\\"})},
                                   {.name = volumeName(2), .mountPoints = mountList({})},
                                   {.name = volumeName(3), .mountPoints = mountList({L"\\\\?\\folder\\"})},
                                   {.name = volumeName(4), .mountPoints = mountList({L"X:\\"})}});
    EXPECT_EQ(list(), (Texts{L"C:\\", volumeName(2), volumeName(3), L"X:\\"}));
    EXPECT_EQ(printed, "");
    EXPECT_THAT(machine.nameRooms, ElementsAre(2048, 2048, 2048, 2048, 2048));
    EXPECT_THAT(machine.mountRooms, ElementsAre(2049, 2049, 2049, 2049));
}

TEST_F(VolumeListing, TakesTheFirstOfTheMountPointsWithADriveLetter) {
    EXPECT_EQ(listOne(mountList({L"D:\\", L"C:\\folder\\"})), Texts{L"D:\\"});
    EXPECT_EQ(listOne(mountList({L"C:\\folder\\", L"D:\\"})), Texts{L"C:\\folder\\"});
    EXPECT_EQ(listOne(mountList({L"\\\\?\\x\\", L"D:\\", L"E:\\"})), Texts{L"D:\\"});
}

TEST_F(VolumeListing, AsksAgainForMountPointsThatDoNotFit) {
    const std::wstring fits = L"D:\\" + std::wstring(2044, L'f');
    const std::wstring tooLong = L"C:" + std::wstring(3000, L'x');
    FakeMachine machine(system(), {{.name = volumeName(1), .mountPoints = mountList({fits})},
                                   {.name = volumeName(2), .mountPoints = mountList({tooLong, L"E:\\"})}});
    EXPECT_EQ(list(), (Texts{fits, L"E:\\"}));
    EXPECT_THAT(machine.mountRooms, ElementsAre(2049, 2049, 3002 + 1 + 4 + 1));
}

TEST_F(VolumeListing, KeepsNoMoreThan2048CharactersOfAMountPoint) {
    const std::wstring path = L"D:\\" + std::wstring(5000, L'f');
    EXPECT_EQ(listOne(mountList({path})), Texts{path.substr(0, 2048)});
}

TEST_F(VolumeListing, AsksNoFurtherWhenTheSizeThatFitsDoesNot) {
    FakeMachine machine(system(), {{.name = volumeName(1)}});
    std::vector<DWORD> rooms;
    const Replacement asking =
        REPLACE(GetVolumePathNamesForVolumeNameW, [&](LPCWSTR, LPWSTR, DWORD room, PDWORD required) {
            rooms.push_back(room);
            *required = 4000;
            SetLastError(ERROR_MORE_DATA);
            return FALSE;
        });
    EXPECT_EQ(list(), Texts{volumeName(1)});
    EXPECT_THAT(rooms, ElementsAre(2049, 4000));
}

TEST_F(VolumeListing, GivesTheNameWhenTheMountPointsCannotBeHad) {
    for (const DWORD code : {ERROR_FILE_NOT_FOUND, ERROR_INSUFFICIENT_BUFFER, ERROR_NO_MORE_FILES}) {
        FakeMachine machine(system(), {{.name = volumeName(1), .mountPoints = mountList({L"C:\\"})}});
        const Replacement failing = system().answer("GetVolumePathNamesForVolumeNameW", FALSE, code);
        EXPECT_EQ(list(), Texts{volumeName(1)});
        EXPECT_EQ(failing.count(), 1U);
    }
}

TEST_F(VolumeListing, GivesTheNameWhenThereIsNoMemoryForTheMountPoints) {
    FakeMachine machine(system(), {{.name = volumeName(1), .mountPoints = mountList({L"C:\\"})}});
    const Replacement noMemory = system().answer("calloc", 0);
    EXPECT_EQ(list(), Texts{volumeName(1)});
    EXPECT_GT(noMemory.count(), 0U);
}

TEST_F(VolumeListing, ReadsMountPointsWithoutAnEndNoFurtherThanTheirMemory) {
    FakeMachine machine(system(), {{.name = volumeName(1)}});
    const GuardedHeap heap(system());
    for (const wchar_t filling : {L'x', L':'}) {
        const Replacement asking = REPLACE(GetVolumePathNamesForVolumeNameW,
                                           [&](LPCWSTR, LPWSTR buffer, DWORD room, PDWORD required) {
                                               std::wmemset(buffer, filling, room);
                                               *required = room;
                                               return TRUE;
                                           });
        EXPECT_EQ(list(), Texts{volumeName(1)});
    }
}

TEST_F(VolumeListing, PrintsWhyItDoesNotBegin) {
    FakeMachine machine(system(), {{.name = volumeName(1)}});
    machine.firstError = ERROR_ACCESS_DENIED;
    EXPECT_THAT(list(), IsEmpty());
    EXPECT_EQ(printed, "FindFirstVolumeW failed with error code 5\n");
}

TEST_F(VolumeListing, PrintsWhyItEndsTooSoon) {
    FakeMachine machine(system(), {{.name = volumeName(1)}, {.name = volumeName(2)}});
    machine.endError = ERROR_INVALID_HANDLE;
    EXPECT_EQ(list(), (Texts{volumeName(1), volumeName(2)}));
    EXPECT_EQ(printed, "FindNextVolumeW failed with error code 6\n");
}

TEST_F(VolumeListing, EndsAtTheFirstNameThatIsNone) {
    for (const wchar_t* name :
         {L"", L"C:\\", L"\\\\.\\Volume{1}\\", L"\\\\?\\Volume{1}", L"\\\\?", L" \\\\?\\x\\"}) {
        printed.clear();
        FakeMachine machine(system(), {{.name = volumeName(1)}, {.name = name}, {.name = volumeName(3)}});
        EXPECT_EQ(list(), Texts{volumeName(1)});
        EXPECT_EQ(printed, "FindFirstVolumeW/FindNextVolumeW returned a bad path: " + toUtf8(name) + "\n");
        EXPECT_EQ(machine.nameRooms.size(), 2U);
    }
}

TEST_F(VolumeListing, EndsQuietlyWithoutTheCollectorsMethod) {
    FakeMachine machine(system(), {{.name = volumeName(1)}, {.name = volumeName(2)}});
    NATIVE(listPartitions)(
        java.collector("put", "(Ljava/lang/Object;)Z", [](const Arguments&) { return true; }));
    NATIVE(listPartitions)(
        java.collector("add", "(Ljava/lang/String;)Z", [](const Arguments&) { return true; }));
    NATIVE(listPartitions)(nullptr);
    EXPECT_THAT(machine.mountRooms, IsEmpty());
    EXPECT_EQ(machine.nameRooms.size(), 3U);
    EXPECT_EQ(printed, "");
}

TEST_F(VolumeListing, EndsQuietlyWithoutTheCollectorsClass) {
    FakeMachine machine(system(), {{.name = volumeName(1)}, {.name = volumeName(2)}});
    java.failCall("GetObjectClass");
    EXPECT_THAT(list(), IsEmpty());
    EXPECT_FALSE(java.isPending());
    EXPECT_EQ(machine.nameRooms.size(), 1U);
    EXPECT_EQ(printed, "");
}

TEST_F(VolumeListing, DoesNotCareWhatAddAnswers) {
    FakeMachine machine(system(), {{.name = volumeName(1)}, {.name = volumeName(2)}});
    Texts added;
    NATIVE(listPartitions)(java.collector("add", "(Ljava/lang/Object;)Z", [&](const Arguments& arguments) {
        added.push_back(arguments[0].text());
        return false;
    }));
    EXPECT_EQ(added, (Texts{volumeName(1), volumeName(2)}));
}

TEST_F(VolumeListing, EndsWithWhatTheCollectorThrows) {
    FakeMachine machine(system(),
                        {{.name = volumeName(1)}, {.name = volumeName(2)}, {.name = volumeName(3)}});
    java.defineException("java/lang/IllegalStateException");
    int added = 0;
    NATIVE(listPartitions)(java.collector("add", "(Ljava/lang/Object;)Z", [&](const Arguments&) -> bool {
        if (++added == 2) {
            throw JavaThrow{java.exception("java/lang/IllegalStateException", L"enough")};
        }
        return true;
    }));
    EXPECT_EQ(java.takeException(), (Thrown{"java/lang/IllegalStateException", L"enough"}));
    EXPECT_EQ(added, 2);
    EXPECT_EQ(machine.nameRooms.size(), 2U);
    EXPECT_EQ(printed, "");
}

TEST_F(VolumeListing, EndsWhenJavaHasNoMemory) {
    FakeMachine machine(system(),
                        {{.name = volumeName(1)}, {.name = volumeName(2)}, {.name = volumeName(3)}});
    java.failCall("NewString", 2);
    EXPECT_EQ(list(), Texts{volumeName(1)});
    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
}

TEST_F(VolumeListing, KeepsTheNumberOfReferencesFlat) {
    std::vector<FakeVolume> volumes;
    for (unsigned i = 0; i < 500; ++i) {
        volumes.push_back({.name = volumeName(i), .mountPoints = mountList({L"X:\\" + std::to_wstring(i)})});
    }
    FakeMachine machine(system(), volumes);
    EXPECT_EQ(list().size(), 500U);
    EXPECT_LE(java.peakReferences(), 2U);
}

}  // namespace

}  // namespace testbed
