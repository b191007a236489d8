package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.kel.util.WindowsUtil;
import com.sun.jna.NativeLibrary;
import java.io.File;
import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.List;
import org.junit.jupiter.api.Test;

/** How the DLL gets loaded, what is said when it does not, and that it has every native. */
class LoadingTest extends EndToEnd {
    private static void assertLoaded(Isolated library) throws Throwable {
        try (library) {
            assertEquals(util.getPageSize(), library.call("getPageSize"));
        }
    }

    private static void assertNotLoaded(String message, String property) {
        assertFails(UnsatisfiedLinkError.class, message, () -> Isolated.load(property, Isolated.jar(), null));
    }

    @Test
    void theDllLoadsFromAFolderWithCharactersBeyondAscii() throws Throwable {
        Path folder = Files.createDirectory(work().resolve("B\u00E4ckup f\u00FCr \u00C9l\u00E8ne"));

        assertLoaded(Isolated.load(Isolated.copyOfDll(folder).toString(), Isolated.jar(), null));
    }

    @Test
    void withoutAPropertyTheDllIsFoundBesideTheJar() throws Throwable {
        Path folder = Files.createDirectory(work().resolve("beside the jar"));
        Isolated.copyOfDll(folder);
        Path jar = Files.copy(Isolated.jar(), folder.resolve("winutil.jar"));

        assertLoaded(Isolated.load(null, jar, null));
    }

    @Test
    void aDllThatIsNotThereIsNamedInOneSentence() {
        assertNotLoaded("WinUtil64.dll cannot be loaded because -Dwinutil.library names C:\\no such folder\\x.dll, "
                + "which is missing.", "C:\\no such folder\\x.dll");
        assertNotLoaded("WinUtil64.dll cannot be loaded because -Dwinutil.library names C:\\windows, "
                + "which is not a file.", "C:\\windows");
    }

    /** Not even where it leads to the DLL: that depends on the current folder, or on the current drive. */
    @Test
    void aPathThatIsNotFullIsNamedInOneSentence() throws Exception {
        Path dll = Isolated.copyOfDll(Files.createDirectory(work().resolve("current drive")));
        Path current = Path.of("").toAbsolutePath();
        String onDrive = dll.toString().substring(2);
        String inFolder = current.relativize(dll).toString();

        for (String path : List.of(onDrive, inFolder, current.toString().substring(0, 2) + inFolder)) {
            assertTrue(new File(path).isFile(), path);
            assertNotLoaded("WinUtil64.dll cannot be loaded because -Dwinutil.library names " + path
                    + ", which is not a full path.", path);
        }
    }

    @Test
    void whatIsNoDllForThisSystemIsNamedInOneSentence() throws Exception {
        Path text = Files.writeString(work().resolve("text.dll"), "no library ".repeat(100));
        byte[] dll = Files.readAllBytes(Path.of(System.getProperty("winutil.library")));
        int header = dll[0x3C] & 0xFF | (dll[0x3D] & 0xFF) << 8;
        dll[header + 4] = 0x4C; // the machine type of 32-bit x86
        dll[header + 5] = 0x01;
        Path narrow = Files.write(work().resolve("narrow.dll"), dll);

        assertNotLoaded(text + " is not a DLL for 64-bit Windows (x64): it is no Windows program file at all.",
                text.toString());
        assertNotLoaded(narrow + " is not a DLL for 64-bit Windows (x64): it is for 32-bit Windows (x86).",
                narrow.toString());
    }

    /** Asked of its export table. The overloads, whose names say more, are called by the tests of each. */
    @Test
    void theDllHasEveryNative() {
        NativeLibrary dll = NativeLibrary.getInstance(System.getProperty("winutil.library"));

        List<String> missing = Arrays.stream(WindowsUtil.class.getDeclaredMethods())
                .filter(method -> Modifier.isNative(method.getModifiers()))
                .filter(method -> !isOverloaded(method))
                .map(Method::getName)
                .filter(name -> !isExported(dll, "Java_com_qarvo_kel_util_WindowsUtil_" + name))
                .toList();

        assertEquals(List.of(), missing);
    }

    private static boolean isExported(NativeLibrary dll, String name) {
        try {
            dll.getFunction(name);
            return true;
        } catch (UnsatisfiedLinkError e) {
            return false;
        }
    }

    private static boolean isOverloaded(Method method) {
        return Arrays.stream(WindowsUtil.class.getDeclaredMethods())
                .filter(other -> other.getName().equals(method.getName())).count() > 1;
    }
}
