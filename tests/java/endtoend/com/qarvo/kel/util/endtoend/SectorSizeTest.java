package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNotEquals;
import static org.junit.jupiter.api.Assertions.assertThrowsExactly;

import com.sun.jna.Native;
import com.sun.jna.Pointer;
import com.sun.jna.platform.win32.Kernel32;
import com.sun.jna.platform.win32.WinBase;
import java.nio.ByteBuffer;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

class SectorSizeTest extends EndToEnd {
    @ParameterizedTest
    @ValueSource(strings = {"C:", "C:\\", "C:\\windows", "C:\\no such folder\\x", "C:/windows", "c:relative"})
    void aDrivePathAsksForItsDrive(String path) {
        assertNotEquals(0, Witness.sectorSize("C:"));
        assertEquals(Witness.sectorSize("C:"), util.getSectorSize(path));
    }

    @Test
    void aNetworkPathAsksForItsShare() {
        String share = fixture("share");

        assertEquals(Witness.sectorSize(share + "\\"), util.getSectorSize(share + "\\folder\\file"));
        assertEquals(Witness.sectorSize(share + "\\"), util.getSectorSize(share + "\\"));
        assertNotEquals(0, util.getSectorSize(share + "\\"));
    }

    @Test
    void anExtendedPathCountsAsANetworkPath() {
        assertEquals(Witness.sectorSize("\\\\?\\C:\\"), util.getSectorSize("\\\\?\\C:\\windows"));
    }

    @ParameterizedTest
    @ValueSource(strings = {"", "C", "relative\\path", "\\rooted", "\\\\", "\\\\server", "\\\\server\\share", "Q:\\x",
        "\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy7", "\\\\no-such-server\\share\\x", "\\\\?\\C:"})
    void anyOtherPathHasNone(String path) {
        assertEquals(0, util.getSectorSize(path));
    }

    @Test
    void thePageSizeIsTheSystems() {
        WinBase.SYSTEM_INFO information = new WinBase.SYSTEM_INFO();
        Kernel32.INSTANCE.GetSystemInfo(information);

        assertEquals(information.dwPageSize.intValue(), util.getPageSize());
    }

    @Test
    void theAddressOfADirectBufferIsWhereItBegins() {
        ByteBuffer buffer = ByteBuffer.allocateDirect(100);
        long address = Pointer.nativeValue(Native.getDirectBufferPointer(buffer));

        assertEquals(address, util.GetDirectBufferAddress(buffer));
        assertEquals(address, util.GetDirectBufferAddress(buffer.position(10)));
        assertEquals(address + 10, util.GetDirectBufferAddress(buffer.slice()));
        assertEquals(address, util.GetDirectBufferAddress(buffer.asReadOnlyBuffer()));
    }

    @Test
    void whatIsNoDirectBufferHasNoAddress() {
        assertEquals(0, util.GetDirectBufferAddress(ByteBuffer.allocate(100)));
        assertEquals(0, util.GetDirectBufferAddress("text"));
    }

    @ParameterizedTest
    @ValueSource(ints = {0, 1, 4096, 1 << 20})
    void theAlignedBufferIsAnOrdinaryArrayOfZeros(int size) {
        assertArrayEquals(new byte[size], util.getAlignedByteBuffer(size));
    }

    @Test
    void anAlignedBufferOfNegativeSizeIsTheJvmsToRefuse() {
        assertThrowsExactly(NegativeArraySizeException.class, () -> util.getAlignedByteBuffer(-1));
    }
}
