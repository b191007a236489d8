package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNotEquals;
import static org.junit.jupiter.api.Assertions.assertThrowsExactly;

import com.qarvo.kel.util.WindowsUtil;
import com.sun.jna.NativeLibrary;
import java.lang.reflect.InvocationTargetException;
import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.MethodSource;

/** How the DLL gets loaded, what is said when it does not, and what becomes of natives that it lacks. */
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

    /** The natives of subsystems that the DLL does not have yet; asked of its export table, not of the JVM. */
    static Stream<Method> nativesThatAreMissing() {
        NativeLibrary dll = NativeLibrary.getInstance(System.getProperty("winutil.library"));
        return Arrays.stream(WindowsUtil.class.getDeclaredMethods())
                .filter(method -> Modifier.isNative(method.getModifiers()))
                .filter(method -> !isExported(dll, "Java_com_qarvo_kel_util_WindowsUtil_" + method.getName()))
                .filter(method -> !isOverloaded(method));
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

    @ParameterizedTest
    @MethodSource("nativesThatAreMissing")
    void aNativeThatTheDllLacksIsAnUnsatisfiedLink(Method method) {
        Object[] arguments = Arrays.stream(method.getParameterTypes()).map(LoadingTest::anyValue).toArray();

        InvocationTargetException thrown = assertThrowsExactly(InvocationTargetException.class,
                () -> method.invoke(util, arguments));
        assertEquals(UnsatisfiedLinkError.class, thrown.getCause().getClass());
        assertNotEquals(-1, thrown.getCause().getMessage().indexOf("WindowsUtil." + method.getName() + "("));
    }

    private static Object anyValue(Class<?> type) {
        if (type == boolean.class) {
            return false;
        }
        if (type == int.class) {
            return 0;
        }
        return type == long.class ? 0L : null;
    }
}
