package com.qarvo.kel.util.endtoend;

import com.qarvo.kel.util.Win32;
import com.qarvo.kel.util.WinFileList;
import java.io.ByteArrayInputStream;
import java.io.IOException;
import java.io.InputStream;
import java.io.PipedInputStream;
import java.io.PipedOutputStream;
import java.nio.ByteBuffer;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Collection;
import java.util.List;
import java.util.Map;

/** Arguments with which each native method does its work and harms nobody: files, keys and names of the test's own. */
final class HarmlessArguments {
    private static final int BYTES = 4096;
    private static final int WINDOWS_FOLDER = 0x24;
    private static final int NO_SUCH_PROCESS = 0x7FFFFFF0;

    private static final String NO_SHARE = "\\\\winutil-no-such-server\\share";
    private static final String PIPE = "\\\\.\\pipe\\winutil hostile " + ProcessHandle.current().pid() + ' ';
    /** The pipe to send to. */
    static final String SERVED_PIPE = PIPE + "served";

    private final Path folder;
    private final String registryValue;
    private final Map<String, Object> ofMethods;
    private final Map<String, Object> ofNames;

    /** Takes files in a folder, the root of a small volume and a key below the current user's root. */
    HarmlessArguments(Path folder, String volume, String key) throws IOException {
        this.folder = folder;
        registryValue = "HKEY_CURRENT_USER\\" + key + "\\value";
        ofMethods = Map.ofEntries(Map.entry("getUserByNetUsedPath.path", NO_SHARE),
                Map.entry("removeNetUsed.name", NO_SHARE), Map.entry("searchPathFromLibrary.name", "kernel32.dll"),
                Map.entry("getEnv.name", "SystemRoot"), Map.entry("setEnvironmentVariable.name", "WINUTIL_HOSTILE"),
                Map.entry("connectPipe.name", PIPE + "visited"), Map.entry("sendPipe.name", SERVED_PIPE),
                Map.entry("loadRegistry.rootName", "HKEY_USERS"), Map.entry("unloadRegistry.rootName", "HKEY_USERS"),
                Map.entry("getProcessCommandLineArguments.processId", ProcessHandle.current().pid()),
                Map.entry("setFileACL.accessMode", Win32.GRANT_ACCESS), Map.entry("setVolumeLabel.root", volume));
        ofNames = Map.ofEntries(Map.entry("library", "kernel32.dll"), Map.entry("function", "Sleep"),
                Map.entry("access", EndToEnd.READ_WRITE), Map.entry("disposition", EndToEnd.CREATE_ALWAYS),
                Map.entry("sectorSize", 1), Map.entry("domain", "nowhere"), Map.entry("user", "nobody"),
                Map.entry("password", "none"), Map.entry("trustee", "Everyone"),
                Map.entry("descriptorText", "D:(A;;FA;;;WD)"), Map.entry("securityInformation", 7),
                Map.entry("attributes", EndToEnd.NORMAL), Map.entry("rootName", "HKEY_CURRENT_USER"),
                Map.entry("keyPath", key), Map.entry("key", "HKEY_CURRENT_USER\\" + key),
                Map.entry("valueName", "value"), Map.entry("text", "text"), Map.entry("keyName", "WinUtilHostile"),
                Map.entry("expectedType", Win32.REG_SZ), Map.entry("commandLine", "cmd.exe /c exit"),
                Map.entry("executableName", "java.exe"), Map.entry("processId", (long) NO_SUCH_PROCESS),
                Map.entry("serviceName", "no such service"), Map.entry("diskPath", "\\\\.\\PhysicalDrive97"),
                Map.entry("root", "C:\\"), Map.entry("label", "Tape 7"), Map.entry("server", ""),
                Map.entry("remoteName", NO_SHARE), Map.entry("message", "message"),
                Map.entry("source", "WinUtil hostile"), Map.entry("value", "value"),
                Map.entry("folderId", WINDOWS_FOLDER), Map.entry("hiveFile", Soak.hiveFile(folder, key + "\\hive")));
    }

    /** A harmless value for one parameter. */
    Object of(DocumentedNative method, int parameter) throws IOException {
        String name = method.parameters().get(parameter);
        Class<?> type = method.type(parameter);
        Object own = ofMethods.getOrDefault(method.method().getName() + "." + name, ofNames.get(name));
        if (own != null && (own instanceof String) == (type == String.class)) {
            return own;
        }
        if (name.equals("path") && method.method().getName().contains("Registry")) {
            return registryValue;
        }
        return switch (type.getSimpleName()) {
            case "int" -> name.equals("length") ? 1 : 0;
            case "long" -> name.equals("record") ? record() : 0L;
            case "boolean" -> false;
            case "String" -> nullable(name) ? null : file(name);
            case "byte[]" -> new byte[BYTES];
            case "ByteBuffer" -> ByteBuffer.allocateDirect(BYTES);
            case "PipedOutputStream" -> new PipedOutputStream(new PipedInputStream());
            case "InputStream" -> (InputStream) new ByteArrayInputStream(new byte[BYTES]);
            default -> collector(method, name);
        };
    }

    private static boolean nullable(String name) {
        return List.of("applicationName", "workingDirectory").contains(name);
    }

    private static Object collector(DocumentedNative method, String name) {
        return switch (method.method().getName() + "." + name) {
            case "listWinFiles.collector" -> new WinFileList();
            case "listRegistry.collector" -> new OwnRegistryKey.Collector();
            case "getNetUsed.collector" -> new NetworkTest.Connections();
            case "getHardDiskSN.collector" -> new DiskSerialsTest.Collector();
            case "getProcessorInfo.collector", "getMemoryInfo.collector" -> new InventoryTest.Collector();
            case "GetDirectBufferAddress.buffer" -> ByteBuffer.allocateDirect(BYTES);
            default -> name.equals("listener") || name.equals("reserved") ? null
                    : (Collection<Object>) new ArrayList<Object>(List.of("Staff"));
        };
    }

    /** A file with something in it, or a folder, or what is not there yet. */
    private Object file(String name) throws IOException {
        if (name.equals("dir")) {
            return folder.toString();
        }
        Path file = folder.resolve(name);
        if (name.equals("to") || name.equals("link")) {
            Files.deleteIfExists(file);
        } else if (!Files.isDirectory(file)) {
            Files.writeString(file, "content");
        }
        return file.toString();
    }

    private long record() throws IOException {
        return EndToEnd.util.createFileNC(folder.resolve("record").toString(), EndToEnd.READ_WRITE,
                EndToEnd.CREATE_ALWAYS, 0);
    }
}
