package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.qarvo.kel.util.Win32;
import com.qarvo.kel.util.WinFileList;
import com.qarvo.kel.util.WindowsUtil;
import java.io.ByteArrayInputStream;
import java.io.IOException;
import java.io.PipedInputStream;
import java.io.PipedOutputStream;
import java.nio.ByteBuffer;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Map;
import java.util.concurrent.Callable;

/** What a thread of a soak does with files and folders of its own. */
final class SoakFileJobs {
    private static final WindowsUtil util = EndToEnd.util;
    private static final int BLOCK = 10_000;
    private static final int OWNER_GROUP_DACL = 7;
    private static final long LONG_AGO = 1_000_000_000_000L;

    private final SoakLedger ledger;
    private final Path folder;
    private final String plain;
    private final String shortcut;
    private final String library;
    private final ByteBuffer direct = ByteBuffer.allocateDirect(BLOCK);

    SoakFileJobs(SoakLedger ledger, Path folder) throws IOException {
        this.ledger = ledger;
        this.folder = folder;
        Path listed = Files.createDirectory(folder.resolve("listed"));
        Path target = Files.writeString(listed.resolve("plain"), "text");
        plain = target.toString();
        shortcut = folder.resolve("shortcut.lnk").toString();
        ShellObjects.saveShortcut(Path.of(shortcut), target);
        library = Files.writeString(folder.resolve("a.library-ms"), "<libraryDescription/>").toString();
    }

    void addTo(Map<String, Callable<Object>> jobs) {
        jobs.put("transfer", this::transfer);
        jobs.put("open", this::open);
        jobs.put("missing", () -> Soak.outcome(() -> util.openFile(named("missing"))));
        jobs.put("preallocation", () -> util.isSupportExtendFileSize(named("probe")));
        jobs.put("sizes", this::sizes);
        jobs.put("list", this::list);
        jobs.put("operations", this::operations);
        jobs.put("security", this::security);
        jobs.put("encrypted", this::encrypted);
        jobs.put("links", this::links);
        jobs.put("shell", this::shell);
        jobs.put("path forms", () -> util.getLongPathName(plain) + util.CovertEnvPathToFilePath("%SystemRoot%\\x")
                + util.isMethodSupported("kernel32.dll", "Sleep") + util.isMethodSupported("no-such.dll", null));
    }

    private String named(String name) {
        return folder.resolve(name).toString();
    }

    private Object transfer() throws IOException {
        long file = util.createFileNC(named("written"), EndToEnd.READ_WRITE, EndToEnd.CREATE_ALWAYS, 0, BLOCK);
        try (SoakLedger.Held held = ledger.hold(() -> util.closeFile(file))) {
            util.write(file, new byte[] {1, 2, 3}, 0, 3);
            util.write(file, direct, 0, BLOCK - 3, 1);
            assertTrue(util.setFileEndOfFileInfo(file, BLOCK));
            assertEquals(BLOCK, util.getFilePosition(file));
            assertEquals(1, util.seek(file, 1));
            assertEquals(2, util.skip(file, 1));
            byte[] back = new byte[4];
            int count = util.read(file, back, 0, back.length);
            return count + Arrays.toString(back) + util.read(file, direct, 0, BLOCK, 1) + " " + util.getFileSize(file);
        }
    }

    private Object open() throws IOException {
        List<Object> sizes = new ArrayList<>();
        long read = util.openFile(plain);
        try (SoakLedger.Held held = ledger.hold(() -> util.closeFile(read))) {
            sizes.add(util.getFileSize(read));
        }
        long made = util.createFileN(named("made"), EndToEnd.READ_WRITE, 0);
        try (SoakLedger.Held held = ledger.hold(() -> util.closeFile(made))) {
            sizes.add(util.getFileSize(made));
        }
        long anew = util.createFileNC(named("made"), EndToEnd.READ_WRITE, EndToEnd.CREATE_ALWAYS, 0);
        try (SoakLedger.Held held = ledger.hold(() -> util.closeFile(anew))) {
            sizes.add(util.WriteHandle(anew, new byte[1], 0, 1));
        }
        sizes.add(Soak.outcome(() -> util.getFileSize(0)));
        return sizes;
    }

    private Object sizes() {
        assertTrue(util.GetDirectBufferAddress(direct) != 0);
        return util.getSectorSize(plain) + " " + util.getPageSize() + " " + util.getAlignedByteBuffer(BLOCK).length;
    }

    private Object list() throws IOException {
        WinFileList listed = new WinFileList();
        util.listWinFiles(listed, named("listed"), true, true, null, true);
        WinFileList.WinFile one = util.WinFile(plain, true, true);
        return listed.files().stream().map(file -> file.getPath() + " " + file.getSize()).toList() + " "
                + one.getSize() + " " + util.getFileAttr(plain);
    }

    private Object operations() throws IOException {
        String first = named("first");
        String second = named("second");
        List<Object> answers = new ArrayList<>(List.of(util.mkdir(first), util.mkdir(first), util.isDir(first)));
        Files.delete(Path.of(first));
        Files.createFile(Path.of(first));
        answers.addAll(List.of(util.renameTo(first, second), util.exists(first),
                util.setLastModified(second, LONG_AGO), util.lastModified(second), util.delete(second)));
        return answers;
    }

    private Object security() throws IOException {
        util.setFileAttr(plain, EndToEnd.HIDDEN);
        util.setFileACL(plain, "Everyone", EndToEnd.GENERIC_READ, Win32.GRANT_ACCESS);
        String text = util.getWinSecurityDescriptor(plain, OWNER_GROUP_DACL, null);
        util.setFileAttrWithSecurityDescriptor(plain, Win32.DACL_SECURITY_INFORMATION,
                text.substring(text.indexOf("D:")), EndToEnd.NORMAL);
        return text + Soak.outcome(() -> util.getWinSecurityDescriptor(named("missing"), OWNER_GROUP_DACL, null))
                + Soak.outcome(() -> util.isAccessRead(plain, "nowhere", "nobody", "none"))
                + Soak.outcome(() -> util.isAccessWrite(plain, "nowhere", "nobody", "none"))
                + util.enableBackupPrivilege() + util.enableRestorePrivilege() + util.enableSecurityPrivilege()
                + util.enableTakeOwnershipPrivilege();
    }

    private Object encrypted() throws IOException {
        util.interruptEncryptFile();
        util.closeEncryptFile(0);
        try (PipedOutputStream out = new PipedOutputStream(); PipedInputStream in = new PipedInputStream(out)) {
            return Soak.outcome(() -> util.openEncryptFile(plain, 0)) + Soak.outcome(() -> util.readEncryptFile(0, out))
                    + Soak.outcome(() -> util.writeEncryptFile(0, new ByteArrayInputStream(new byte[BLOCK])));
        }
    }

    private Object links() throws IOException {
        String junction = named("junction");
        Object made = Soak.outcome(() -> util.createJunctionPoint(junction, "C:\\data"));
        Files.deleteIfExists(Path.of(junction));
        return made + " " + util.createDirectorySymbolicLink(named("to a folder"), "C:\\data")
                + util.createFileSymbolicLink(named("to a file"), "..\\x") + util.getLinkTarget(plain)
                + util.getLinkType(plain) + util.isLink(plain) + util.isDirectoryJunction(plain);
    }

    private Object shell() {
        List<Object> folders = new ArrayList<>();
        assertTrue(util.CoInitializeEx(Win32.COINIT_MULTITHREADED) >= 0);
        try (SoakLedger.Held held = ledger.hold(util::CoUninitialize)) {
            folders.addAll(List.of(util.isShortcut(shortcut), util.isShortcut(plain), util.getShortcutTarget(shortcut),
                    util.getVolumeLabel("C:\\")));
        }
        util.getLibraryFolders(library, folders);
        util.getSystemExcludeFolders(folders);
        return folders + " " + util.isLibrary(library) + Arrays.toString(util.getLibraryIcon(library))
                + util.searchPathFromLibrary("kernel32.dll");
    }
}
