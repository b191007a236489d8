package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertSame;
import static org.junit.jupiter.api.Assertions.assertThrowsExactly;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.kel.util.MemoryCollector;
import com.qarvo.kel.util.ProcessorCollector;
import com.sun.jna.platform.win32.COM.COMUtils;
import com.sun.jna.platform.win32.COM.WbemcliUtil;
import com.sun.jna.platform.win32.Ole32;
import java.io.IOException;
import java.util.ArrayList;
import java.util.EnumMap;
import java.util.List;
import java.util.Map;
import org.junit.jupiter.api.Test;

/** What WMI says of this computer, with java-native-access as the witness that asks it the same. */
class InventoryTest extends EndToEnd {
    private static final int S_FALSE = 1;

    private enum Model { MANUFACTURER, MODEL }

    private enum Product { UUID }

    private enum Processor {
        DEVICEID, MANUFACTURER, NAME, CURRENTCLOCKSPEED, DESCRIPTION, NUMBEROFCORES, NUMBEROFLOGICALPROCESSORS
    }

    private enum MemoryModule { DEVICELOCATOR, CAPACITY }

    private record Cpu(String deviceId, String manufacturer, String name, String architecture, long megahertz,
            String description, int cores, int logicalProcessors) {
    }

    private record Module(String slot, int megahertz, long bytes) {
    }

    /** Takes what the natives report. */
    public static class Collector implements ProcessorCollector, MemoryCollector {
        final List<Object> items = new ArrayList<>();

        @Override
        public void addCpuInfo(String deviceId, String manufacturer, String name, String architecture, long megahertz,
                String description, int cores, int logicalProcessors) {
            items.add(new Cpu(deviceId, manufacturer, name, architecture, megahertz, description, cores,
                    logicalProcessors));
        }

        @Override
        public void addMemoryInfo(String slot, int megahertz, long bytes) {
            items.add(new Module(slot, megahertz, bytes));
        }
    }

    private interface Native {
        void call() throws IOException;
    }

    /** Every object of a class of WMI, with these properties of it. */
    private static <T extends Enum<T>> List<Map<T, Object>> ask(String wmiClass, Class<T> properties) {
        COMUtils.checkRC(Ole32.INSTANCE.CoInitializeEx(null, Ole32.COINIT_MULTITHREADED));
        try {
            WbemcliUtil.WmiResult<T> found = new WbemcliUtil.WmiQuery<>(wmiClass, properties).execute();
            List<Map<T, Object>> objects = new ArrayList<>();
            for (int i = 0; i < found.getResultCount(); i++) {
                Map<T, Object> object = new EnumMap<>(properties);
                for (T property : properties.getEnumConstants()) {
                    object.put(property, found.getValue(property, i));
                }
                objects.add(object);
            }
            return objects;
        } finally {
            Ole32.INSTANCE.CoUninitialize();
        }
    }

    private static long number(Object value) {
        return ((Number) value).longValue();
    }

    @Test
    void theModelIsManufacturerAndModelOfTheComputer() throws IOException {
        Map<Model, Object> computer = ask("Win32_ComputerSystem", Model.class).get(0);

        assertEquals(computer.get(Model.MANUFACTURER) + " " + computer.get(Model.MODEL), util.getSystemModel());
    }

    @Test
    void theMotherboardHasTheUuidOfTheProduct() throws IOException {
        String uuid = util.getMotherboardUUID();

        assertEquals(ask("Win32_ComputerSystemProduct", Product.class).get(0).get(Product.UUID), uuid);
        assertTrue(uuid.matches("\\p{XDigit}{8}(-\\p{XDigit}{4}){3}-\\p{XDigit}{12}"), uuid);
    }

    @Test
    void everyProcessorIsReportedWithAllThatIsKnown() throws IOException {
        List<Object> expected = new ArrayList<>();
        for (Map<Processor, Object> cpu : ask("Win32_Processor", Processor.class)) {
            expected.add(new Cpu((String) cpu.get(Processor.DEVICEID), (String) cpu.get(Processor.MANUFACTURER),
                    (String) cpu.get(Processor.NAME), "x64", number(cpu.get(Processor.CURRENTCLOCKSPEED)),
                    (String) cpu.get(Processor.DESCRIPTION), (int) number(cpu.get(Processor.NUMBEROFCORES)),
                    (int) number(cpu.get(Processor.NUMBEROFLOGICALPROCESSORS))));
        }
        Collector collector = new Collector();

        util.getProcessorInfo(collector);

        assertFalse(expected.isEmpty());
        assertEquals(expected, collector.items);
    }

    @Test
    void everyMemoryModuleIsReportedWithoutTheSpeedThatThisSystemDoesNotKnow() throws IOException {
        List<Object> expected = new ArrayList<>();
        for (Map<MemoryModule, Object> module : ask("Win32_PhysicalMemory", MemoryModule.class)) {
            expected.add(new Module((String) module.get(MemoryModule.DEVICELOCATOR), 0,
                    Long.parseLong((String) module.get(MemoryModule.CAPACITY))));
        }
        Collector collector = new Collector();

        util.getMemoryInfo(collector);

        assertFalse(expected.isEmpty());
        assertEquals(expected, collector.items);
    }

    @Test
    void aComputerThatIsNoServerHasNoFeaturesOfOne() throws IOException {
        List<Object> features = new ArrayList<>(List.of("kept"));

        util.getWindowsInstalledFeatures(features);

        assertEquals(List.of("kept"), features);
    }

    @Test
    void withoutTheClassOfTheirRecordFeaturesAreNotAskedFor() throws Throwable {
        List<Object> features = new ArrayList<>();

        try (Isolated library = Isolated.without("com.qarvo.kel.util.WinServerFeature")) {
            library.call("getWindowsInstalledFeatures", features);
        }

        assertTrue(features.isEmpty());
    }

    @Test
    void aCollectorWithoutTheMethodIsPassedOver() throws IOException {
        util.getProcessorInfo(new Object());
        util.getMemoryInfo(new Object());
        util.getWindowsInstalledFeatures(new Object());
    }

    @Test
    void whatACollectorThrowsReachesTheCaller() {
        RuntimeException thrown = new RuntimeException("enough");
        Collector collector = new Collector() {
            @Override
            public void addCpuInfo(String deviceId, String manufacturer, String name, String architecture,
                    long megahertz, String description, int cores, int logicalProcessors) {
                throw thrown;
            }

            @Override
            public void addMemoryInfo(String slot, int megahertz, long bytes) {
                throw thrown;
            }
        };

        for (Native call : List.<Native>of(() -> util.getProcessorInfo(collector),
                () -> util.getMemoryInfo(collector))) {
            assertSame(thrown, assertThrowsExactly(RuntimeException.class, call::call));
        }
    }

    @Test
    void aThreadWhoseComRunsInTheOtherModeIsServedAndKeepsIt() throws IOException {
        COMUtils.checkRC(Ole32.INSTANCE.CoInitializeEx(null, Ole32.COINIT_APARTMENTTHREADED));
        try {
            assertFalse(util.getSystemModel().isEmpty());

            assertEquals(S_FALSE, Ole32.INSTANCE.CoInitializeEx(null, Ole32.COINIT_APARTMENTTHREADED).intValue());
            Ole32.INSTANCE.CoUninitialize();
        } finally {
            Ole32.INSTANCE.CoUninitialize();
        }
    }

    @Test
    void askingOftenGivesTheSameAnswer() throws IOException {
        String model = util.getSystemModel();

        for (int i = 0; i < 50; i++) {
            assertEquals(model, util.getSystemModel());
        }
    }
}
