package com.qarvo.kel.util;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.lang.invoke.MethodType;
import java.lang.reflect.Constructor;
import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.util.Arrays;
import java.util.List;
import java.util.Set;
import java.util.TreeSet;
import java.util.stream.Collectors;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

/** What the DLL looks up by name and signature; neither compiler would notice a difference. */
class NativeBindingTest {
    private static final String TEXT = "Ljava/lang/String;";
    private static final String FOUR_TEXTS = TEXT + TEXT + TEXT + TEXT;

    @Test
    void allNativesArePublicInstanceMethods() {
        List<Method> natives = natives();

        assertEquals(144, natives.size());
        for (Method method : natives) {
            assertTrue(Modifier.isPublic(method.getModifiers()), method.toString());
            assertFalse(Modifier.isStatic(method.getModifiers()), method.toString());
        }
    }

    @Test
    void onlyThreeNamesAreOverloaded() {
        Set<String> seen = new TreeSet<>();

        Set<String> overloaded = natives().stream().map(Method::getName).filter(name -> !seen.add(name))
                .collect(Collectors.toCollection(TreeSet::new));

        assertEquals(new TreeSet<>(Arrays.asList("createFileNC", "read", "write")), overloaded);
    }

    @ParameterizedTest
    @CsvSource(delimiter = ' ', value = {
        "com.qarvo.dov.io.DiskFullException (Ljava/lang/String;)V",
        "com.qarvo.dov.io.SharingViolationException (Ljava/lang/String;)V",
        "com.qarvo.kel.util.UtilException$AccountRestrictionException (Ljava/lang/String;)V",
        "com.qarvo.kel.util.WinFileList$WinFile (Ljava/lang/String;ZJJILjava/lang/String;BLjava/lang/String;)V",
        "com.qarvo.kel.util.WinFileList$WinFile (Ljava/lang/String;ZJJILjava/lang/String;Z)V",
        "com.qarvo.kel.util.WinPipe (J)V",
        "com.qarvo.kel.util.WinProcess (JLcom/qarvo/kel/util/WinPipe;Lcom/qarvo/kel/util/WinPipe;JJ)V",
        "com.qarvo.kel.util.WinProcessInfo (Ljava/lang/String;JJLjava/lang/String;Ljava/lang/String;)V",
        "com.qarvo.kel.util.WinServerFeature (IILjava/lang/String;)V",
    })
    void theConstructorIsThereAndPublic(String className, String signature) throws Exception {
        Constructor<?> constructor = Class.forName(className).getDeclaredConstructor(parameters(signature));

        assertTrue(Modifier.isPublic(constructor.getModifiers()));
    }

    @ParameterizedTest
    @CsvSource(delimiter = ' ', value = {
        "com.qarvo.kel.util.WinFileList addFile (Ljava/lang/String;ZJJILjava/lang/String;Z)V",
        "com.qarvo.kel.util.FileErrorListener fireFileErrorEvent (Ljava/lang/String;Ljava/lang/String;)V",
        "com.qarvo.kel.util.DiskCollector addDiskInfo (" + TEXT + TEXT + "Z)V",
        "com.qarvo.kel.util.MemoryCollector addMemoryInfo (" + TEXT + "IJ)V",
        "com.qarvo.kel.util.NetworkCollector addEntry (" + FOUR_TEXTS + TEXT + TEXT + TEXT + ")V",
        "com.qarvo.kel.util.ProcessorCollector addCpuInfo (" + FOUR_TEXTS + "J" + TEXT + "II)V",
        "com.qarvo.kel.util.RegistryCollector addNode (" + TEXT + TEXT + TEXT + ")V",
        "com.qarvo.kel.util.RegistryCollector addStringNode (" + FOUR_TEXTS + ")V",
        "com.qarvo.kel.util.RegistryCollector addDwordNode (" + TEXT + TEXT + TEXT + "J)V",
        "com.qarvo.kel.util.RegistryCollector addByteNode (" + TEXT + TEXT + TEXT + "[B)V",
        "com.qarvo.kel.util.RegistryCollector addMultiStringNode (" + TEXT + TEXT + TEXT + "[" + TEXT + ")V",
    })
    void theCallbackIsThere(String className, String name, String signature) throws Exception {
        Method method = Class.forName(className).getDeclaredMethod(name, parameters(signature));

        assertEquals(void.class, method.getReturnType());
    }

    private static List<Method> natives() {
        return Arrays.stream(WindowsUtil.class.getDeclaredMethods())
                .filter(method -> Modifier.isNative(method.getModifiers())).collect(Collectors.toList());
    }

    private static Class<?>[] parameters(String signature) {
        return MethodType.fromMethodDescriptorString(signature, NativeBindingTest.class.getClassLoader())
                .parameterArray();
    }
}
