package com.qarvo.kel.util;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.File;
import java.io.IOException;
import java.net.URL;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;
import org.junit.jupiter.params.provider.ValueSource;

class WinUtilLoaderTest {
    private static final int X64 = 0x8664;
    private static final int DLL = 0x2022;
    private static final int PROGRAM = 0x0022;
    private static final int PE_OFFSET = 0x80;

    @TempDir
    Path folder;

    // The system and the virtual machine

    @ParameterizedTest
    @CsvSource({"Windows 11,amd64", "Windows 10,AMD64", "Windows Server 2012 R2,x86_64"})
    void sixtyFourBitWindowsIsFine(String osName, String osArch) {
        assertNull(WinUtilLoader.platformProblem(osName, osArch));
    }

    @ParameterizedTest
    @ValueSource(strings = {"Linux", "Mac OS X", "Darwin", ""})
    void otherSystemsAreNamed(String osName) {
        assertEquals("WinUtil64.dll can only be loaded on Windows, and this system is " + osName + ".",
                WinUtilLoader.platformProblem(osName, "amd64"));
    }

    @ParameterizedTest
    @ValueSource(strings = {"x86", "i386", "aarch64"})
    void otherVirtualMachinesAreNamed(String osArch) {
        assertEquals("WinUtil64.dll needs a 64-bit Java virtual machine for x64, and this one is for " + osArch + ".",
                WinUtilLoader.platformProblem("Windows 11", osArch));
    }

    // Finding the file

    @Test
    void thePropertyNamesTheFileWhateverItIsCalled() throws IOException {
        File named = newFile("other name.dll");
        newFile("WinUtil64.dll");

        assertEquals(named, find(named.getPath(), folder.toFile(), folder.toString()).file);
    }

    @Test
    void aFileThatThePropertyNamesInVainIsNotLookedForElsewhere() throws IOException {
        newFile("WinUtil64.dll");
        File missing = folder.resolve("missing.dll").toFile();

        WinUtilLoader.Location location = find(missing.getPath(), folder.toFile(), folder.toString());

        assertNull(location.file);
        assertEquals("WinUtil64.dll cannot be loaded because -Dwinutil.library names " + missing
                + ", which is missing.", location.problem);
    }

    @Test
    void aPathThatIsNotFullIsRefusedEvenWhereItLeadsToAFile() throws IOException {
        File there = newFile("WinUtil64.dll");
        String relative = Path.of("").toAbsolutePath().relativize(there.toPath()).toString();

        assertTrue(new File(relative).isFile());
        assertNotFull(relative);
    }

    /** Without a drive, or on the current folder of one. */
    @ParameterizedTest
    @ValueSource(strings = {"WinUtil64.dll", "./WinUtil64.dll", "lib/WinUtil64.dll", "\\lib\\WinUtil64.dll",
        "C:WinUtil64.dll"})
    void aNameThatDependsOnTheCurrentFolderOrDriveIsNoFullPath(String name) {
        assertNotFull(name);
    }

    private void assertNotFull(String name) {
        WinUtilLoader.Location location = find(name, folder.toFile(), folder.toString());

        assertNull(location.file);
        assertEquals("WinUtil64.dll cannot be loaded because -Dwinutil.library names " + name
                + ", which is not a full path.", location.problem);
    }

    @Test
    void aFolderThatThePropertyNamesIsNoFile() {
        assertEquals("WinUtil64.dll cannot be loaded because -Dwinutil.library names " + folder
                + ", which is not a file.", find(folder.toString(), null, "").problem);
    }

    @Test
    void theFileBesideTheJarComesBeforeTheLibraryPath() throws IOException {
        File beside = newFile("jars/WinUtil64.dll");
        newFile("path/WinUtil64.dll");

        assertEquals(beside, find(null, beside.getParentFile(), folder.resolve("path").toString()).file);
    }

    @Test
    void anEmptyPropertyCountsAsNotSet() throws IOException {
        File beside = newFile("WinUtil64.dll");

        assertEquals(beside, find("", folder.toFile(), "").file);
    }

    @Test
    void theFirstFolderOfTheLibraryPathThatHasTheFileIsTaken() throws IOException {
        File first = newFile("first/WinUtil64.dll");
        newFile("second/WinUtil64.dll");
        Files.createDirectories(folder.resolve("empty/WinUtil64.dll"));
        String path = String.join(File.pathSeparator, folder.resolve("missing").toString(),
                folder.resolve("empty").toString(), first.getParent(), folder.resolve("second").toString());

        assertEquals(first, find(null, folder.toFile(), path).file);
    }

    @Test
    void aFileThatIsNowhereIsReportedWithAllPlaces() {
        String path = folder.resolve("a") + File.pathSeparator + folder.resolve("b");

        assertEquals("WinUtil64.dll is missing: it is not in " + folder + " (beside the jar) and not in the folders of "
                + "java.library.path (" + path + "), and -Dwinutil.library=FILE does not say where it is.",
                find(null, folder.toFile(), path).problem);
        assertEquals("WinUtil64.dll is missing: it is not in the folders of java.library.path (" + path
                + "), and -Dwinutil.library=FILE does not say where it is.", find(null, null, path).problem);
    }

    // The folder of the jar

    @Test
    void theFolderOfTheJarIsFoundWithBlanksAndAccentsInItsName() throws IOException {
        File jar = newFile("Füße und Hände/winutil.jar");

        assertEquals(jar.getParentFile(), WinUtilLoader.folderOf(jar.toURI().toURL()));
    }

    @Test
    void aJarOnANetworkShareHasItsFolderOnWindowsOnly() throws IOException {
        URL jar = new URL("file://server/share/lib/winutil.jar");
        File expected = File.separatorChar == '\\' ? new File("\\\\server\\share\\lib") : null;

        assertEquals(expected, WinUtilLoader.folderOf(jar));
    }

    @Test
    void aJarThatIsNoFileHasNoFolder() throws IOException {
        assertNull(WinUtilLoader.folderOf(new URL("http://example.com/winutil.jar")));
        assertNull(WinUtilLoader.folderOf(new URL("file:/folder with blank/winutil.jar")));
        assertNull(WinUtilLoader.folderOf(null));
    }

    // The file itself

    @Test
    void aDllForSixtyFourBitWindowsHasNoProblem() throws IOException {
        assertNull(WinUtilLoader.fileProblem(image(X64, DLL)));
    }

    @ParameterizedTest
    @CsvSource({
        "0x014C,32-bit Windows (x86)",
        "0xAA64,Windows on ARM64",
        "0x01C4,another processor (machine type 0x01C4)",
    })
    void aDllForAnotherProcessorIsNamed(String machine, String name) throws IOException {
        File file = image(Integer.decode(machine), DLL);

        assertEquals(file + " is not a DLL for 64-bit Windows (x64): it is for " + name + ".",
                WinUtilLoader.fileProblem(file));
    }

    @Test
    void aProgramIsNoLibrary() throws IOException {
        assertProblem("it is a program, not a library", image(X64, PROGRAM));
    }

    @Test
    void aTextFileIsNoProgramFile() throws IOException {
        String text = "This is not a DLL, but it is longer than the first header of one, by a good few letters.";

        assertProblem("it is no Windows program file at all", file(text.getBytes(StandardCharsets.US_ASCII)));
    }

    @Test
    void anEmptyFileIsNoProgramFile() throws IOException {
        assertProblem("it is no Windows program file at all", file(new byte[0]));
    }

    @Test
    void aFileCutOffInItsHeaderIsDamaged() throws IOException {
        byte[] whole = Files.readAllBytes(image(X64, DLL).toPath());
        byte[] cut = new byte[PE_OFFSET + 23];
        System.arraycopy(whole, 0, cut, 0, cut.length);

        assertProblem("its header is damaged or cut off", file(cut));
    }

    @ParameterizedTest
    @ValueSource(ints = {0x7FFF_FFF0, 0xFFFF_FFFF, 0x60})
    void aHeaderThatPointsElsewhereIsDamaged(int offset) throws IOException {
        byte[] bytes = Files.readAllBytes(image(X64, DLL).toPath());
        ByteBuffer.wrap(bytes).order(ByteOrder.LITTLE_ENDIAN).putInt(0x3C, offset);

        assertProblem("its header is damaged or cut off", file(bytes));
    }

    @Test
    void aFileThatCannotBeReadSaysWhy() {
        File missing = folder.resolve("missing.dll").toFile();

        String problem = WinUtilLoader.fileProblem(missing);

        assertTrue(problem.startsWith(missing + " cannot be read: "), problem);
    }

    private static WinUtilLoader.Location find(String property, File folderOfJar, String libraryPath) {
        return WinUtilLoader.find(property, folderOfJar, libraryPath);
    }

    private static void assertProblem(String reason, File file) {
        assertEquals(file + " is not a DLL for 64-bit Windows (x64): " + reason + ".",
                WinUtilLoader.fileProblem(file));
    }

    private File newFile(String name) throws IOException {
        Path path = folder.resolve(name);
        Files.createDirectories(path.getParent());
        return Files.createFile(path).toFile();
    }

    private File file(byte[] content) throws IOException {
        return Files.write(folder.resolve("made-up.dll"), content).toFile();
    }

    /** The headers of a program file, as far as the loader reads them. */
    private File image(int machine, int characteristics) throws IOException {
        ByteBuffer image = ByteBuffer.allocate(PE_OFFSET + 24).order(ByteOrder.LITTLE_ENDIAN);
        image.put(0, (byte) 'M').put(1, (byte) 'Z').putInt(0x3C, PE_OFFSET);
        image.put(PE_OFFSET, (byte) 'P').put(PE_OFFSET + 1, (byte) 'E');
        image.putShort(PE_OFFSET + 4, (short) machine).putShort(PE_OFFSET + 22, (short) characteristics);
        return file(image.array());
    }
}
