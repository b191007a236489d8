package com.qarvo.winutil.bench;

import com.qarvo.kel.util.WinFileList;
import com.qarvo.kel.util.WindowsUtil;
import com.sun.jna.Memory;
import com.sun.jna.Native;
import com.sun.jna.Pointer;
import com.sun.jna.WString;
import com.sun.jna.platform.win32.Advapi32;
import com.sun.jna.platform.win32.Kernel32;
import com.sun.jna.platform.win32.WinBase;
import com.sun.jna.platform.win32.WinNT;
import com.sun.jna.ptr.IntByReference;
import com.sun.jna.ptr.PointerByReference;
import com.sun.jna.win32.StdCallLibrary;
import com.sun.jna.win32.W32APIOptions;
import java.io.IOException;
import java.nio.file.DirectoryStream;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.attribute.AclEntry;
import java.nio.file.attribute.AclFileAttributeView;
import java.nio.file.attribute.DosFileAttributes;
import java.nio.file.attribute.UserPrincipal;
import java.util.ArrayList;
import java.util.List;
import java.util.function.Function;

/** The listing of a directory with attributes and security descriptors. */
final class SecurityJob {
    private static final int FIELDS = ListingJobs.ALL_FIELDS | Digest.SECURITY;
    private static final int NIO_FIELDS = ListingJobs.BASIC_FIELDS | Digest.DOS_FLAGS | Digest.ACE_COUNT;
    private static final int DESCRIPTOR_SIZE = 4096;
    private static final int OWNER_GROUP_DACL = WinNT.OWNER_SECURITY_INFORMATION | WinNT.GROUP_SECURITY_INFORMATION
            | WinNT.DACL_SECURITY_INFORMATION;
    private static final int SDDL_REVISION_1 = 1;

    /** What the platform classes of java-native-access lack, mapped the way they map. */
    interface SddlLibrary extends StdCallLibrary {
        SddlLibrary INSTANCE = Native.load("advapi32", SddlLibrary.class, W32APIOptions.DEFAULT_OPTIONS);

        boolean ConvertSecurityDescriptorToStringSecurityDescriptor(Pointer descriptor, int revision, int information,
                PointerByReference text, IntByReference length);
    }

    private final WindowsUtil util = new WindowsUtil();
    private final Path path;
    private final String directory;

    private SecurityJob(Path path) {
        this.path = path;
        this.directory = path.toString();
    }

    static Job listing(Path directory, int entries) throws IOException {
        SecurityJob job = new SecurityJob(directory);
        List<Entry> expected = ListingJobs.view(job.library(), ListingJobs::toEntry);
        List<Contender> contenders = List.of(
                ListingJobs.contender(Contender.LIBRARY, job::library, ListingJobs::toEntry, FIELDS, expected),
                new Contender(Contender.BARE, () -> Bare.list(job.directory, true),
                        () -> Contender.expect("the digest", Digest.of(expected, FIELDS),
                                Bare.digest(job.directory, true, FIELDS))),
                ListingJobs.contender(Contender.LEAN, job::lean, ListingJobs::toEntry, FIELDS, expected),
                ListingJobs.contender(Contender.NIO_ACL, job::nioAcl, AclItem::toEntry, NIO_FIELDS, expected),
                ListingJobs.contender(Contender.JNA_PLATFORM, job::jnaPlatform, Function.identity(), FIELDS, expected),
                ListingJobs.contender(Contender.JNA_DIRECT, job::jnaDirect, Function.identity(), FIELDS, expected));
        return new Job(Aims.SECURITY, "entry", entries, contenders);
    }

    private List<WinFileList.WinFile> library() throws IOException {
        WinFileList collector = new WinFileList();
        util.listWinFiles(collector, directory, true, true, null, true);
        return collector.files();
    }

    private List<WinFileList.WinFile> lean() {
        WinFileList collector = new WinFileList();
        Lean.list(collector, directory, true);
        return collector.files();
    }

    /** What java.nio gives of an entry and its rights: objects instead of a text, and no group. */
    private record AclItem(ListingJobs.NioEntry entry, UserPrincipal owner, List<AclEntry> acl) {
        Entry toEntry() {
            Entry plain = entry.toEntry();
            return new Entry(plain.path(), plain.directory(), plain.size(), plain.lastModified(), plain.attributes(),
                    "(".repeat(acl.size()));
        }
    }

    private List<AclItem> nioAcl() throws IOException {
        List<AclItem> entries = new ArrayList<>();
        try (DirectoryStream<Path> stream = Files.newDirectoryStream(path)) {
            for (Path entry : stream) {
                AclFileAttributeView view = Files.getFileAttributeView(entry, AclFileAttributeView.class);
                DosFileAttributes attributes = Files.readAttributes(entry, DosFileAttributes.class);
                entries.add(new AclItem(new ListingJobs.NioEntry(entry, attributes), view.getOwner(), view.getAcl()));
            }
        }
        return entries;
    }

    private List<Entry> jnaPlatform() {
        List<Entry> entries = new ArrayList<>();
        try (Memory memory = new Memory(ListingJobs.findDataSize());
                Memory descriptor = new Memory(DESCRIPTOR_SIZE)) {
            WinNT.HANDLE search = Kernel32.INSTANCE.FindFirstFile(directory + "\\*", memory);
            WinBase.WIN32_FIND_DATA found = new WinBase.WIN32_FIND_DATA(memory);
            do {
                found.read();
                String name = found.getFileName();
                if (!ListingJobs.isDotName(name)) {
                    String entryPath = directory + '\\' + name;
                    entries.add(entry(entryPath, memory, platformSecurity(entryPath, descriptor)));
                }
            } while (Kernel32.INSTANCE.FindNextFile(search, memory));
            Kernel32.INSTANCE.FindClose(search);
        }
        return entries;
    }

    private static String platformSecurity(String path, Pointer descriptor) {
        PointerByReference text = new PointerByReference();
        if (!Advapi32.INSTANCE.GetFileSecurity(path, OWNER_GROUP_DACL, descriptor, DESCRIPTOR_SIZE,
                new IntByReference())
                || !SddlLibrary.INSTANCE.ConvertSecurityDescriptorToStringSecurityDescriptor(descriptor,
                        SDDL_REVISION_1, OWNER_GROUP_DACL, text, new IntByReference())) {
            return "";
        }
        String result = text.getValue().getWideString(0);
        Kernel32.INSTANCE.LocalFree(text.getValue());
        return result;
    }

    private List<Entry> jnaDirect() {
        List<Entry> entries = new ArrayList<>();
        try (Memory found = new Memory(ListingJobs.findDataSize()); Memory descriptor = new Memory(DESCRIPTOR_SIZE)) {
            IntByReference needed = new IntByReference();
            PointerByReference text = new PointerByReference();
            long search = DirectMapping.FindFirstFileW(new WString(directory + "\\*"), found);
            do {
                String name = ListingJobs.nameOf(found);
                if (!ListingJobs.isDotName(name)) {
                    String entryPath = directory + '\\' + name;
                    entries.add(entry(entryPath, found, directSecurity(entryPath, descriptor, needed, text)));
                }
            } while (DirectMapping.FindNextFileW(search, found));
            DirectMapping.FindClose(search);
        }
        return entries;
    }

    private static String directSecurity(String path, Pointer descriptor, IntByReference needed,
            PointerByReference text) {
        if (!DirectMapping.Security.GetFileSecurityW(new WString(path), OWNER_GROUP_DACL, descriptor, DESCRIPTOR_SIZE,
                needed)
                || !DirectMapping.Security.ConvertSecurityDescriptorToStringSecurityDescriptorW(descriptor,
                        SDDL_REVISION_1, OWNER_GROUP_DACL, text, needed)) {
            return "";
        }
        String result = text.getValue().getWideString(0);
        DirectMapping.LocalFree(text.getValue());
        return result;
    }

    private static Entry entry(String path, Pointer found, String security) {
        int attributes = found.getInt(0);
        return new Entry(path, (attributes & WinNT.FILE_ATTRIBUTE_DIRECTORY) != 0, ListingJobs.sizeOf(found),
                ListingJobs.timeOf(found), attributes, security);
    }
}
