package com.qarvo.winutil.backup;

import com.qarvo.kel.util.Win32;
import com.qarvo.kel.util.WinFileList.WinFile;
import java.io.FileNotFoundException;
import java.nio.charset.StandardCharsets;
import java.util.List;
import java.util.Map;
import java.util.TreeMap;
import java.util.regex.Matcher;
import java.util.regex.Pattern;
import java.util.stream.Collectors;

/** What is on a disk in memory. Names do not differ by case. */
class FakeDisk {
    static final String SDDL = "O:BAG:SYD:(A;;FA;;;SY)(A;;FR;;;WD)";

    /** What is at a path. */
    static final class Node {
        String path;
        boolean directory;
        byte[] content = new byte[0];
        long modified;
        /** The time that its folder has for it; null when that is the same. */
        Long listed;
        int attributes;
        byte kind;
        String target = "";
        String security = SDDL;
    }

    final Map<String, Node> nodes = new TreeMap<>(String.CASE_INSENSITIVE_ORDER);

    FakeDisk() {
        addDirectory("C:");
    }

    Node addDirectory(String path) {
        return add(path, true, new byte[0], Win32.FILE_ATTRIBUTE_DIRECTORY);
    }

    Node addFile(String path, String content) {
        return add(path, false, content.getBytes(StandardCharsets.UTF_8), Win32.FILE_ATTRIBUTE_ARCHIVE);
    }

    Node addLink(String path, byte kind, String target) {
        boolean directory = kind != WinFile.FILE_SYMBOLIC_LINK && kind != WinFile.FILE;
        Node node = add(path, directory, new byte[0], Win32.FILE_ATTRIBUTE_REPARSE_POINT
                | (directory ? Win32.FILE_ATTRIBUTE_DIRECTORY : 0));
        node.kind = kind;
        node.target = target;
        return node;
    }

    Node node(String path) {
        return nodes.get(path);
    }

    /** Adds what a program makes there: it gets the rights that its folder hands down. */
    Node inherit(Node node) {
        Node folder = nodes.get(Names.parent(node.path));
        Matcher entries = Pattern.compile("\\(A;OICI[A-Z]*;([^)]*)\\)").matcher(folder.security);
        String inherited = entries.results().map(e -> "(A;" + (node.directory ? "OICIID;" : "ID;") + e.group(1) + ")")
                .collect(Collectors.joining());
        if (!inherited.isEmpty()) {
            node.security = "O:BAG:SYD:AI" + inherited;
        }
        return node;
    }

    String text(String path) {
        return new String(nodes.get(path).content, StandardCharsets.UTF_8);
    }

    /** All paths below a folder, without the folder itself. */
    List<String> below(String folder) {
        return nodes.values().stream().map(n -> n.path).filter(p -> p.startsWith(folder + "\\")).toList();
    }

    private Node add(String path, boolean directory, byte[] content, int attributes) {
        Node node = new Node();
        node.path = path;
        node.directory = directory;
        node.content = content;
        node.attributes = attributes;
        node.kind = directory ? WinFile.DIRECTORY : WinFile.FILE;
        node.modified = 1_000_000L + nodes.size();
        nodes.put(path, node);
        return node;
    }

    Node find(String path) throws FileNotFoundException {
        Node node = at(path.endsWith("\\") ? path.substring(0, path.length() - 1) : path);
        if (node == null) {
            throw new FileNotFoundException("");
        }
        return node;
    }

    /** What a path leads to, null for nothing; the last name is not followed when it is that of a link. */
    Node at(String path) {
        return nodes.get(real(path));
    }

    /** A path with the links in the middle of it followed. */
    String real(String path) {
        String parent = Names.parent(path);
        if (parent.isEmpty()) {
            return path;
        }
        String realParent = real(parent);
        Node folder = nodes.get(realParent);
        boolean link = folder != null && folder.directory && !folder.target.isEmpty();
        return (link ? real(folder.target) : realParent) + path.substring(parent.length());
    }

    /** Gives a folder another name, with all below it, as somebody else would. */
    void move(String from, String to) {
        for (Node node : List.copyOf(nodes.values())) {
            if (node.path.equals(from) || node.path.startsWith(from + "\\")) {
                nodes.remove(node.path);
                node.path = to + node.path.substring(from.length());
                nodes.put(node.path, node);
            }
        }
    }

    /** Tells whether others than the system and the administrators may do anything with what is at a path. */
    boolean isOpenToOthers(String path) {
        String rights = nodes.get(path).security.replaceFirst("^.*D:", "D:");
        // Who is denied everything first is not let in by what comes after it.
        return !rights.startsWith("D:(D;;0xd0156;;;WD)")
                && rights.replaceAll("\\([^)]*;(SY|BA)\\)", "").contains("(");
    }
}
