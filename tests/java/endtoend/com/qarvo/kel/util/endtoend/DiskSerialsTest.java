package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;

import com.qarvo.kel.util.DiskCollector;
import com.sun.jna.platform.win32.COM.WbemcliUtil;
import com.sun.jna.platform.win32.Ole32;
import java.io.IOException;
import java.util.ArrayList;
import java.util.List;
import java.util.Locale;
import org.junit.jupiter.api.Test;

/** The disks that WMI knows, with java-native-access' own WMI as the witness. */
class DiskSerialsTest extends EndToEnd {
    private static final String PHYSICAL_DRIVE = "\\\\.\\PHYSICALDRIVE";

    /** Properties of a disk, by their names in WMI. */
    enum Disk {
        DeviceID, SerialNumber
    }

    public static final class Collector implements DiskCollector {
        final List<String> disks = new ArrayList<>();

        @Override
        public void addDiskInfo(String device, String serialNumber, boolean systemDisk) {
            disks.add(device + "=" + serialNumber);
        }
    }

    private static List<String> disks() {
        List<String> disks = new ArrayList<>();
        Ole32.INSTANCE.CoInitializeEx(null, Ole32.COINIT_MULTITHREADED);
        try {
            var found = new WbemcliUtil.WmiQuery<>("Win32_DiskDrive", Disk.class).execute();
            for (int i = 0; i < found.getResultCount(); i++) {
                String device = (String) found.getValue(Disk.DeviceID, i);
                // Some systems have the backslashes twice, and then it is no device.
                if (device.toUpperCase(Locale.ROOT).startsWith(PHYSICAL_DRIVE)) {
                    disks.add(device + "=" + found.getValue(Disk.SerialNumber, i));
                }
            }
        } finally {
            Ole32.INSTANCE.CoUninitialize();
        }
        return disks;
    }

    @Test
    void theDisksAreThoseThatWmiNamesLikeDevices() throws IOException {
        Collector collector = new Collector();
        util.getHardDiskSN(collector);
        assertEquals(disks(), collector.disks);
    }

    @Test
    void aCollectorWithoutTheMethodIsPassedOver() throws IOException {
        util.getHardDiskSN("no collector at all");
    }

    @Test
    void theDisksAreFoundOnAThreadThatHasComInTheOtherModel() throws Exception {
        Throwable[] thrown = new Throwable[1];
        Collector collector = new Collector();
        Thread thread = new Thread(() -> {
            int initialized = Ole32.INSTANCE.CoInitializeEx(null, Ole32.COINIT_APARTMENTTHREADED).intValue();
            try {
                util.getHardDiskSN(collector);
            } catch (IOException | RuntimeException e) {
                thrown[0] = e;
            }
            if (initialized >= 0) {
                Ole32.INSTANCE.CoUninitialize();
            }
        });
        thread.start();
        thread.join();
        assertEquals(null, thrown[0]);
        assertEquals(disks(), collector.disks);
    }
}
